// The X11 CLIPBOARD selection of one connection: we own it with the text last copied
// and answer the requests of other programs (UTF8_STRING, STRING, TEXT, TARGETS), and we
// ask its owner for text and wait for the answer with a time limit. Used through the
// free functions of Clipboard.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/X11Connection.h"

namespace tw {

class X11Clipboard final : public X11EventTarget {
public:
    explicit X11Clipboard(X11Connection& connection);
    ~X11Clipboard();
    X11Clipboard(const X11Clipboard&) = delete;
    X11Clipboard& operator=(const X11Clipboard&) = delete;

    // Takes the selection with this text. Qvd::xWindowsError when the server does not
    // give it to us.
    void write(std::string_view text);
    // The selection's text in UTF-8, empty when nobody owns it or the owner has no text.
    // While it waits, every connection of the process answers requests for its own
    // selection, so that two editors in one process can copy to each other.
    // Qvd::xWindowsError when the owner does not answer within `timeLimitMs`.
    std::string read(int timeLimitMs);
    // What the selection holds, found within `timeLimitMs` in all: the targets first,
    // then the text. `unknown` when its owner does not answer in time (it may be busy, or
    // hung, or sending a lot); that answer is kept for a while for the same owner, so that
    // a hung one costs the time once, not at every look.
    enum class Peek { none, text, unknown };
    Peek peek(int timeLimitMs, std::string& text);
    bool owns() const { return owned_; }

    void handleEvent(XEvent& event) override;

private:
    bool convert(Atom target, int timeLimitMs, std::string& out);
    enum class Answer { given, refused, late };
    // Asks the owner for `target` and waits until `deadline` (a millisecondTick) at most.
    Answer fetch(Atom target, std::uint32_t deadline, Atom& type, int& format, std::vector<unsigned long>& items,
                 std::string& bytes);
    void answer(const XSelectionRequestEvent& request);

    X11Connection& connection_;
    ::Window window_ = 0;
    bool owned_ = false;
    std::string text_;
    unsigned requests_ = 0;  // names each request's property, so that a late answer is told apart
    ::Window lateOwner_ = 0;
    std::uint32_t lateTick_ = 0;
};

// Answers the selection requests waiting on every connection but `except`, and leaves
// their other events queued for their windows.
void answerSelectionRequests(const X11Connection* except);

}  // namespace tw
