#include "vector/KetchArgumentList.h"

#include "vector/KetchException.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchScanner.h"

#include <algorithm>

namespace tw::Ketch {

ArgumentList::ArgumentList(Frame& frame, std::string_view text) : frame_(frame) {
    const char* end = text.data() + text.size();
    const char* p = skipWhiteAndLines(text.data(), end);
    while (p < end) {
        Argument argument;
        // A label is an identifier or a "[...]" right before a ":".
        const char* labelEnd = *p == '[' ? skipBracket(p, end) : skipIdentifier(p, end);
        if (labelEnd < end && *labelEnd == ':') {
            argument.label = toLowerCase(*p == '[' ? expand(frame_, between(p + 1, labelEnd - 1))
                                                   : between(p, labelEnd));
            if (argument.label.empty()) {
                throw SyntaxException("Label cannot be empty");
            }
            p = labelEnd + 1;
        } else if (*p == ':') {
            throw SyntaxException("Label cannot be empty");
        }
        const char* valueEnd = skipToken(p, end, ':');
        if (valueEnd < end && *valueEnd == ':') {
            throw SyntaxException("Syntax error");
        }
        argument.text = between(p, valueEnd);
        arguments_.push_back(std::move(argument));
        p = skipWhiteAndLines(valueEnd, end);
    }
    // Sorted rather than compared pairwise, so that a statement of many labels stays cheap.
    std::vector<std::string_view> labels;
    for (const Argument& argument : arguments_) {
        if (!argument.label.empty()) {
            labels.push_back(argument.label);
        }
    }
    std::sort(labels.begin(), labels.end());
    if (std::adjacent_find(labels.begin(), labels.end()) != labels.end()) {
        throw SyntaxException("Duplicate labels");
    }
}

std::optional<std::string_view> ArgumentList::fetchOptional(std::string_view label, Form form) {
    for (int i = 0; i < size(); ++i) {
        if (arguments_[std::size_t(i)].label == label) {
            return valueAt(i, form);
        }
    }
    return std::nullopt;
}

std::optional<std::string_view> ArgumentList::fetchOptional(int index, Form form) {
    for (int i = 0; i < size(); ++i) {
        if (arguments_[std::size_t(i)].label.empty() && index-- == 0) {
            return valueAt(i, form);
        }
    }
    return std::nullopt;
}

std::string_view ArgumentList::fetchRequired(std::string_view label, Form form) {
    const auto value = fetchOptional(label, form);
    if (!value) {
        throw SyntaxException("Missing argument(s)");
    }
    return *value;
}

std::string_view ArgumentList::fetchRequired(int index, Form form) {
    const auto value = fetchOptional(index, form);
    if (!value) {
        throw SyntaxException("Missing argument(s)");
    }
    return *value;
}

void ArgumentList::finish() const {
    for (const Argument& argument : arguments_) {
        if (!argument.fetched) {
            throw SyntaxException("Unrecognized labels or too many arguments");
        }
    }
}

std::string_view ArgumentList::valueAt(int i, Form form) {
    Argument& argument = arguments_[std::size_t(i)];
    argument.fetched = true;
    if (form == Raw) {
        return argument.text;
    }
    if (!argument.cooked) {
        argument.cooked = expandValue(frame_, argument.text);
    }
    return *argument.cooked;
}

}  // namespace tw::Ketch
