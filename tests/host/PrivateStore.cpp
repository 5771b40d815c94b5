// Every instance reads the user's shared store at start-up, and an editor makes the user
// patch folder in the documents folder. The host tests give their process a configuration
// and a documents folder of their own, so that no store on the machine running them
// decides which programs an instance starts with, and nothing is made in the user's home.
// The folder is new for each process and goes with it: a folder named by the process id
// alone was met again when the id came round, with an earlier run's startup bank in it.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

struct PrivateStore {
    std::string folder;

    PrivateStore() {
        char name[] = "/tmp/tidewake-host-test-XXXXXX";
        if (::mkdtemp(name) == nullptr) std::abort();
        folder = name;
        ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
        ::setenv("XDG_DOCUMENTS_DIR", (folder + "/Documents").c_str(), 1);
    }
    ~PrivateStore() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
};

const PrivateStore privateStore;

}  // namespace
