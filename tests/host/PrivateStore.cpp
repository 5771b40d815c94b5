// Every instance reads the user's shared store at start-up, and an editor makes the user
// patch folder in the documents folder. The host tests give their process a configuration
// and a documents folder of their own, so that no store on the machine running them
// decides which programs an instance starts with, and nothing is made in the user's home.
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

const bool privateStore = [] {
    std::string folder = "/tmp/tidewake-host-test-" + std::to_string(::getpid());
    ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    ::setenv("XDG_DOCUMENTS_DIR", (folder + "/Documents").c_str(), 1);
    return true;
}();

}  // namespace
