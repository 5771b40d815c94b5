#include "vector/KetchException.h"

namespace tw::Ketch {

std::string Exception::describe() const {
    if (statement_.empty()) {
        return message();
    }
    return message() + "\nin statement: " + statement_;
}

}  // namespace tw::Ketch
