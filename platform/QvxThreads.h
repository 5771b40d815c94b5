// The failure of a thread or event primitive, with its fixed text and the operating
// system's error code. Not expected in normal running.
#pragma once

#include "platform/Exception.h"

#include <string>

namespace tw::QvxThreads {

class Exception : public tw::Exception {
public:
    Exception(std::string message, int osError) : tw::Exception(std::move(message)), osError_(osError) {}
    int osError() const noexcept { return osError_; }

private:
    int osError_;
};

}  // namespace tw::QvxThreads
