// The instructions that Ketch itself supplies: control flow, variables, calls, includes,
// tracing and the data format check. The interpreter tries them before the executor's own.
#pragma once

#include <string_view>

namespace tw::Ketch {

struct Frame;

// Runs the built-in instruction of this lower-case name with the rest of the statement;
// false when the name is not a built-in.
bool runBuiltin(Frame& frame, std::string_view instruction, std::string_view arguments);

}  // namespace tw::Ketch
