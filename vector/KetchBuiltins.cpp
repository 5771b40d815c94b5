#include "vector/KetchBuiltins.h"

#include "vector/KetchArgumentList.h"
#include "vector/KetchException.h"
#include "vector/KetchExecutor.h"
#include "vector/KetchExpression.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchList.h"
#include "vector/KetchNameTable.h"
#include "vector/KetchNumber.h"
#include "vector/KetchScanner.h"
#include "vector/KetchValue.h"
#include "vector/KetchVariables.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

namespace tw::Ketch {

namespace {

using Args = ArgumentList;

bool condition(Frame& frame, std::string_view text) {
    return evaluate(frame, text).toBoolean();
}

void runIf(Frame& frame, std::string_view text) {
    Args args(frame, text);
    const std::string_view test = args.fetchRequired(0);
    const std::string_view body = args.fetchRequired(1, Args::Raw);
    const auto otherwise = args.fetchOptional("else", Args::Raw);
    args.finish();
    if (condition(frame, test)) {
        runBody(frame, body);
    } else if (otherwise) {
        runBody(frame, *otherwise);
    }
}

void runFor(Frame& frame, std::string_view text) {
    Args args(frame, text);
    const std::string name(args.fetchRequired(0));
    const std::string_view body = args.fetchRequired(1, Args::Raw);
    if (const auto in = args.fetchOptional("in")) {
        const auto reverse = args.fetchOptional("reverse");
        args.finish();
        std::vector<std::string> items = parseList(frame, *in, true, false);
        if (reverse && toBoolean(*reverse)) {
            std::reverse(items.begin(), items.end());
        }
        for (const std::string& item : items) {
            countStatement(frame);
            setVariable(frame, name, item);
            runBody(frame, body);
        }
        return;
    }
    const double from = toNumber(args.fetchRequired("from"));
    const double to = toNumber(args.fetchRequired("to"));
    args.finish();
    // Counting passes rather than stepping the value keeps long ranges exact.
    const double passes = std::floor(std::fabs(to - from)) + 1;
    const double step = to < from ? -1 : 1;
    for (double i = 0; i < passes; ++i) {
        countStatement(frame);
        setVariable(frame, name, formatNumber(from + step * i));
        runBody(frame, body);
    }
}

void runRepeat(Frame& frame, std::string_view text) {
    Args args(frame, text);
    const std::int32_t count = toInteger(args.fetchRequired(0));
    const std::string_view body = args.fetchRequired(1, Args::Raw);
    const auto whileText = args.fetchOptional("while", Args::Raw);
    args.finish();
    if (whileText && !isBracketed(*whileText)) {
        throw SyntaxException("'while:' condition has to be enclosed in [ ]");
    }
    for (std::int32_t i = 0; i < count; ++i) {
        if (whileText && !condition(frame, expandValue(frame, *whileText))) {
            break;
        }
        countStatement(frame);
        runBody(frame, body);
    }
}

// "name" or "name=value", as "local" and "return" take it.
struct Declaration {
    std::string_view name;
    std::optional<std::string> value;
};

Declaration parseDeclaration(std::string_view text) {
    const char* p = text.data();
    const char* end = p + text.size();
    if (p == end) {
        throw SyntaxException("Missing variable name");
    }
    const char* nameEnd = skipIdentifier(p, end);
    if (nameEnd == p) {
        throw SyntaxException("Invalid variable name");
    }
    Declaration declaration{between(p, nameEnd), std::nullopt};
    const char* rest = skipWhite(nameEnd, end);
    if (rest < end) {
        if (*rest != '=') {
            throw SyntaxException("Expected =");
        }
        declaration.value = unescape(between(skipWhite(rest + 1, end), end));
    }
    return declaration;
}

void runLocal(Frame& frame, std::string_view text) {
    const Declaration declaration = parseDeclaration(text);
    if (!frame.variables.declare(declaration.name, declaration.value.value_or(std::string()))) {
        throw RunTimeException("Variable already declared");
    }
}

// Deliberately does not end the running body: the statements after it still run.
void runReturn(Frame& frame, std::string_view text) {
    const Declaration declaration = parseDeclaration(text);
    if (frame.parent == nullptr) {
        throw RunTimeException("Cannot return in global frame");
    }
    const std::string value = declaration.value ? *declaration.value : getVariable(frame, declaration.name);
    setVariable(*frame.parent, declaration.name, value);
}

void runStop(Frame& frame, std::string_view text) {
    Args(frame, text).finish();
    throw AbortedException("Encountered STOP instruction");
}

// Later arguments become variables of the new level: labelled ones by their label,
// positional ones as "0", "1" ..., and "n" their count.
void callWith(Frame& frame, Args& args, bool isInclude) {
    int first = 0;
    while (first < args.size() && !args.labelAt(first).empty()) {
        args.valueAt(first++, Args::Raw);  // labels before the body are dropped
    }
    if (first == args.size()) {
        throw SyntaxException("Missing argument(s)");
    }
    const std::string_view target = args.valueAt(first, isInclude ? Args::Cooked : Args::Raw);
    VariableMap variables;
    Frame level(frame, variables);
    const auto define = [&](std::string_view name, std::string_view value) {
        if (!variables.declare(name, value)) {
            variables.assign(name, value);
        }
    };
    int positional = 0;
    for (int i = first + 1; i < args.size(); ++i) {
        const std::string_view value = args.valueAt(i);
        if (args.labelAt(i).empty()) {
            define(std::to_string(positional++), value);
        } else {
            define(args.labelAt(i), value);
        }
    }
    define("n", std::to_string(positional));
    if (!isInclude) {
        runBody(level, target);
        return;
    }
    std::string loaded;
    if (!frame.executor.load(frame, target, loaded)) {
        throw RunTimeException("Could not include file");
    }
    runBody(level, loaded);
}

void runCall(Frame& frame, std::string_view text) {
    Args args(frame, text);
    callWith(frame, args, false);
}

void runInclude(Frame& frame, std::string_view text) {
    Args args(frame, text);
    callWith(frame, args, true);
}

void runTrace(Frame& frame, std::string_view text) {
    frame.executor.trace(frame, unescape(text));
}

std::vector<std::string> lowerCaseList(Frame& frame, std::optional<std::string_view> text) {
    std::vector<std::string> items;
    if (text) {
        for (const std::string& item : parseList(frame, *text, true, true)) {
            items.push_back(toLowerCase(item));
        }
    }
    return items;
}

void runFormat(Frame& frame, std::string_view text) {
    Args args(frame, text);
    const std::string name = toLowerCase(args.fetchRequired(0));
    const std::vector<std::string> uses = lowerCaseList(frame, args.fetchOptional("uses"));
    std::vector<std::string> required = lowerCaseList(frame, args.fetchOptional("requires"));
    args.finish();
    std::erase(required, "ketch-1");
    if (!frame.executor.format(frame, name, uses, required)) {
        throw FormatException("Unsupported data format");
    }
}

// Traces the arguments as "label=value|..."; "expand:yes" shows them cooked, not raw.
void runDebug(Frame& frame, std::string_view text) {
    Args args(frame, text);
    const auto expandSwitch = args.fetchOptional("expand");
    const Args::Form form = expandSwitch && toBoolean(*expandSwitch) ? Args::Cooked : Args::Raw;
    std::string line;
    int positional = 0;
    for (int i = 0; i < args.size(); ++i) {
        const std::string& label = args.labelAt(i);
        if (label == "expand") {
            continue;
        }
        if (!line.empty()) {
            line += '|';
        }
        line += label.empty() ? std::to_string(positional++) : label;
        line += '=';
        line += args.valueAt(i, form);
    }
    frame.executor.trace(frame, line);
}

using Builtin = void (*)(Frame&, std::string_view);

constexpr NameTable<Builtin, 11> builtins({
    {"if", runIf},
    {"for", runFor},
    {"repeat", runRepeat},
    {"local", runLocal},
    {"return", runReturn},
    {"stop", runStop},
    {"call", runCall},
    {"include", runInclude},
    {"trace", runTrace},
    {"format", runFormat},
    {"_debug", runDebug},
});

}  // namespace

bool runBuiltin(Frame& frame, std::string_view instruction, std::string_view arguments) {
    const Builtin* builtin = builtins.find(instruction);
    if (builtin == nullptr) {
        return false;
    }
    (*builtin)(frame, arguments);
    return true;
}

}  // namespace tw::Ketch
