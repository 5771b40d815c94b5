// The shared exception family. Failures everywhere in the program are exceptions that
// carry a final English message; they are caught once, at a host call, an action or a load.
#pragma once

#include <exception>
#include <string>

namespace tw {

class Exception : public std::exception {
public:
    explicit Exception(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }
    const std::string& message() const noexcept { return message_; }

private:
    std::string message_;
};

// Input that is not in the expected format.
class FormatException : public Exception {
public:
    using Exception::Exception;
};

// Input that ends before the reader is done.
class EOFException : public Exception {
public:
    using Exception::Exception;
};

// A dialog's owner window went away while it was open.
class LostWindowException : public Exception {
public:
    LostWindowException() : Exception("Lost window") {}
};

// The user cancelled; dropped without a message by whoever catches it.
class UserCancelledException : public Exception {
public:
    UserCancelledException() : Exception("User cancelled") {}
};

}  // namespace tw
