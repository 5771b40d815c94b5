// ketch-run: runs a Ketch source file with the language alone, no drawing instructions, and
// the limits a view gives its scripts. "trace" writes to standard output; "include" reads
// files beside the script; a fault is printed with the statement it arose in.
//
//   ketch-run script.ketch
#include "vector/KetchException.h"
#include "vector/KetchExecutor.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

using namespace tw::Ketch;

bool readFile(const std::filesystem::path& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream contents;
    contents << in.rdbuf();
    text = contents.str();
    return true;
}

class PlainExecutor : public Executor {
public:
    explicit PlainExecutor(std::filesystem::path folder) : folder_(std::move(folder)) {}

    bool format(Frame&, std::string_view name, const std::vector<std::string>&,
                const std::vector<std::string>& required) override {
        return name == "ketch-1" && required.empty();
    }
    bool execute(Frame&, std::string_view, std::string_view) override { return false; }
    bool progress(Frame&, std::int32_t) override { return true; }
    bool load(Frame&, std::string_view name, std::string& text) override {
        return readFile(folder_ / std::string(name), text);
    }
    void trace(Frame&, std::string_view text) override { std::cout << text << '\n'; }

private:
    std::filesystem::path folder_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: ketch-run script.ketch\n";
        return 2;
    }
    const std::filesystem::path path = argv[1];
    std::string text;
    if (!readFile(path, text)) {
        std::cerr << path.string() << ": cannot be read\n";
        return 1;
    }
    PlainExecutor executor(path.parent_path());
    VariableMap variables;
    Frame frame(executor, variables, 1000000, 100);
    try {
        run(frame, text);
    } catch (const Exception& e) {
        std::cout.flush();
        std::cerr << path.string() << ": " << e.describe() << '\n';
        return 1;
    }
    return 0;
}
