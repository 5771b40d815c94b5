// The check for a newer build: on a thread of its own, which wakes ten times a second so
// that closing the editor is quick, tries the network every 5 seconds while a connection
// exists, and gives up after 3 failed requests. The editor's slow timer picks up the
// answer; nothing here is ever shown or reported from the thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/Event.h"
#include "platform/Thread.h"

namespace tw {

struct VersionCheckResult {
    std::string urgent;    // shown whatever the version
    std::string message;   // shown with a newer version
    std::int32_t version = 0;  // the newest build number
    std::string url;       // the page to open
};

// Whether any network interface but the loopback is up.
bool hasNetworkConnection();

class VersionChecker {
public:
    struct Request {
        std::string serverUrl;
        std::string parameters;  // the block after "x=" and the value after "bhh=": the
        std::string hash;        // licence gate's, empty in a build without one
    };
    using ConnectionProbe = std::function<bool()>;
    // Turns the body of an answer into the result, on the checker's thread; raises for
    // an answer without this product's record.
    using AnswerReader = std::function<VersionCheckResult(const std::string& body)>;

    static constexpr int attempts = 3;
    static constexpr int retryMilliseconds = 5000;
    static constexpr const char* agent = "Marlin Works Version Checker";

    // Made stopped; `start` runs the thread.
    VersionChecker(Request request, AnswerReader read, ConnectionProbe probe = hasNetworkConnection);
    // Stops the thread as `stop` with the full wait.
    ~VersionChecker();
    VersionChecker(const VersionChecker&) = delete;
    VersionChecker& operator=(const VersionChecker&) = delete;

    void start();
    bool isRunning() const { return thread_.isRunning(); }
    // The answer, once a request has succeeded.
    std::optional<VersionCheckResult> result() const;
    // Tells the thread to end, a request in flight included, waits at most
    // `milliseconds`, and then lets it go. Answers whether it ended in time.
    bool stop(int milliseconds = 20000);

    // The address asked: the server's, "?" or "&" unless it ends in one, then
    // "v=3&x=<parameters>&bhh=<hash>".
    static std::string requestUrl(const Request& request);

private:
    void run();

    const Request request_;
    const AnswerReader read_;
    const ConnectionProbe probe_;
    int attemptsLeft_ = attempts;
    std::atomic<bool> finished_{false};
    std::atomic<bool> cancelled_{false};
    Event cancelEvent_;
    mutable std::mutex lock_;
    VersionCheckResult result_;  // under lock_
    Thread thread_;
};

}  // namespace tw
