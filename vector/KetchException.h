// The faults of a Ketch run. Each carries its message and the statement in which it arose,
// filled in by the innermost running statement on the way out; the painter, the views that
// run Keel and the command-line tools report them through describe(). They sit below the
// interpreter because the raster core raises some of them too (SVG path data, pattern and
// mask bounds).
#pragma once

#include "platform/Exception.h"

#include <string>

namespace tw::Ketch {

class Exception : public tw::Exception {
public:
    explicit Exception(std::string message) : tw::Exception(std::move(message)) {}

    const std::string& statement() const noexcept { return statement_; }
    void setStatement(std::string statement) { statement_ = std::move(statement); }

    // The message, and on a second line the statement when one is known.
    std::string describe() const;

private:
    std::string statement_;
};

// Malformed text: brackets, expressions, arguments, names.
class SyntaxException : public Exception {
public:
    using Exception::Exception;
};

// Faults of running: limits, variables, arithmetic, files.
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
