// Scratch folders and child processes for the platform tests: a fresh folder under /tmp
// that goes with the test, and a way to run a step in a forked process (to kill it, to
// limit it, or to drop its privileges) and learn how it ended.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tw::test {

struct TempFolder {
    std::filesystem::path path;
    TempFolder() {
        char pattern[] = "/tmp/tidewake-test-XXXXXX";
        path = ::mkdtemp(pattern);
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::permissions(path, std::filesystem::perms::owner_all, std::filesystem::perm_options::add, ignored);
        std::filesystem::remove_all(path, ignored);
    }
    std::string str() const { return path.string() + "/"; }
    void write(const std::string& relative, const std::string& text) const {
        std::filesystem::create_directories((path / relative).parent_path());
        std::ofstream(path / relative, std::ios::binary) << text;
    }
    std::string read(const std::string& relative) const {
        std::ifstream in(path / relative, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    // Names in the folder, hidden ones included, sorted.
    std::string names() const {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(path)) all.push_back(entry.path().filename());
        std::sort(all.begin(), all.end());
        std::string joined;
        for (const std::string& n : all) joined += (joined.empty() ? "" : " ") + n;
        return joined;
    }
};

// Runs `step` in a forked process and answers its exit code, or 128 + the signal that
// ended it. The child leaves through _exit, so nothing of the test runner runs twice.
inline int runInChild(const std::function<int()>& step) {
    pid_t child = ::fork();
    if (child == 0) {
        int code = 1;
        try {
            code = step();
        } catch (...) {
            code = 99;
        }
        ::_exit(code);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace tw::test
