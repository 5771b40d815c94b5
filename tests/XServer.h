// An X server for the tests that need one: an Xvfb that the test process starts for
// itself on a free display (Xvfb picks it and tells us) and that goes with the process,
// so that tests running side by side never see each other's windows or pointer grabs;
// without Xvfb, the display in $DISPLAY. Tests call `haveDisplay()` and skip with
// `noDisplayMessage` when neither is there.
#pragma once

#include <X11/Xlib.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace tw::test {

inline constexpr const char* noDisplayMessage =
    "No X display: no Xvfb could be started, and DISPLAY is not set or does not answer";

// A connection for the test's own side (the host, another program). A busy server now
// and then refuses one outright, so it tries a few times.
inline Display* openDisplay() {
    Display* d = nullptr;
    for (int attempt = 0; attempt < 10 && !d; ++attempt) {
        if (attempt > 0) usleep(20000);
        d = XOpenDisplay(nullptr);
    }
    return d;
}

// An Xvfb started by the test process on a display it picks itself; it goes with this
// object, or with the process however that ends. `display` is empty when it failed.
class Xvfb {
public:
    explicit Xvfb(std::vector<std::string> extra = {}) {
        int fds[2];
        if (pipe(fds) != 0) return;
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            close(fds[0]);
            const int devnull = open("/dev/null", O_WRONLY);
            if (devnull >= 0) {
                dup2(devnull, 1);
                dup2(devnull, 2);
            }
            std::vector<std::string> args = {"Xvfb", "-displayfd", std::to_string(fds[1]), "-screen", "0",
                                             "1280x1024x24", "-nolisten", "tcp"};
            args.insert(args.end(), extra.begin(), extra.end());
            std::vector<char*> argv;
            for (std::string& a : args) argv.push_back(a.data());
            argv.push_back(nullptr);
            execvp("Xvfb", argv.data());
            _exit(127);
        }
        close(fds[1]);
        if (pid_ < 0) {
            close(fds[0]);
            return;
        }
        // Xvfb writes its display number once it accepts connections; EOF means it failed.
        std::string number;
        char c;
        while (read(fds[0], &c, 1) == 1 && c != '\n') number += c;
        close(fds[0]);
        if (!number.empty()) display = ":" + number;
    }
    ~Xvfb() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
        }
    }
    Xvfb(const Xvfb&) = delete;
    Xvfb& operator=(const Xvfb&) = delete;

    std::string display;

private:
    pid_t pid_ = -1;
};

// The process's own server, made on first use.
class XServer {
public:
    static XServer& instance() {
        static XServer server;
        return server;
    }
    bool available() const { return available_; }

private:
    XServer() {
        if (!xvfb_.display.empty()) setenv("DISPLAY", xvfb_.display.c_str(), 1);
        available_ = answers();
    }

    static bool answers() {
        if (!std::getenv("DISPLAY")) return false;
        Display* d = openDisplay();
        if (!d) return false;
        XCloseDisplay(d);
        return true;
    }

    Xvfb xvfb_;
    bool available_ = false;
};

inline bool haveDisplay() { return XServer::instance().available(); }

}  // namespace tw::test
