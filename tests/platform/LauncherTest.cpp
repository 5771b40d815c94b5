#include "platform/Exception.h"
#include "platform/Launcher.h"

#include "platform/TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

using namespace tw;

namespace {

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// The children of this process that have ended and not been reaped.
int zombieChildren() {
    int zombies = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (int pid; children >> pid;) {
            const std::string stat = readFile("/proc/" + std::to_string(pid) + "/stat");
            const std::size_t close = stat.rfind(')');
            if (close != std::string::npos && close + 2 < stat.size() && stat[close + 2] == 'Z') ++zombies;
        }
    }
    return zombies;
}

// Waits for a condition that a child process brings about; the test fails on the bound.
template <class Condition>
bool eventually(Condition condition) {
    for (int i = 0; i < 500; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

}  // namespace

TEST(Launcher, RunsXdgOpenWithTheTargetAsOneArgumentAndLeavesNoZombie) {
    tw::test::TempFolder folder;
    const std::filesystem::path out = folder.path / "argument";
    folder.write("xdg-open", "#!/bin/sh\nPATH=/usr/bin:/bin\nprintf '%s|%s' \"$1\" \"$#\" > '" + out.string() + ".tmp' && mv '" +
                                 out.string() + ".tmp' '" + out.string() + "'\n");
    std::filesystem::permissions(folder.path / "xdg-open", std::filesystem::perms::owner_all);
    const std::string oldPath = std::getenv("PATH") ? std::getenv("PATH") : "";
    ::setenv("PATH", folder.path.c_str(), 1);
    // Blanks, quotes and a semicolon reach the program as one argument, untouched.
    launchWithSystem(LaunchKind::file, "/tmp/a b'c\"; rm -rf x");
    ::setenv("PATH", oldPath.c_str(), 1);
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(out); }));
    EXPECT_EQ(readFile(out), "/tmp/a b'c\"; rm -rf x|1");
    EXPECT_TRUE(eventually([] { return zombieChildren() == 0; }));
}

TEST(Launcher, AMissingOpenerIsAnError) {
    tw::test::TempFolder folder;
    const std::string oldPath = std::getenv("PATH") ? std::getenv("PATH") : "";
    ::setenv("PATH", folder.path.c_str(), 1);
    std::string message;
    try {
        launchWithSystem(LaunchKind::url, "https://example.org");
    } catch (const Exception& e) {
        message = e.message();
    }
    EXPECT_EQ(message, "Cannot launch: https://example.org");
    ::setenv("PATH", oldPath.c_str(), 1);
}

TEST(Launcher, TheSeamSeesWhatWouldBeOpened) {
    std::string seen;
    setLaunchSeam([&](LaunchKind kind, const std::string& target) {
        seen = (kind == LaunchKind::url ? "url " : "file ") + target;
    });
    launchWithSystem(LaunchKind::url, "https://example.org");
    setLaunchSeam(nullptr);
    EXPECT_EQ(seen, "url https://example.org");
}
