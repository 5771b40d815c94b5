// The failures of the window system layer: the X display, its windows, the clipboard and
// the opener of files and links. Raised by platform/ and caught where the editor's calls
// begin, like every other exception of the program.
#pragma once

#include "platform/Exception.h"

namespace tw::Qvd {

class xException : public tw::Exception {
public:
    using tw::Exception::Exception;
};

// A call of the operating system failed; the message says which and why.
class xOSError : public xException {
public:
    using xException::xException;
};

// The window system refused or failed: no display, a window that cannot be made, a
// clipboard that does not answer.
class xWindowsError : public xException {
public:
    using xException::xException;
};

// Data from the window system in a form we cannot use (a clipboard in another format).
class xInvalidFormat : public xException {
public:
    using xException::xException;
};

}  // namespace tw::Qvd
