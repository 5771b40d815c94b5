// The system clipboard as the editor's copy and paste see it: UTF-8 text. With an X
// display open in the process it is the CLIPBOARD selection of the newest connection;
// without one, a copy kept in the process. Failures raise Qvd::xWindowsError.
#pragma once

#include <string>
#include <string_view>

namespace tw {

// The text, empty when the clipboard holds none.
std::string readClipboardText();
// On this platform lines already end in LF, so `toPlatformLineEnds` changes nothing; it
// is there for the callers, which say what they mean.
void writeClipboardText(std::string_view text, bool toPlatformLineEnds);

// What the clipboard holds, found without holding the caller more than `timeLimitMs`:
// for deciding whether to offer Paste. `text` is filled when the answer is `text`.
enum class ClipboardContent { none, text, unknown };
ClipboardContent peekClipboardText(std::string& text, int timeLimitMs);

}  // namespace tw
