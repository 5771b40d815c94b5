#include "vector/KetchValue.h"

#include "vector/KetchException.h"
#include "vector/KetchNumber.h"

namespace tw::Ketch {

std::string Value::toString() const {
    switch (type) {
    case Boolean:
        return number != 0 ? "yes" : "no";
    case Number:
        return formatNumber(number);
    case String:
        return string;
    case None:
        break;
    }
    return {};
}

bool Value::toBoolean() const {
    if (type == Number || type == Boolean) {
        return number != 0;
    }
    return Ketch::toBoolean(string);
}

double Value::toNumber() const {
    if (type == Number) {
        return number;
    }
    return Ketch::toNumber(toString());
}

void checkTextLength(std::size_t length) {
    if (length > maxTextLength) {
        throw RunTimeException("String too long");
    }
}

bool toBoolean(std::string_view text) {
    if (text == "yes") {
        return true;
    }
    if (text == "no") {
        return false;
    }
    throw SyntaxException("Invalid boolean (should be 'yes' or 'no')");
}

}  // namespace tw::Ketch
