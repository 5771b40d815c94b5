// Runs any text as a Ketch script. The statement limit is the safety net: every input must
// end, by finishing or by a Ketch::Exception, within the recursion a view gives its scripts
// and a statement count cut down from a view's, since under coverage instrumentation a loop
// over a statement of 64 KB costs milliseconds a pass. Anything else that escapes, or any
// crash, is a fault.
#include "vector/KetchArgumentList.h"
#include "vector/KetchException.h"
#include "vector/KetchExecutor.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchList.h"
#include "vector/KetchVariables.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace tw::Ketch;

// An executor with one instruction, "shape", that takes its arguments the way the painter's
// instructions do: a list of 1 to 4 numbers, optional labels, a raw body run in the frame.
class FuzzExecutor : public Executor {
public:
    bool format(Frame&, std::string_view name, const std::vector<std::string>&,
                const std::vector<std::string>& required) override {
        return name == "ketch-1" && required.empty();
    }
    bool execute(Frame& frame, std::string_view instruction, std::string_view arguments) override {
        if (instruction != "shape") {
            return false;
        }
        ArgumentList args(frame, arguments);
        parseList(frame, args.fetchRequired(0), true, false, 1, 4);
        args.fetchOptional("width");
        const auto body = args.fetchOptional("body", ArgumentList::Raw);
        args.finish();
        if (body) {
            runBody(frame, *body);
        }
        return true;
    }
    bool progress(Frame&, std::int32_t) override { return true; }
    bool load(Frame&, std::string_view name, std::string& text) override {
        if (name != "lib") {
            return false;
        }
        text = "trace $n $0; return got=$n";
        return true;
    }
    void trace(Frame&, std::string_view) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzExecutor executor;
    VariableMap variables;
    Frame frame(executor, variables, 200, 100);
    try {
        run(frame, std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const Exception&) {
    }
    return 0;
}
