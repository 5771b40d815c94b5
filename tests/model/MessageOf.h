// The message of the exception that a step raises, so that a test states the exact text
// a user would see; "<no exception>" when the step succeeds.
#pragma once

#include "platform/Exception.h"

#include <functional>
#include <string>

namespace tw::test {

inline std::string messageOf(const std::function<void()>& step) {
    try {
        step();
    } catch (const Exception& e) {
        return e.message();
    }
    return "<no exception>";
}

}  // namespace tw::test
