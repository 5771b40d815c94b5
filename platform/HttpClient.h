// The one HTTP request the product makes: the version check's GET, through libcurl, on
// the checker's own thread. Bounded in time and size, and cancellable from outside.
#pragma once

#include <atomic>
#include <string>

#include "platform/Exception.h"

namespace tw {

// A request that failed: no connection, an HTTP error, a time-out, a cancel.
class HttpException : public Exception {
public:
    using Exception::Exception;
};

// The body of the answer to a GET of `url` (http or https only), sent with `agent` as
// the user agent. Gives up after `timeoutMs`, beyond 64 KiB of answer, or as soon as
// `cancel` turns true. Raises HttpException with curl's words.
std::string httpGet(const std::string& url, const std::string& agent, int timeoutMs, const std::atomic<bool>& cancel);

}  // namespace tw
