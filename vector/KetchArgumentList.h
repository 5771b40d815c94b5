// The arguments of an instruction: positional values and "label:value" pairs, as the
// built-ins and the painter's instructions take them. Values are cooked lazily, once:
// a "[...]" is expanded inside, other text unescaped; a caller that wants a body asks for
// the raw text instead.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tw::Ketch {

struct Frame;

class ArgumentList {
public:
    enum Form { Cooked, Raw };

    // Parses the arguments; the text must outlive the list. Labels are lower-cased; a repeated
    // one throws "Duplicate labels", an empty one "Label cannot be empty".
    ArgumentList(Frame& frame, std::string_view text);

    // The value with this lower-case label, or the index-th positional value; none when absent.
    std::optional<std::string_view> fetchOptional(std::string_view label, Form form = Cooked);
    std::optional<std::string_view> fetchOptional(int index, Form form = Cooked);
    // The same, absent being "Missing argument(s)".
    std::string_view fetchRequired(std::string_view label, Form form = Cooked);
    std::string_view fetchRequired(int index, Form form = Cooked);

    // Throws "Unrecognized labels or too many arguments" if any argument was never fetched.
    void finish() const;

    // All arguments in their order, for the instructions that take any: "call", "_debug".
    int size() const { return int(arguments_.size()); }
    // Empty for a positional argument.
    const std::string& labelAt(int i) const { return arguments_[std::size_t(i)].label; }
    std::string_view valueAt(int i, Form form = Cooked);

private:
    struct Argument {
        std::string label;
        std::string_view text;
        std::optional<std::string> cooked;
        bool fetched = false;
    };

    Frame& frame_;
    std::vector<Argument> arguments_;
};

}  // namespace tw::Ketch
