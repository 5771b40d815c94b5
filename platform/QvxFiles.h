// The failure of a file operation: the message of the step that failed, the operating
// system's error code and the path involved. Raised by everything in the file layer.
#pragma once

#include "platform/Exception.h"

#include <string>

namespace tw::QvxFiles {

class Exception : public tw::Exception {
public:
    Exception(std::string message, int osError, std::string path)
        : tw::Exception(std::move(message)), osError_(osError), path_(std::move(path)) {}
    int osError() const noexcept { return osError_; }
    const std::string& path() const noexcept { return path_; }

private:
    int osError_;
    std::string path_;
};

}  // namespace tw::QvxFiles
