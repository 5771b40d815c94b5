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

class XServer {
public:
    static XServer& instance() {
        static XServer server;
        return server;
    }
    bool available() const { return available_; }

    ~XServer() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
        }
    }

private:
    XServer() {
        available_ = startXvfb() || answers();
    }

    bool startXvfb() {
        int fds[2];
        if (pipe(fds) != 0) return false;
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);  // the server goes with the test, however it ends
            close(fds[0]);
            const int devnull = open("/dev/null", O_WRONLY);
            if (devnull >= 0) {
                dup2(devnull, 1);
                dup2(devnull, 2);
            }
            const std::string fd = std::to_string(fds[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
                   static_cast<char*>(nullptr));
            _exit(127);
        }
        close(fds[1]);
        if (pid_ < 0) {
            close(fds[0]);
            return false;
        }
        // Xvfb writes its display number once it accepts connections; EOF means it failed.
        std::string number;
        char c;
        while (read(fds[0], &c, 1) == 1 && c != '\n') number += c;
        close(fds[0]);
        if (number.empty()) return false;
        setenv("DISPLAY", (":" + number).c_str(), 1);
        return answers();
    }

    static bool answers() {
        if (!std::getenv("DISPLAY")) return false;
        Display* d = openDisplay();
        if (!d) return false;
        XCloseDisplay(d);
        return true;
    }

    pid_t pid_ = -1;
    bool available_ = false;
};

inline bool haveDisplay() { return XServer::instance().available(); }

}  // namespace tw::test
