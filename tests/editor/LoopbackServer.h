// A small HTTP server of a test's own on 127.0.0.1, for the version check: it records
// what it is asked and answers every connection alike. Nothing else is ever reached.
#pragma once

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tw::test {

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

inline std::string httpOk(const std::string& body) {
    return "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
}

}  // namespace tw::test
