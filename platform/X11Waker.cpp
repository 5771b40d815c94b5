#include "platform/X11Waker.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "platform/Qvd.h"

namespace tw {

namespace {

// A wake the host did not act on (it may have dropped the message) is sent again.
constexpr std::uint32_t resendMs = 50;
// With nothing due, the thread still looks round now and then; it costs nothing.
constexpr std::int64_t longestWaitMs = 1000;

}  // namespace

X11Waker::X11Waker(int watchedFd, TimerQueue& timers, ::Window hostWindow)
    : watchedFd_(watchedFd), timers_(timers), hostWindow_(hostWindow) {
    connection_ = std::make_unique<X11Connection>(X11Connection::Use::signalling);
    wakeAtom_ = connection_->atom("TIDEWAKE_WAKE");
    pipe_ = std::make_shared<Pipe>();
    if (pipe2(pipe_->fds, O_CLOEXEC | O_NONBLOCK) != 0) throw Qvd::xOSError("Cannot make the editor's wake-up pipe");
    timers_.setWakeUp([pipe = pipe_] { pipe->poke(); });
    thread_ = std::thread([this] { watch(); });
}

X11Waker::~X11Waker() {
    timers_.setWakeUp(nullptr);
    stop_.store(true);
    poke();
    thread_.join();
}

X11Waker::Pipe::~Pipe() {
    for (int fd : fds)
        if (fd >= 0) close(fd);
}

void X11Waker::Pipe::poke() const {
    const char c = 1;
    [[maybe_unused]] const ssize_t n = write(fds[1], &c, 1);  // a full pipe is poked already
}

void X11Waker::poke() { pipe_->poke(); }

void X11Waker::sendWake() {
    XEvent e{};
    e.xclient.type = ClientMessage;
    e.xclient.window = hostWindow_;
    e.xclient.message_type = wakeAtom_;
    e.xclient.format = 32;
    // No mask: the message goes to the client that made the window, the host.
    XSendEvent(connection_->display(), hostWindow_, False, NoEventMask, &e);
    XFlush(connection_->display());
    // A host window that is gone leaves an error on our connection, nothing more.
    connection_->takeError();
    ++wakes_;
}

void X11Waker::watch() {
    std::uint32_t sentAt = 0;
    while (!stop_.load()) {
        const std::uint32_t now = millisecondTick();
        pollfd fds[2] = {{pipe_->fds[0], POLLIN, 0}, {watchedFd_, POLLIN, 0}};
        int wait;
        if (awaitingPass_.load()) {
            // The host has been woken and has not run us yet: only our pipe and the
            // resend matter, and the host's next pass comes within a millisecond or so.
            if (std::int32_t(now - sentAt) >= std::int32_t(resendMs)) {
                sendWake();
                sentAt = now;
            }
            poll(fds, 1, 1);
        } else {
            // At rest nothing but an event or a poke ends the wait.
            const bool resting = resting_.load();
            const std::int64_t due = resting ? -1 : timers_.waitTime(now);
            wait = resting ? -1 : int(due < 0 || due > longestWaitMs ? longestWaitMs : due);
            const int ready = wait == 0 ? 0 : poll(fds, 2, wait);
            const bool eventsWaiting = ready > 0 && (fds[1].revents & (POLLIN | POLLHUP | POLLERR)) != 0;
            const bool timerDue = !resting_.load() && timers_.waitTime(millisecondTick()) == 0;
            if ((eventsWaiting || timerDue) && !stop_.load()) {
                awaitingPass_.store(true);
                sentAt = millisecondTick();
                sendWake();
            }
        }
        char drain[64];
        while (read(pipe_->fds[0], drain, sizeof drain) > 0) {
        }
    }
}

}  // namespace tw
