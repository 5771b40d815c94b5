// The version check against a small HTTP server of the test's own on 127.0.0.1: what is
// asked, what an answer gives, and how the checker gives up and stops. Nothing here
// reaches any other address, and every wait is bounded.
#include "editor/VersionAnswer.h"
#include "product/TidewakeDescriptor.h"
#include "platform/Exception.h"
#include "platform/VersionChecker.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/editor/LoopbackServer.h"

namespace tw {
namespace {

using test::LoopbackServer;
using test::httpOk;

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
