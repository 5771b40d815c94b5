#include "platform/Launcher.h"

#include "platform/Exception.h"

#include <cerrno>
#include <mutex>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace tw {

namespace {

std::mutex seamLock;
std::function<void(LaunchKind, const std::string&)> theSeam;

}  // namespace

void setLaunchSeam(std::function<void(LaunchKind, const std::string&)> seam) {
    std::lock_guard<std::mutex> guard(seamLock);
    theSeam = std::move(seam);
}

void launchWithSystem(LaunchKind kind, const std::string& target) {
    std::function<void(LaunchKind, const std::string&)> seam;
    {
        std::lock_guard<std::mutex> guard(seamLock);
        seam = theSeam;
    }
    if (seam) {
        seam(kind, target);
        return;
    }
    // xdg-open may live as long as the program it starts. A shell starts it in the
    // background and ends at once, so that xdg-open belongs to init from then on: the
    // editor waits only for the shell, and no zombie or waiting thread stays behind. The
    // target reaches xdg-open as an argument, never as shell text.
    std::string shell = "/bin/sh", option = "-c", script = "command -v xdg-open >/dev/null || exit 127; xdg-open \"$1\" </dev/null >/dev/null 2>&1 &",
                name = "tidewake-launch", argument = target;
    char* argv[] = {shell.data(), option.data(), script.data(), name.data(), argument.data(), nullptr};
    pid_t pid;
    if (::posix_spawn(&pid, "/bin/sh", nullptr, nullptr, argv, environ) != 0)
        throw Exception("Cannot launch: " + target);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw Exception("Cannot launch: " + target);
}

}  // namespace tw
