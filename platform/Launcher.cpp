#include "platform/Launcher.h"

#include "platform/Exception.h"

#include <cerrno>
#include <mutex>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>

extern char** environ;

namespace tw {

namespace {

std::mutex seamLock;
std::function<void(LaunchKind, const std::string&)> theSeam;

}  // namespace

void setLaunchSeam(std::function<void(LaunchKind, const std::string&)> seam) {
    std::lock_guard<std::mutex> guard(seamLock);
    theSeam = std::move(seam);
}

void launchWithSystem(LaunchKind kind, const std::string& target) {
    std::function<void(LaunchKind, const std::string&)> seam;
    {
        std::lock_guard<std::mutex> guard(seamLock);
        seam = theSeam;
    }
    if (seam) {
        seam(kind, target);
        return;
    }
    std::string program = "xdg-open";
    std::string argument = target;
    char* argv[] = {program.data(), argument.data(), nullptr};
    pid_t pid;
    if (::posix_spawnp(&pid, "xdg-open", nullptr, nullptr, argv, environ) != 0)
        throw Exception("Cannot launch: " + target);
    // xdg-open may live as long as the program it starts; a waiter of its own reaps it
    // whenever it ends, so that the editor neither waits nor leaves a zombie behind.
    std::thread([pid] {
        int status;
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    }).detach();
}

}  // namespace tw
