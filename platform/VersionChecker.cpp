#include "platform/VersionChecker.h"

#include "platform/Exception.h"
#include "platform/HttpClient.h"
#include "platform/TimerQueue.h"

#include <ifaddrs.h>
#include <net/if.h>

namespace tw {

bool hasNetworkConnection() {
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) return false;
    bool found = false;
    for (ifaddrs* a = list; a != nullptr && !found; a = a->ifa_next)
        found = (a->ifa_flags & IFF_UP) && (a->ifa_flags & IFF_RUNNING) && !(a->ifa_flags & IFF_LOOPBACK);
    ::freeifaddrs(list);
    return found;
}

VersionChecker::VersionChecker(Request request, AnswerReader read, ConnectionProbe probe)
    : request_(std::move(request)), read_(std::move(read)), probe_(std::move(probe)), thread_([this] { run(); }) {}

VersionChecker::~VersionChecker() {
    try {
        stop();
    } catch (const Exception&) {
    }
}

void VersionChecker::start() { thread_.start(); }

std::optional<VersionCheckResult> VersionChecker::result() const {
    if (!finished_.load()) return std::nullopt;
    std::lock_guard<std::mutex> guard(lock_);
    return result_;
}

bool VersionChecker::stop(int milliseconds) {
    cancelled_.store(true);
    cancelEvent_.signal();
    if (!thread_.isRunning() || thread_.wait(milliseconds)) return true;
    thread_.kill();
    return false;
}

std::string VersionChecker::requestUrl(const Request& request) {
    std::string url = request.serverUrl;
    if (url.empty() || (url.back() != '?' && url.back() != '&')) url += url.find('?') == std::string::npos ? '?' : '&';
    return url + "v=3&x=" + request.parameters + "&bhh=" + request.hash;
}

void VersionChecker::run() {
    finished_.store(false);
    std::uint32_t due = millisecondTick();
    while (attemptsLeft_ > 0) {
        // Sleeps a tenth of a second at a time, and wakes at once when told to stop.
        if (cancelEvent_.wait(100)) return;
        if (tickBefore(millisecondTick(), due)) continue;
        due += retryMilliseconds;
        if (!probe_()) continue;
        --attemptsLeft_;
        try {
            const int timeout = retryMilliseconds * 2;
            VersionCheckResult answer = read_(httpGet(requestUrl(request_), agent, timeout, cancelled_));
            {
                std::lock_guard<std::mutex> guard(lock_);
                result_ = std::move(answer);
            }
            finished_.store(true);
            return;
        } catch (...) {
            // No network, a bad answer, a cancel: silence, and perhaps another try.
        }
    }
}

}  // namespace tw
