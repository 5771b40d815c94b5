// A Ketch run for the tests: a global frame with the view's limits over an executor that
// records what the script traces, serves included files from a map, and knows one
// instruction of its own, "mark", which traces its arguments.
#pragma once

#include "vector/KetchException.h"
#include "vector/KetchExecutor.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace tw::Ketch::testing {

class RecordingExecutor : public Executor {
public:
    std::vector<std::string> traces;
    std::map<std::string, std::string, std::less<>> files;
    std::string acceptedFormat = "ketch-1";
    std::vector<std::string> lastUses, lastRequired;
    int abortAfter = -1;  // progress calls before it answers false; -1 never
    int progressCalls = 0;

    bool format(Frame&, std::string_view name, const std::vector<std::string>& uses,
                const std::vector<std::string>& required) override {
        lastUses = uses;
        lastRequired = required;
        return name == acceptedFormat && required.empty();
    }
    bool execute(Frame&, std::string_view instruction, std::string_view arguments) override {
        if (instruction != "mark") {
            return false;
        }
        traces.push_back("mark " + std::string(arguments));
        return true;
    }
    bool progress(Frame&, std::int32_t) override { return abortAfter < 0 || progressCalls++ < abortAfter; }
    bool load(Frame&, std::string_view name, std::string& text) override {
        const auto it = files.find(name);
        if (it == files.end()) {
            return false;
        }
        text = it->second;
        return true;
    }
    void trace(Frame&, std::string_view text) override { traces.emplace_back(text); }
};

struct Script {
    RecordingExecutor executor;
    VariableMap globals;
    Frame frame{executor, globals, 1000000, 100};

    void run(std::string_view text) { Ketch::run(frame, text); }
    std::string get(std::string_view name) { return getVariable(frame, name); }
    // All traced lines, joined by "|".
    std::string traced() const {
        std::string all;
        for (const std::string& line : executor.traces) {
            all += (all.empty() ? "" : "|") + line;
        }
        return all;
    }
};

// Runs the text and expects the exception type with this message; returns what was thrown.
template <typename E>
E runExpecting(Script& script, std::string_view text, std::string_view message) {
    try {
        script.run(text);
    } catch (const E& e) {
        EXPECT_EQ(e.message(), message) << "running: " << text;
        return e;
    } catch (const Exception& e) {
        ADD_FAILURE() << "wrong exception type, message \"" << e.message() << "\", running: " << text;
        return E(e.message());
    }
    ADD_FAILURE() << "no exception, expected \"" << message << "\", running: " << text;
    return E("");
}

}  // namespace tw::Ketch::testing
