#include "vector/KetchInterpreter.h"

#include "vector/KetchBuiltins.h"
#include "vector/KetchException.h"
#include "vector/KetchExecutor.h"
#include "vector/KetchExpression.h"
#include "vector/KetchFrame.h"
#include "vector/KetchScanner.h"
#include "vector/KetchVariables.h"

namespace tw::Ketch {

namespace {

// The recursion level a run holds, given back however the run ends.
class RecursionLevel {
public:
    explicit RecursionLevel(Frame& frame) : frame_(frame) {
        if (frame_.recursionLeft <= 0) {
            throw RunTimeException("Recursion limit reached");
        }
        --frame_.recursionLeft;
    }
    ~RecursionLevel() { ++frame_.recursionLeft; }
    RecursionLevel(const RecursionLevel&) = delete;
    RecursionLevel& operator=(const RecursionLevel&) = delete;

private:
    Frame& frame_;
};

bool isSpecialInStatement(char c) {
    return isBlank(c) || isLineBreak(c) || c == '/' || c == '[' || c == '\\' || c == '$' || c == '{';
}

// The text up to the first line break: what a fault is reported with before its statement's
// end is known.
std::string firstLine(const char* p, const char* end) {
    const char* q = p;
    while (q < end && !isLineBreak(*q)) {
        ++q;
    }
    return std::string(p, q);
}

// After "$": an identifier, or digits for the numbered arguments of a call ("$0").
const char* skipVariableName(const char* p, const char* end) {
    if (isIdentifierStart(*p)) {
        return skipIdentifier(p, end);
    }
    while (p < end && isDigit(*p)) {
        ++p;
    }
    return p;
}

void executeStatement(Frame& frame, std::string_view statement) {
    const char* p = statement.data();
    const char* end = p + statement.size();
    if (p < end && *p == '[') {
        const char* close = skipBracket(p, end);
        if (skipWhite(close, end) != end) {
            throw SyntaxException("Syntax error");
        }
        run(frame, between(p + 1, close - 1));
        return;
    }
    const char* nameEnd = skipIdentifier(p, end);
    if (nameEnd == p) {
        throw SyntaxException("Invalid intruction");
    }
    const std::string_view name = between(p, nameEnd);
    const char* rest = skipWhite(nameEnd, end);
    if (rest < end && *rest == '=') {
        setVariable(frame, name, unescape(between(skipWhite(rest + 1, end), end)));
        return;
    }
    const std::string instruction = toLowerCase(name);
    const std::string_view arguments = between(rest, end);
    if (runBuiltin(frame, instruction, arguments)) {
        return;
    }
    if (!frame.executor.execute(frame, instruction, arguments) && instruction != "meta") {
        throw SyntaxException("Unrecognized instruction");
    }
}

}  // namespace

void run(Frame& frame, std::string_view text) {
    const RecursionLevel level(frame);
    const char* p = text.data();
    const char* end = p + text.size();
    const char* start = p;       // of the statement in hand
    const char* stop = nullptr;  // its end, once found
    std::string expanded;
    bool isExpanded = false;
    try {
        for (;;) {
            start = p;
            stop = nullptr;
            isExpanded = false;
            p = skipWhiteAndLines(p, end);
            if (p == end) {
                break;
            }
            start = p;
            stop = findStatementEnd(p, end);
            countStatement(frame);
            expanded = expand(frame, between(start, stop));
            isExpanded = true;
            executeStatement(frame, expanded);
            p = stop;
            if (p < end && *p == ';') {
                ++p;
            }
        }
    } catch (Exception& e) {
        if (e.statement().empty()) {
            e.setStatement(isExpanded ? expanded : stop != nullptr ? std::string(start, stop) : firstLine(start, end));
        }
        throw;
    }
}

void runBody(Frame& frame, std::string_view body) {
    if (isBracketed(body)) {
        run(frame, body.substr(1, body.size() - 2));
    } else {
        run(frame, body);
    }
}

void countStatement(Frame& frame) {
    Frame& root = *frame.root;
    if (root.statementsLeft <= 0) {
        throw RunTimeException("Statements limit reached");
    }
    if (!frame.executor.progress(frame, root.statementsLeft)) {
        throw AbortedException("Aborted");
    }
    --root.statementsLeft;
}

std::string expand(Frame& frame, std::string_view text) {
    std::string out;
    out.reserve(text.size());
    const char* p = text.data();
    const char* end = p + text.size();
    bool space = false;  // white space seen since the last token
    while (p < end) {
        const char c = *p;
        if (isBlank(c) || isCommentStart(p, end)) {
            p = skipWhite(p, end);
            space = true;
            continue;
        }
        if (isLineBreak(c)) {
            // A continued line joins the last; any other break is white space.
            const char* next = skipContinuation(p, end);
            space = space || next == nullptr;
            p = next != nullptr ? next : p + 1;
            continue;
        }
        if (space && !out.empty()) {
            out += ' ';
        }
        space = false;
        if (c == '[' || c == '\\') {
            const char* q = c == '[' ? skipBracket(p, end) : skipEscape(p, end);
            out.append(p, q);
            p = q;
        } else if (c == '$' && end - p > 1 && (isIdentifierStart(p[1]) || isDigit(p[1]))) {
            const char* q = skipVariableName(p + 1, end);
            out += getVariable(frame, between(p + 1, q));
            p = q;
        } else if (c == '{') {
            const char* q = skipBracket(p, end);
            out += evaluate(frame, between(p + 1, q - 1)).toString();
            p = q;
        } else {
            const char* q = p + 1;
            while (q < end && !isSpecialInStatement(*q)) {
                ++q;
            }
            out.append(p, q);
            p = q;
        }
        checkTextLength(out.size());
    }
    return out;
}

std::string expandValue(Frame& frame, std::string_view token) {
    if (isBracketed(token)) {
        return expand(frame, token.substr(1, token.size() - 2));
    }
    return unescape(token);
}

std::string getVariable(Frame& frame, std::string_view name) {
    std::string value;
    for (Frame* f = &frame; f != nullptr; f = f->parent) {
        if (f->variables.lookup(name, value)) {
            return value;
        }
    }
    throw RunTimeException("Variable does not exist");
}

void setVariable(Frame& frame, std::string_view name, std::string_view value) {
    for (Frame* f = &frame; f != nullptr; f = f->parent) {
        if (f->variables.assign(name, value)) {
            return;
        }
    }
    if (!frame.root->variables.declare(name, value)) {
        throw RunTimeException("Could not set variable");
    }
}

}  // namespace tw::Ketch
