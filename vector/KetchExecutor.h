// The host of a Ketch run: it supplies the domain instructions (the Keel painter its drawing
// instructions) and the few services the language asks of its surroundings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tw::Ketch {

struct Frame;

class Executor {
public:
    // Whether a script that declares this data format can run here. The name and both lists
    // are lower-case, and "ketch-1" is already removed from the required list.
    virtual bool format(Frame& frame, std::string_view name, const std::vector<std::string>& uses,
                        const std::vector<std::string>& required) = 0;
    // Runs one instruction, its name lower-cased, with the expanded rest of the statement
    // (ArgumentList parses it). False when the instruction is not known here.
    virtual bool execute(Frame& frame, std::string_view instruction, std::string_view arguments) = 0;
    // Called before each statement; false aborts the run.
    virtual bool progress(Frame& frame, std::int32_t statementsLeft) = 0;
    // The text of an included file; false if it cannot be had.
    virtual bool load(Frame& frame, std::string_view name, std::string& text) = 0;
    // Output of the "trace" and "_debug" instructions.
    virtual void trace(Frame& frame, std::string_view text) = 0;
    virtual ~Executor() = default;
};

}  // namespace tw::Ketch
