// An X server for the tests that need one: the display in $DISPLAY when it answers, else
// an Xvfb that the test starts for itself on a free display (Xvfb picks it and tells us)
// and stops at the end of the process. Tests call `haveDisplay()` and skip with
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
    "No X display: DISPLAY is not set or does not answer, and no Xvfb could be started";

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
        if (answers()) {
            available_ = true;
            return;
        }
        int fds[2];
        if (pipe(fds) != 0) return;
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
            return;
        }
        // Xvfb writes its display number once it accepts connections; EOF means it failed.
        std::string number;
        char c;
        while (read(fds[0], &c, 1) == 1 && c != '\n') number += c;
        close(fds[0]);
        if (number.empty()) return;
        setenv("DISPLAY", (":" + number).c_str(), 1);
        available_ = answers();
    }

    static bool answers() {
        if (!std::getenv("DISPLAY")) return false;
        Display* d = XOpenDisplay(nullptr);
        if (!d) return false;
        XCloseDisplay(d);
        return true;
    }

    pid_t pid_ = -1;
    bool available_ = false;
};

inline bool haveDisplay() { return XServer::instance().available(); }

}  // namespace tw::test
