// Opens a URL or a file with the user's default application, as the "launch" action asks:
// xdg-open runs in the background, with the target as its one argument, and the caller
// does not wait for it. Tests replace the
// launch with a seam of their own and see what would have been opened.
#pragma once

#include <functional>
#include <string>

namespace tw {

// A web address (http, https, telnet) or a file path.
enum class LaunchKind { url, file };

// Starts xdg-open with the target as its one argument. Throws Exception "Cannot launch: "
// with the target when the background start itself fails.
void launchWithSystem(LaunchKind kind, const std::string& target);

// While set, launchWithSystem hands kind and target here instead; an empty function
// restores the real launch.
void setLaunchSeam(std::function<void(LaunchKind, const std::string&)> seam);

}  // namespace tw
