// One call level of a Ketch run: the executor, the variables of this level, the caller, and
// the limits. The global frame is the root and holds the statement counter that every level
// draws from, so that no script can hang its host.
#pragma once

#include <cstdint>

namespace tw::Ketch {

class Executor;
class Variables;

struct Frame {
    Executor& executor;
    Variables& variables;
    Frame* parent;                // the calling frame; none for the global frame
    Frame* root;                  // the global frame
    std::int32_t statementsLeft;  // used in the root only
    std::int32_t recursionLeft;   // each nested run takes one, and gives it back when it ends

    // The global frame; a view starts it with 1000000 statements and 100 levels.
    Frame(Executor& executor, Variables& variables, std::int32_t statements, std::int32_t recursion)
        : executor(executor), variables(variables), parent(nullptr), root(this), statementsLeft(statements),
          recursionLeft(recursion) {}

    // A new call level below the caller, with variables of its own.
    Frame(Frame& caller, Variables& variables)
        : executor(caller.executor), variables(variables), parent(&caller), root(caller.root), statementsLeft(0),
          recursionLeft(caller.recursionLeft) {}

    // The same level run by another executor: its variables, caller and limits. How the
    // painter runs a body on a sub-painter in the frame of the statement.
    Frame(Frame& level, Executor& executor)
        : executor(executor), variables(level.variables), parent(level.parent), root(level.root), statementsLeft(0),
          recursionLeft(level.recursionLeft) {}

    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
};

}  // namespace tw::Ketch
