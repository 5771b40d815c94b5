// The message that a step throws, for tests of readers that must refuse bad input with
// the system's own words.
#pragma once

#include "platform/Exception.h"

#include <string>

namespace tw::test {

// The message of the exception of type E (by default any of the system's own) that
// `step` throws, or "" when it throws none.
template <typename E = Exception, typename Step>
std::string failure(Step step) {
    try {
        step();
    } catch (const E& e) {
        return e.message();
    }
    return "";
}

// The same, only for a FormatException: any other exception is reported as such.
template <typename Step>
std::string formatFailure(Step step) {
    try {
        step();
    } catch (const FormatException& e) {
        return e.message();
    } catch (const Exception& e) {
        return "not a FormatException: " + e.message();
    }
    return "";
}

}  // namespace tw::test
