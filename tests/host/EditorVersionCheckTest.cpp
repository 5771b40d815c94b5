// The check for a newer build as the editor runs it, against a small HTTP server of the
// test's own on 127.0.0.1: when it starts, what the slow tick shows once the editor's
// window is in front, what it records, and the action that turns it off. Every wait is a
// bounded loop, and nothing reaches any other address.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <thread>

#include "product/TidewakeEditorFactory.h"
#include "cushy/MessageBox.h"
#include "cushy/StringTable.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"
#include "editor/ModelController.h"
#include "patch/ModelFactory.h"
#include "patch/Prefs.h"
#include "product/TidewakeDescriptor.h"
#include "platform/Launcher.h"
#include "tests/host/ProductResources.h"
#include "tests/host/TestHost.h"
#include "tests/editor/LoopbackServer.h"

namespace {

using namespace tw;
using tw::test::LoopbackServer;
using tw::test::TestHost;
using tw::test::resources;
using tw::test::strings;

std::string answer(const std::string& record) { return test::httpOk("Tidewake.linux.x64: { " + record + " }\n"); }

class EditorVersionCheck : public ::testing::Test {
protected:
    void SetUp() override {
        Prefs prefs(tidewakeDescriptor());
        prefs.remove("vcon");
        prefs.remove("lavc");
        prefs.save();
        setLaunchSeam([this](LaunchKind, const std::string& target) { launched.push_back(target); });
    }
    void TearDown() override {
        if (controller) controller->close();
        setLaunchSeam({});
    }

