// The values of the command-line tools' options, read whole and held to the range the
// tool can honour, so that a bad value is refused with a message that names the option
// and the value, instead of ending in a wrong file written with success.
#pragma once

#include <stdexcept>
#include <string>

namespace tw {

// A refused option; the tools print its message with their usage and exit with 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A whole number from `min` to `max`: "--program must be a whole number from 0 to 127: -1".
int wholeOption(const std::string& option, const std::string& text, long min, long max);
// A finite number from `min` to `max`.
double numberOption(const std::string& option, const std::string& text, double min, double max);

}  // namespace tw
