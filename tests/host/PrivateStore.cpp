// Every instance reads the user's shared store at start-up. The host tests give their
// process a configuration folder of its own, so that no store on the machine running
// them decides which programs an instance starts with.
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

const bool privateStore = [] {
    std::string folder = "/tmp/tidewake-host-test-" + std::to_string(::getpid());
    ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    return true;
}();

}  // namespace
