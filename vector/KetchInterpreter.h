// Running Ketch text: statements are found, expanded and executed from the text each time
// they run, within the frame's limits. The painter calls run() on a script and runBody() on
// the bodies of its own instructions.
#pragma once

#include <string>
#include <string_view>

namespace tw::Ketch {

struct Frame;

// Executes a text in the frame. Takes one level of recursion for its duration and one
// statement of the shared counter for each statement. A Ketch::Exception that passes gets the
// expanded text of the innermost statement it arose in.
void run(Frame& frame, std::string_view text);

// Runs the body of a built-in or an instruction: a "[...]" runs what is inside, as a bracket
// statement does; any other text runs as it stands.
void runBody(Frame& frame, std::string_view body);

// Takes one statement from the shared counter, asking the executor first: each statement
// does, and so does each pass of a loop, so that even empty loops end.
void countStatement(Frame& frame);

// A statement's expansion: blanks and comments become one space between tokens, a continued
// line joins the last, "[...]" and escapes stay as they are, "$name" (or "$0", a numbered
// argument of a call) gives the variable's value and "{expr}" the expression's.
std::string expand(Frame& frame, std::string_view text);

// An argument or list item as its user means it: a "[...]" expanded inside, other text
// unescaped.
std::string expandValue(Frame& frame, std::string_view token);

// The value of the first frame up the chain that has the name; else "Variable does not exist".
std::string getVariable(Frame& frame, std::string_view name);

// Assigns in the first frame up the chain that has the name, or declares it in the global
// frame; else "Could not set variable".
void setVariable(Frame& frame, std::string_view name, std::string_view value);

}  // namespace tw::Ketch
