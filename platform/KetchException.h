// The exceptions of the Ketch language and of the painters that run on it. They live at
// the bottom of the layers because the raster core raises some of them too (SVG path
// data, pattern and mask bounds), below the interpreter that catches them.
#pragma once

#include <string>

#include "platform/Exception.h"

namespace tw::Ketch {

// A message and the statement in which it arose (empty until the interpreter knows it).
class Exception : public tw::Exception {
public:
    explicit Exception(std::string message, std::string statement = {})
        : tw::Exception(std::move(message)), statement_(std::move(statement)) {}
    const std::string& statement() const noexcept { return statement_; }
    void setStatement(std::string statement) { statement_ = std::move(statement); }

private:
    std::string statement_;
};

// Malformed text.
class SyntaxException : public Exception {
public:
    using Exception::Exception;
};

// A fault of running.
class RunTimeException : public Exception {
public:
    using Exception::Exception;
};

// Text that is not in the expected data format.
class FormatException : public Exception {
public:
    using Exception::Exception;
};

// The run was stopped by its executor.
class AbortedException : public Exception {
public:
    using Exception::Exception;
};

}  // namespace tw::Ketch
