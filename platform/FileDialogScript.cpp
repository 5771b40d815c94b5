#include "platform/FileDialogScript.h"

#include "platform/Exception.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <set>

namespace tw {

namespace {

[[noreturn]] void syntax(const std::string& what) {
    throw FormatException("Invalid custom file dialog syntax (" + what + ")");
}

bool isNameChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

class Scanner {
public:
    explicit Scanner(const std::string& text) : p_(text.data()), end_(text.data() + text.size()) {}

    // Skips white space and comments; answers whether anything is left.
    bool more() {
        for (;;) {
            while (p_ < end_ && static_cast<unsigned char>(*p_) <= ' ') ++p_;
            if (end_ - p_ >= 2 && p_[0] == '/' && p_[1] == '*') {
                const char* close = std::search(p_ + 2, end_, "*/", "*/" + 2);
                if (close == end_) syntax("missing '*/'");
                p_ = close + 2;
                continue;
            }
            return p_ < end_;
        }
    }
    bool take(char c) {
        if (!more() || *p_ != c) return false;
        ++p_;
        return true;
    }
    // A name, or empty when none stands here.
    std::string name() {
        more();
        const char* start = p_;
        while (p_ < end_ && isNameChar(*p_)) ++p_;
        return std::string(start, p_);
    }
    // A string in double quotes (a doubled quote is one), or a run of number characters.
    bool argument(std::string& out) {
        if (!more()) return false;
        out.clear();
        if (*p_ == '"') {
            for (++p_;; ++p_) {
                if (p_ == end_ || *p_ == '\n' || *p_ == '\r') syntax("missing '\"'");
                if (*p_ == '"') {
                    if (p_ + 1 < end_ && p_[1] == '"') {
                        out.push_back('"');
                        ++p_;
                        continue;
                    }
                    ++p_;
                    return true;
                }
                out.push_back(*p_);
            }
        }
        const char* start = p_;
        while (p_ < end_ && (isNameChar(*p_) || *p_ == '-' || *p_ == '+' || *p_ == '.')) ++p_;
        out.assign(start, p_);
        return !out.empty();
    }

private:
    const char* p_;
    const char* end_;
};

// The functions a script may call, with the count of their arguments, in sorted order.
const std::map<std::string, std::size_t, std::less<>>& functions() {
    static const std::map<std::string, std::size_t, std::less<>> table = {
        {"AddCheckButton", 2}, {"AddComboBox", 1},        {"AddControlItem", 3}, {"AddEditBox", 2},
        {"AddMenu", 2},        {"AddPushButton", 2},      {"AddRadioButtonList", 1}, {"AddSeparator", 1},
        {"AddText", 2},        {"EnableOpenDropDown", 1}, {"EndVisualGroup", 0},  {"MakeProminent", 1},
        {"StartVisualGroup", 2}};
    return table;
}

int idOf(const std::string& text) {
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != 0 || errno == ERANGE || v < -2147483647L - 1 || v > 2147483647L)
        syntax("invalid id: " + text);
    return static_cast<int>(v);
}

}  // namespace

std::vector<FileDialogStatement> parseFileDialogScript(const std::string& text) {
    Scanner in(text);
    std::vector<FileDialogStatement> statements;
    while (in.more()) {
        FileDialogStatement s;
        s.name = in.name();
        if (s.name.empty() || !in.take('(')) syntax("expected '('");
        if (!in.take(')')) {
            std::string argument;
            if (!in.argument(argument)) syntax("expected arguments or ')'");
            s.arguments.push_back(argument);
            for (;;) {
                if (in.take(')')) break;
                if (!in.take(',')) syntax("expected ',' or ')'");
                if (!in.argument(argument)) syntax("expected argument");
                s.arguments.push_back(argument);
            }
        }
        in.take(';');
        statements.push_back(std::move(s));
    }
    return statements;
}

void runFileDialogScript(const std::string& text, FileDialogControls& controls) {
    std::map<int, std::set<int>> defined;  // control ids, each with its item ids
    bool inGroup = false;
    for (const FileDialogStatement& s : parseFileDialogScript(text)) {
        auto function = functions().find(s.name);
        if (function == functions().end()) syntax("unknown function: " + s.name);
        if (s.arguments.size() != function->second)
            syntax("expected " + std::to_string(function->second) + " arguments for function \"" + s.name + "\"");
        const std::vector<std::string>& a = s.arguments;
        const int id = a.empty() ? 0 : idOf(a[0]);
        auto requireDefined = [&] {
            if (!defined.count(id)) syntax("control id " + std::to_string(id) + " not defined");
        };
        if (s.name.rfind("Add", 0) == 0 && s.name != "AddControlItem") {
            if (defined.count(id)) syntax("control id " + std::to_string(id) + " already defined");
            defined[id];
        }
        int result = 0;
        if (s.name == "AddCheckButton") result = controls.AddCheckButton(id, a[1]);
        else if (s.name == "AddComboBox") result = controls.AddComboBox(id);
        else if (s.name == "AddControlItem") {
            requireDefined();
            const int item = idOf(a[1]);
            if (!defined[id].insert(item).second) syntax("item id " + std::to_string(item) + " already defined");
            result = controls.AddControlItem(id, item, a[2]);
        } else if (s.name == "AddEditBox") result = controls.AddEditBox(id, a[1]);
        else if (s.name == "AddMenu") result = controls.AddMenu(id, a[1]);
        else if (s.name == "AddPushButton") result = controls.AddPushButton(id, a[1]);
        else if (s.name == "AddRadioButtonList") result = controls.AddRadioButtonList(id);
        else if (s.name == "AddSeparator") result = controls.AddSeparator(id);
        else if (s.name == "AddText") result = controls.AddText(id, a[1]);
        else if (s.name == "EnableOpenDropDown") {
            requireDefined();
            result = controls.EnableOpenDropDown(id);
        } else if (s.name == "MakeProminent") {
            requireDefined();
            result = controls.MakeProminent(id);
        } else if (s.name == "StartVisualGroup") {
            if (inGroup) syntax("unexpected \"StartVisualGroup\"");
            inGroup = true;
            result = controls.StartVisualGroup(id, a[1]);
        } else {
            if (!inGroup) syntax("unexpected \"EndVisualGroup\"");
            inGroup = false;
            result = controls.EndVisualGroup();
        }
        if (result < 0) throw Exception("File dialog error " + std::to_string(result));
    }
}

}  // namespace tw
