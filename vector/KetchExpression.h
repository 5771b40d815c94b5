// The expression evaluator of Ketch: what stands in "{ }" inside a statement, and the
// conditions of "if" and "repeat". It reads and computes in one pass, by precedence climbing.
#pragma once

#include "vector/KetchValue.h"

#include <string_view>

namespace tw::Ketch {

struct Frame;

// The value of the whole text as an expression; variables are read through the frame.
Value evaluate(Frame& frame, std::string_view text);

}  // namespace tw::Ketch
