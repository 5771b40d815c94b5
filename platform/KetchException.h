// The faults of a Ketch run and of the painters that run on it. Each carries its message
// and the statement in which it arose, filled in by the innermost running statement on
// the way out. They live at the bottom of the layers because the raster core raises some
// of them too (SVG path data, pattern and mask bounds), below the interpreter.
#pragma once

#include <string>

#include "platform/Exception.h"

namespace tw::Ketch {

class Exception : public tw::Exception {
public:
    explicit Exception(std::string message) : tw::Exception(std::move(message)) {}

    const std::string& statement() const noexcept { return statement_; }
    void setStatement(std::string statement) { statement_ = std::move(statement); }

    // The message, and on a second line the statement when one is known.
    std::string describe() const { return statement_.empty() ? message() : message() + "\nin statement: " + statement_; }

private:
    std::string statement_;
};

// Malformed text: brackets, expressions, arguments, names, path data.
class SyntaxException : public Exception {
public:
    using Exception::Exception;
};

// Faults of running: limits, variables, arithmetic, files, bounds.
class RunTimeException : public Exception {
public:
    using Exception::Exception;
};

// A data format that the executor cannot run.
class FormatException : public Exception {
public:
    using Exception::Exception;
};

// The run was stopped on purpose: by the executor or by a "stop" instruction.
class AbortedException : public Exception {
public:
    using Exception::Exception;
};

}  // namespace tw::Ketch
