#include "platform/HttpClient.h"

#include <curl/curl.h>

#include <memory>
#include <mutex>

namespace tw {

namespace {

constexpr std::size_t maxAnswer = 64 * 1024;

struct Transfer {
    std::string body;
    bool tooLong = false;
};

std::size_t collect(char* data, std::size_t size, std::size_t count, void* user) {
    auto* t = static_cast<Transfer*>(user);
    std::size_t n = size * count;
    if (t->body.size() + n > maxAnswer) {
        t->tooLong = true;
        return 0;  // ends the transfer
    }
    t->body.append(data, n);
    return n;
}

}  // namespace

std::string httpGet(const std::string& url, const std::string& agent, int timeoutMs, const std::atomic<bool>& cancel) {
    // libcurl's global set-up is not thread-safe in every build: once, whoever asks first.
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });

    std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
    if (!curl) throw HttpException("The HTTP client could not start");
    Transfer transfer;
    char error[CURL_ERROR_SIZE] = {};
    CURL* c = curl.get();
    curl_easy_setopt(c, CURLOPT_URL, url.c_str());
    curl_easy_setopt(c, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(c, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(c, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(c, CURLOPT_MAXREDIRS, 3L);
    curl_easy_setopt(c, CURLOPT_USERAGENT, agent.c_str());
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_TIMEOUT_MS, static_cast<long>(timeoutMs));
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeoutMs));
    curl_easy_setopt(c, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(c, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(c, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, error);

    // Driven in steps of at most 50 ms, so that a cancel ends even a wait for a server
    // that never answers at once.
    std::unique_ptr<CURLM, CURLMcode (*)(CURLM*)> multi(curl_multi_init(), curl_multi_cleanup);
    if (!multi || curl_multi_add_handle(multi.get(), c) != CURLM_OK) throw HttpException("The HTTP client could not start");
    struct Detach {
        CURLM* m;
        CURL* c;
        ~Detach() { curl_multi_remove_handle(m, c); }
    } detach{multi.get(), c};
    CURLcode code = CURLE_OK;
    for (int running = 1; running > 0;) {
        if (cancel.load()) throw HttpException("The request was cancelled");
        if (curl_multi_perform(multi.get(), &running) != CURLM_OK) throw HttpException("The HTTP client failed");
        int queued = 0;
        while (CURLMsg* message = curl_multi_info_read(multi.get(), &queued))
            if (message->msg == CURLMSG_DONE) code = message->data.result;
        if (running > 0) curl_multi_poll(multi.get(), nullptr, 0, 50, nullptr);
    }
    if (transfer.tooLong) throw HttpException("The answer is too long");
    if (code != CURLE_OK) throw HttpException(*error ? error : curl_easy_strerror(code));
    return transfer.body;
}

}  // namespace tw