    // Opens the editor with the check asking `server`, over a connection that is there.
    void open(LoopbackServer& server) {
        controller.reset();
        window.reset();
        controller = tidewakeEditor().createController(host.instance(), resources(), strings());
        controller->setVersionCheckServer(server.url(), [] { return true; });
        window = std::make_unique<WindowDouble>(controller->client(), 525, 475);
        window->user = [this](WindowDouble&) {
            WindowDouble* helper = window->topHelper();
            ASSERT_NE(helper, nullptr);
            auto& box = dynamic_cast<MessageBox&>(helper->client());
            shown.push_back(box.lines());
            const bool yesNo = !box.buttonRect(AlertButton::no).isEmpty();
            const IntRect button = box.buttonRect(yesNo ? (pressYes ? AlertButton::yes : AlertButton::no) : AlertButton::ok);
            helper->mouseDown(button.left + 3, button.top + 3);
            helper->mouseUp(button.left + 3, button.top + 3);
        };
        controller->open(window.get());
    }
    // Lets the slow timer run until the check is over, for at most three seconds.
    bool awaitCheck() {
        for (int i = 0; i < 300 && controller->isVersionCheckRunning(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            window->advance(ModelController::slowPeriod);
        }
        return !controller->isVersionCheckRunning();
    }
    std::optional<std::string> pref(const char* key) { return Prefs(tidewakeDescriptor()).get(key); }
    std::string joined(std::size_t box) {
        std::string text;
        for (const std::string& line : shown.at(box)) text += (text.empty() ? "" : " ") + line;
        return text;
    }

    TestHost host;
    std::unique_ptr<ModelController> controller;
    std::unique_ptr<WindowDouble> window;
    std::vector<std::vector<std::string>> shown;
    std::vector<std::string> launched;
    bool pressYes = false;
};

TEST_F(EditorVersionCheck, ANewerBuildIsToldOnceAndYesOpensItsPage) {
    LoopbackServer server(answer("version: 62, url: \"https://example.invalid/tidewake\""));
    open(server);
    EXPECT_TRUE(controller->isChecked(controller->rootView(), "toggleVersionCheck", ""));
    EXPECT_TRUE(controller->isEnabled(controller->rootView(), "toggleVersionCheck", ""));
    pressYes = true;
    ASSERT_TRUE(awaitCheck());
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_NE(joined(0).find("An update of Tidewake is available."), std::string::npos) << joined(0);
    EXPECT_NE(joined(0).find("Do you wish to view the information page?"), std::string::npos) << joined(0);
    EXPECT_EQ(launched, std::vector<std::string>{"https://example.invalid/tidewake"});
    ASSERT_TRUE(pref("lavc"));
    EXPECT_EQ(pref("lavc")->rfind("0x", 0), 0u);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(EditorVersionCheck, TheSameBuildShowsNothingUnlessTheAnswerIsUrgent) {
    {
        LoopbackServer server(answer("version: 61, message: \"Hello\""));
        open(server);
        ASSERT_TRUE(awaitCheck());
        EXPECT_TRUE(shown.empty());
        EXPECT_TRUE(pref("lavc")) << "a check that found nothing counts as a check";
        controller->close();
    }
    Prefs(tidewakeDescriptor()).remove("lavc");
    LoopbackServer urgent(answer("version: 61, urgent: \"Please update: a fault was found.\""));
    open(urgent);
    ASSERT_TRUE(awaitCheck());
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(joined(0), "Please update: a fault was found.");
    EXPECT_TRUE(launched.empty());
}

TEST_F(EditorVersionCheck, TheNoticeWaitsUntilTheEditorIsInFront) {
    LoopbackServer server(answer("version: 70, message: \"Tidewake 2 is out.\""));
    open(server);
    window->setActive(false);
    ASSERT_TRUE(server.awaitRequests(1));
    for (int i = 0; i < 20; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        window->advance(ModelController::slowPeriod);
    }
    EXPECT_TRUE(controller->isVersionCheckRunning()) << "the answer waits for the user";
    EXPECT_TRUE(shown.empty());
    window->setActive(true);
    ASSERT_TRUE(awaitCheck());
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(joined(0), "Tidewake 2 is out.");
}

TEST_F(EditorVersionCheck, BadAnswersAndSilentServersShowNothingAndClosingEndsTheCheck) {
    for (const std::string& reply : {test::httpOk("Other.linux.x64: { version: 99 }"), std::string(), std::string("silence")}) {
        LoopbackServer server(reply);
        open(server);
        ASSERT_TRUE(server.awaitRequests(1));
        for (int i = 0; i < 10; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            window->advance(ModelController::slowPeriod);
        }
        EXPECT_TRUE(controller->isVersionCheckRunning()) << "trying again later";
        controller->close();
        EXPECT_FALSE(controller->isVersionCheckRunning());
        EXPECT_TRUE(shown.empty());
        EXPECT_FALSE(pref("lavc")) << "a check cut short is no check";
    }
}

TEST_F(EditorVersionCheck, TheLastCheckDecidesWhetherTheNextIsDue) {
    LoopbackServer server(answer("version: 61"));
    const auto now = static_cast<long long>(std::time(nullptr));
    auto hex = [](long long t) {
        char text[32];
        std::snprintf(text, sizeof text, "0x%llx", t);
        return std::string(text);
    };
    Prefs(tidewakeDescriptor()).set("lavc", hex(now - 3600));
    open(server);
    EXPECT_FALSE(controller->isVersionCheckRunning()) << "checked an hour ago";
    controller->close();

    Prefs(tidewakeDescriptor()).set("lavc", hex(now + 3 * 86400 + 60));
    open(server);
    EXPECT_TRUE(controller->isVersionCheckRunning()) << "a clock set back by three days checks too";
    ASSERT_TRUE(awaitCheck());
}

TEST_F(EditorVersionCheck, TurnedOffNoThreadStartsAndTurningItOnChecksAtOnce) {
    LoopbackServer server(answer("version: 61"));
    Prefs(tidewakeDescriptor()).set("vcon", "false");
    open(server);
    EXPECT_FALSE(controller->isVersionCheckRunning());
    EXPECT_FALSE(controller->isChecked(controller->rootView(), "toggleVersionCheck", ""));
    controller->perform(controller->rootView(), "toggleVersionCheck", "");
    EXPECT_EQ(pref("vcon"), std::optional<std::string>("true"));
    EXPECT_TRUE(controller->isChecked(controller->rootView(), "toggleVersionCheck", ""));
    EXPECT_TRUE(controller->isVersionCheckRunning()) << "turning it on checks at once";
    controller->perform(controller->rootView(), "toggleVersionCheck", "");
    EXPECT_EQ(pref("vcon"), std::optional<std::string>("false"));
    EXPECT_FALSE(controller->isChecked(controller->rootView(), "toggleVersionCheck", ""));
    ASSERT_TRUE(awaitCheck());
    EXPECT_TRUE(shown.empty());
}

}  // namespace
