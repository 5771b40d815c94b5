#include "platform/Clipboard.h"

#include <mutex>

#include "platform/X11Clipboard.h"

namespace tw {

namespace {

// Long enough for a busy program to answer, short enough that a hung one does not
// freeze the editor for good.
constexpr int readTimeLimitMs = 2000;

std::mutex localLock;
std::string localText;

X11Connection* newestConnection() {
    const auto& all = X11Connection::all();
    return all.empty() ? nullptr : all.back();
}

}  // namespace

std::string readClipboardText() {
    if (X11Connection* c = newestConnection()) return c->clipboard().read(readTimeLimitMs);
    std::lock_guard<std::mutex> guard(localLock);
    return localText;
}

ClipboardContent peekClipboardText(std::string& text, int timeLimitMs) {
    if (X11Connection* c = newestConnection()) {
        switch (c->clipboard().peek(timeLimitMs, text)) {
            case X11Clipboard::Peek::none: return ClipboardContent::none;
            case X11Clipboard::Peek::text: return ClipboardContent::text;
            case X11Clipboard::Peek::unknown: return ClipboardContent::unknown;
        }
    }
    std::lock_guard<std::mutex> guard(localLock);
    text = localText;
    return text.empty() ? ClipboardContent::none : ClipboardContent::text;
}

void writeClipboardText(std::string_view text, bool) {
    if (X11Connection* c = newestConnection()) {
        c->clipboard().write(text);
        return;
    }
    std::lock_guard<std::mutex> guard(localLock);
    localText.assign(text);
}

}  // namespace tw
