// A failed assertion of a test layout ("assert" action): not a format fault, so that it
// passes through the guarded action path and is shown like any other error.
#pragma once

#include "platform/Exception.h"

#include <string>

namespace tw::QvxDebug {

class Assert : public tw::Exception {
public:
    using tw::Exception::Exception;
};

}  // namespace tw::QvxDebug
