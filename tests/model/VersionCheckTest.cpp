// The version check against a small HTTP server of the test's own on 127.0.0.1: what is
// asked, what an answer gives, and how the checker gives up and stops. Nothing here
// reaches any other address, and every wait is bounded.
#include "model/VersionAnswer.h"
#include "model/TidewakeDescriptor.h"
#include "platform/Exception.h"
#include "platform/VersionChecker.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tw {
namespace {

// Answers each connection with `reply`: a whole HTTP response, "" to close at once, or
// "silence" to keep the connection open without a word until the server ends.
class LoopbackServer {
public:
    explicit LoopbackServer(std::string reply) : reply_(std::move(reply)) {
        listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener_, 8) != 0 ||
            ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
            throw std::runtime_error("no loopback server");
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { serve(); });
    }
    ~LoopbackServer() {
        done_.store(true);
        thread_.join();
        ::close(listener_);
    }
    std::string url(const std::string& path = "/check") const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    std::vector<std::string> requests() {
        std::lock_guard<std::mutex> guard(lock_);
        return requests_;
    }
    // Waits up to two seconds for the count of requests to reach `n`.
    bool awaitRequests(std::size_t n) {
        for (int i = 0; i < 200 && requests().size() < n; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return requests().size() >= n;
    }

private:
    void serve() {
        std::vector<int> open;
        while (!done_.load()) {
            pollfd p{listener_, POLLIN, 0};
            if (::poll(&p, 1, 20) <= 0) continue;
            int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection < 0) continue;
            std::string request;
            char buffer[2048];
            while (request.find("\r\n\r\n") == std::string::npos) {
                pollfd q{connection, POLLIN, 0};
                if (::poll(&q, 1, 1000) <= 0) break;
                ssize_t n = ::read(connection, buffer, sizeof buffer);
                if (n <= 0) break;
                request.append(buffer, static_cast<std::size_t>(n));
            }
            {
                std::lock_guard<std::mutex> guard(lock_);
                requests_.push_back(request);
            }
            if (reply_ == "silence") {
                open.push_back(connection);
                continue;
            }
            if (!reply_.empty()) (void)!::write(connection, reply_.data(), reply_.size());
            ::close(connection);
        }
        for (int c : open) ::close(c);
    }

    std::string reply_;
    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> done_{false};
    std::mutex lock_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

std::string httpOk(const std::string& body) {
    return "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
}

const std::string productId = versionCheckProductId(tidewakeDescriptor());

VersionChecker::AnswerReader reader() {
    return [](const std::string& body) { return readVersionAnswer(body, productId); };
}

TEST(VersionCheck, TheRequestAndTheAnswer) {
    EXPECT_EQ(productId, "Tidewake.linux.x64");
    EXPECT_EQ(VersionChecker::requestUrl({"http://h/check", "", ""}), "http://h/check?v=3&x=&bhh=");
    EXPECT_EQ(VersionChecker::requestUrl({"http://h/c?a=1", "p", "q"}), "http://h/c?a=1&v=3&x=p&bhh=q");
    EXPECT_EQ(VersionChecker::requestUrl({"http://h/c?", "", ""}), "http://h/c?v=3&x=&bhh=");

    VersionCheckResult r = readVersionAnswer(
        "Other.linux.x64: { version: 99 }\nTidewake.linux.x64: { version: 62, message: \"New!\", url: \"https://x/\" }",
        productId);
    EXPECT_EQ(r.version, 62);
    EXPECT_EQ(r.message, "New!");
    EXPECT_EQ(r.url, "https://x/");
    EXPECT_EQ(r.urgent, "");
    EXPECT_THROW(readVersionAnswer("Other.linux.x64: { version: 99 }", productId), FormatException);
}

TEST(VersionCheck, AnAnswerFromTheServerIsPickedUp) {
    LoopbackServer server(httpOk("Tidewake.linux.x64: { version: 61, urgent: \"Read this\" }\n"));
    VersionChecker checker({server.url(), "", ""}, reader(), [] { return true; });
    checker.start();
    for (int i = 0; i < 300 && !checker.result(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(checker.result());
    EXPECT_EQ(checker.result()->version, 61);
    EXPECT_EQ(checker.result()->urgent, "Read this");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].rfind("GET /check?v=3&x=&bhh= HTTP/1.1\r\n", 0), 0u) << server.requests()[0];
    EXPECT_NE(server.requests()[0].find("User-Agent: Marlin Works Version Checker\r\n"), std::string::npos);
    EXPECT_TRUE(checker.stop(1000));
}

TEST(VersionCheck, BadAnswersAndNoAnswersEndInSilence) {
    for (const std::string& reply : {httpOk("Other.linux.x64: { version: 99 }"), std::string(),
                                     std::string("HTTP/1.0 500 Broken\r\n\r\n")}) {
        LoopbackServer server(reply);
        VersionChecker checker({server.url(), "", ""}, reader(), [] { return true; });
        checker.start();
        ASSERT_TRUE(server.awaitRequests(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        EXPECT_FALSE(checker.result());
        EXPECT_TRUE(checker.isRunning()) << "waiting to try again";
        EXPECT_TRUE(checker.stop(1000));
    }
}

TEST(VersionCheck, StoppingEndsTheThreadAtOnceEvenInsideARequest) {
    LoopbackServer silent("silence");
    VersionChecker waiting({silent.url(), "", ""}, reader(), [] { return true; });
    waiting.start();
    ASSERT_TRUE(silent.awaitRequests(1));
    EXPECT_TRUE(waiting.stop(1000)) << "a server that never answers is left at once";
    EXPECT_FALSE(waiting.result());

    // Without a connection nothing is asked at all, and the sleep ends at once too.
    LoopbackServer unused(httpOk(""));
    VersionChecker offline({unused.url(), "", ""}, reader(), [] { return false; });
    offline.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_TRUE(offline.stop(1000));
    EXPECT_TRUE(unused.requests().empty());
}

}  // namespace
}  // namespace tw
