// The editor's controller over a real plug-in instance and a recording host: variables and
// actions as layouts use them, the undo stack, the clipboard, randomising, automation as the
// host sees it, the polling that shows what the host changed, and the startup bank.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <set>
#include <unistd.h>

#include "product/TidewakeEditorFactory.h"
#include "cushy/CushyView.h"
#include "cushy/StringTable.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"
#include "editor/ModelController.h"
#include "patch/StartupBank.h"
#include "product/TidewakeController.h"
#include "product/TidewakeDescriptor.h"
#include "platform/Clipboard.h"
#include "platform/Exception.h"
#include "platform/SharedStore.h"
#include "tests/host/ProductResources.h"
#include "tests/host/TestHost.h"

namespace {

using namespace tw;
using tw::test::HostCall;
using tw::test::TestHost;
using tw::test::resources;
using tw::test::strings;

class Controller : public ::testing::Test {
protected:
    void SetUp() override {
        controller = tidewakeEditor().createController(instance(), resources(), strings());
        controller->open(nullptr);
        host.calls.clear();
    }

    Instance& instance() { return host.instance(); }
    CushyView& view() { return controller->rootView(); }
    std::string get(const std::string& name) { return controller->getVariable(view(), name); }
    void set(const std::string& name, const std::string& value, bool continuous = false) {
        controller->setVariable(view(), name, value, continuous);
    }
    void perform(const std::string& action, const std::string& params = "") {
        controller->perform(view(), action, params);
    }
    float value(int id) { return instance().getParameter(instance().getCurrentProgram(), id); }
    // A change made as a knob makes it: a bracketed run of continuous writes.
    void drag(const std::string& name, std::initializer_list<double> values) {
        controller->beginEnd(view(), name, true);
        for (double v : values) set(name, std::to_string(v), true);
        controller->beginEnd(view(), name, false);
    }
    std::string errorOf(const std::string& action, const std::string& params) {
        try {
            perform(action, params);
        } catch (const Exception& e) {
            return e.what();
        }
        return "no error";
    }

    TestHost host;
    std::unique_ptr<ModelController> controller;
};

TEST_F(Controller, UnknownNamesReadAsThemselvesAndWritesMakePlainVariables) {
    EXPECT_EQ(get("params.nonsense"), "params.nonsense");
    EXPECT_TRUE(controller->isWritable(view(), "params.nonsense"));
    set("params.nonsense", "12");
    EXPECT_EQ(get("params.nonsense"), "12");
    EXPECT_EQ(get("feedbacks.lfoNeedlePositions[10]"), "feedbacks.lfoNeedlePositions[10]");
    EXPECT_NE(get("feedbacks.lfoNeedlePositions[9]"), "feedbacks.lfoNeedlePositions[9]");
    EXPECT_EQ(get("feedbacks.lfoOutputLevel"), "0");
    EXPECT_FALSE(controller->isWritable(view(), "feedbacks.lfoOutputLevel"));
}

TEST_F(Controller, ConstantsAreFixedAndNameTheBuild) {
    EXPECT_EQ(get("MODEL.NAME"), "Tidewake");
    set("MODEL.NAME", "Other");
    EXPECT_EQ(get("MODEL.NAME"), "Tidewake");
    EXPECT_FALSE(controller->isWritable(view(), "MODEL.NAME"));
    EXPECT_EQ(get("MODEL.IDENTIFIER"), "Tidewake");
    EXPECT_EQ(get("MODEL.VERSION"), std::string(1, '\0'));
    EXPECT_EQ(get("PLATFORM.OS"), "Linux");
    EXPECT_EQ(get("PLATFORM.CPU"), "x86-64");
    EXPECT_TRUE(get("BUILD.COMPILER").starts_with("GCC ") || get("BUILD.COMPILER").starts_with("Clang "));
    EXPECT_TRUE(get("BUILD.LIBS").starts_with("zlib ")) << get("BUILD.LIBS");
    EXPECT_EQ(get("DIRS.BINARY").front(), '"');
}

TEST_F(Controller, ParametersReadAsNumbersAndAsHumanText) {
    instance().editParameter(0, Param::wetMix, 0.25f);
    controller->fastTick();
    EXPECT_EQ(get("params.wetMix"), "0.25");
    EXPECT_EQ(get("params.wetMix.human"), "25.00 %");
    set("params.wetMix.human", "40 %", true);
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.4f);
    set("params.wetMix", "nonsense");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.0f) << "a text that doesn't convert counts as 0";
}

TEST_F(Controller, ChangeParamRaisesItsOwnMessages) {
    EXPECT_EQ(errorOf("changeParam", "{ to: 1 }"), "Missing param for changeParam");
    EXPECT_EQ(errorOf("changeParam", "{ param: bogus, to: 1 }"), "Unknown param for changeParam: \"bogus\"");
    EXPECT_EQ(errorOf("changeParam", "{ param: wetMix }"),
              "Invalid action params for changeParam: \"{ param: wetMix }\"");
    EXPECT_EQ(controller->undoSize(), 0u) << "a failed action leaves no record";
    EXPECT_FALSE(controller->isEnabled(view(), "changeParam", "{ param: bogus, to: 1 }"));
    EXPECT_FALSE(controller->isEnabled(view(), "noSuchAction", ""));
}

TEST_F(Controller, ChangeParamClampsAndKeepsValuesOnTheirSteps) {
    instance().editParameter(0, Param::wetMix, 0.95f);
    controller->fastTick();
    perform("changeParam", "{ param: wetMix, by: 0.1 }");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 1.0f);
    perform("changeParam", "{ param: antiReflection, to: 0 }");
    perform("changeParam", "{ param: antiReflection, to: 0.7 }");
    EXPECT_EQ(value(Param::antiReflection), 1.0f);
    perform("changeParam", "{ param: antiReflection, toggle: true }");
    EXPECT_EQ(value(Param::antiReflection), 0.0f);
    perform("changeParam", "{ param: lfoShape, to: $+0.3 }");
    EXPECT_FLOAT_EQ(value(Param::lfoShape), 1.0f / 3.0f);

    EXPECT_TRUE(controller->isChecked(view(), "changeParam", "{ param: lfoShape, to: 0.33333334 }"));
    EXPECT_FALSE(controller->isChecked(view(), "changeParam", "{ param: lfoShape, to: 0.33333334, whenEqual: nothing }"));
    EXPECT_FALSE(controller->isEnabled(view(), "changeParam", "{ param: lfoShape, to: 0.33333334, whenEqual: disabled }"));
    EXPECT_TRUE(controller->isEnabled(view(), "changeParam", "{ param: lfoShape, to: 1, whenEqual: disabled }"));
    EXPECT_FALSE(controller->isChecked(view(), "changeParam", "{ param: antiReflection, toggle: true }"));
}

TEST_F(Controller, ChangesToOneParameterMergeUntilAnotherComesBetween) {
    perform("changeParam", "{ param: wetMix, to: 0.5 }");
    perform("changeParam", "{ param: wetMix, to: 0.6 }");
    EXPECT_EQ(controller->undoSize(), 1u);
    EXPECT_EQ(get("undo.description"), "Change Wet Mix");
    perform("changeParam", "{ param: phaseShift, to: 0.1 }");
    perform("changeParam", "{ param: wetMix, to: 0.7 }");
    EXPECT_EQ(controller->undoSize(), 3u);
}

TEST_F(Controller, ADragLeavesOneRecordAndTheHostSeesOneGesture) {
    controller->beginEnd(view(), "params.delayTime", true);
    for (int i = 1; i <= 100; ++i) set("params.delayTime", std::to_string(i / 200.0), true);
    controller->beginEnd(view(), "params.delayTime", false);
    EXPECT_EQ(controller->undoSize(), 1u);
    EXPECT_FLOAT_EQ(value(Param::delayTime), 0.5f);

    const int hostIndex = instance().hostIndex(Param::delayTime);
    ASSERT_EQ(hostIndex, 5) << "delayTime is not where the host order puts it";
    ASSERT_GE(host.calls.size(), 3u);
    EXPECT_EQ(host.calls.front().opcode, vst2::audioMasterBeginEdit);
    EXPECT_EQ(host.calls.back().opcode, vst2::audioMasterEndEdit);
    const auto automated = host.callsOf(vst2::audioMasterAutomate);
    EXPECT_EQ(automated.size(), 100u);
    for (const HostCall& c : host.calls) EXPECT_EQ(c.index, hostIndex);
    EXPECT_FLOAT_EQ(automated.back().opt, 0.5f);

    drag("params.delayTime", {0.01, 0.02, 0.03});
    EXPECT_EQ(controller->undoSize(), 1u) << "a second drag of the same parameter merges";
    drag("params.wetMix", {0.01, 0.02, 0.03});
    EXPECT_EQ(controller->undoSize(), 2u);
}

TEST_F(Controller, AFailedTextEntryStillLeavesItsRecord) {
    const float before = value(Param::wetMix);
    controller->beginEnd(view(), "params.wetMix.human", true);
    set("params.wetMix.human", "loud", true);
    controller->beginEnd(view(), "params.wetMix.human", false);
    EXPECT_EQ(value(Param::wetMix), before);
    EXPECT_EQ(controller->undoSize(), 1u);
    // A typed value never merges, even into a record of the same parameter.
    controller->beginEnd(view(), "params.wetMix.human", true);
    set("params.wetMix.human", "20 %", true);
    set("params.wetMix.human", "30 %", true);
    controller->beginEnd(view(), "params.wetMix.human", false);
    EXPECT_EQ(controller->undoSize(), 2u) << "one record for the gesture, none merged";
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.3f);
}

TEST_F(Controller, PatchNameWritesRenameAndTellTheHost) {
    EXPECT_TRUE(controller->isWritable(view(), "patch.name"));
    set("patch.name", "Shore", true);
    EXPECT_EQ(get("patch.name"), "Shore");
    EXPECT_EQ(get("undo.description"), "Rename Patch");
    EXPECT_EQ(host.callsOf(vst2::audioMasterUpdateDisplay).size(), 1u);
    set("patch.name", "Shore");
    EXPECT_EQ(host.callsOf(vst2::audioMasterUpdateDisplay).size(), 1u) << "no change, no call";
    EXPECT_FALSE(controller->isWritable(view(), "undo.description"));
    set("undo.description", "x");
    EXPECT_EQ(get("undo.description"), "Rename Patch");
}

TEST_F(Controller, TurningOffDelaySync) {
    EXPECT_FALSE(controller->isEnabled(view(), "turnOffDelaySync", ""));
    perform("turnOffDelaySync");
    EXPECT_EQ(controller->undoSize(), 0u);
    EXPECT_TRUE(host.calls.empty());

    perform("changeParam", "{ param: delaySync, to: 1 }");
    perform("changeParam", "{ param: delayTime, to: 0.5 }");
    EXPECT_TRUE(controller->isEnabled(view(), "turnOffDelaySync", ""));
    host.calls.clear();
    perform("turnOffDelaySync");
    EXPECT_EQ(value(Param::delaySync), 0.0f);
    EXPECT_EQ(get("undo.description"), "Turn Off Sync");
    EXPECT_EQ(controller->undoSize(), 3u);
    const auto begins = host.callsOf(vst2::audioMasterBeginEdit);
    const auto ends = host.callsOf(vst2::audioMasterEndEdit);
    ASSERT_EQ(begins.size(), 2u);
    ASSERT_EQ(ends.size(), 2u);
    EXPECT_EQ(begins[0].index, instance().hostIndex(Param::delaySync));
    EXPECT_EQ(ends[0].index, instance().hostIndex(Param::delayTime));
    perform("undo");
    EXPECT_EQ(value(Param::delaySync), 1.0f);
}

TEST_F(Controller, TheHostsChangesShowAfterOneFastTick) {
    EXPECT_EQ(get("params.wetMix"), "1");
    instance().editParameter(0, Param::wetMix, 0.5f);
    EXPECT_EQ(get("params.wetMix"), "1") << "one snapshot per refresh";
    controller->fastTick();
    EXPECT_EQ(get("params.wetMix"), "0.5");

    const std::string first = get("patch.name");
    host.dispatch(vst2::effSetProgram, 0, 3);
    controller->fastTick();
    EXPECT_NE(get("patch.name"), first);
    EXPECT_EQ(get("patch.name"), instance().clonePatch(3)->getName());

    // A chunk from the host replaces the patch object itself.
    instance().editParameter(3, Param::wetMix, 0.5f);
    void* data = nullptr;
    const auto size = host.dispatch(vst2::effGetChunk, 1, 0, &data);
    const std::string chunk(static_cast<const char*>(data), static_cast<std::size_t>(size));
    instance().editParameter(3, Param::wetMix, 0.75f);
    controller->fastTick();
    EXPECT_EQ(get("params.wetMix"), "0.75");
    ASSERT_EQ(host.dispatch(vst2::effSetChunk, 1, size, const_cast<char*>(chunk.data())), size);
    EXPECT_EQ(get("params.wetMix"), "0.75");
    controller->fastTick();
    EXPECT_EQ(get("params.wetMix"), "0.5");
}

TEST(ControllerInAWindow, PollsThroughTheWindowsTimersUntilClosed) {
    TestHost host;
    Instance& instance = host.instance();
    auto controller = tidewakeEditor().createController(instance, resources(), strings());
    WindowDouble window(controller->client(), 525, 475);
    controller->open(&window);
    EXPECT_TRUE(window.timers().isScheduled(controller.get(), ModelController::fastTimer));
    EXPECT_TRUE(window.timers().isScheduled(controller.get(), ModelController::slowTimer));
    instance.editParameter(0, Param::wetMix, 0.5f);
    window.advance(11);
    EXPECT_EQ(controller->getVariable(controller->rootView(), "params.wetMix"), "0.5");
    instance.editParameter(0, Param::wetMix, 0.25f);
    window.advance(600);
    EXPECT_EQ(controller->getVariable(controller->rootView(), "params.wetMix"), "0.25") << "the timer re-arms itself";
    controller->close();
    EXPECT_FALSE(window.timers().isScheduled(controller.get(), ModelController::fastTimer));
    EXPECT_FALSE(window.timers().isScheduled(controller.get(), ModelController::slowTimer));
}

TEST(ControllerInAWindow, AKnobDragInTheMainLayoutReachesTheHostAndUndoTakesItBack) {
    TestHost host;
    Instance& instance = host.instance();
    auto controller = tidewakeEditor().createController(instance, resources(), strings());
    WindowDouble window(controller->client(), 525, 475);
    controller->open(&window);
    ASSERT_EQ(controller->rootView().currentLayout(), "Tidewake_main");
    host.calls.clear();

    // The wet mix knob, in the output section, is centred at (458, 292); down lowers it.
    window.mouseDown(458, 292);
    for (int y = 302; y <= 352; y += 10) window.mouseMove(458, y, 1u << leftButton);
    window.mouseUp(458, 352);
    const float dragged = instance.getParameter(0, Param::wetMix);
    EXPECT_LT(dragged, 0.9f);
    ASSERT_GE(host.calls.size(), 3u);
    EXPECT_EQ(host.calls.front().opcode, vst2::audioMasterBeginEdit);
    EXPECT_EQ(host.calls.back().opcode, vst2::audioMasterEndEdit);
    for (const HostCall& c : host.calls) EXPECT_EQ(c.index, instance.hostIndex(Param::wetMix));
    EXPECT_FLOAT_EQ(host.callsOf(vst2::audioMasterAutomate).back().opt, dragged);
    EXPECT_EQ(controller->undoSize(), 1u);

    // Shift-click on the main menu button repeats the menu's last choice, here Undo.
    controller->setVariable(controller->rootView(), "lastMainMenuAction", "undo", false);
    controller->setVariable(controller->rootView(), "lastMainMenuParams", "", false);
    window.advance(11);
    window.setModifiers(true, false, false);
    window.mouseDown(501, 20);
    window.mouseUp(501, 20);
    EXPECT_EQ(instance.getParameter(0, Param::wetMix), 1.0f);
    controller->close();
}

// ---- Undo ----

TEST_F(Controller, UndoIsEmptyAfterOpenAndGreysOut) {
    EXPECT_EQ(get("undo.description"), "");
    EXPECT_EQ(get("redo.description"), "");
    EXPECT_FALSE(controller->isEnabled(view(), "undo", ""));
    EXPECT_FALSE(controller->isEnabled(view(), "redo", ""));
    perform("undo");
    perform("redo");
    EXPECT_EQ(controller->undoSize(), 0u);
}

TEST_F(Controller, TheStackKeepsTheNewestHundredAndOne) {
    for (int i = 0; i < 150; ++i)
        drag(i % 2 ? "params.wetMix" : "params.phaseShift", {(i % 100) / 100.0});
    EXPECT_EQ(controller->undoSize(), 101u);
    while (controller->isEnabled(view(), "undo", "")) perform("undo");
    EXPECT_EQ(controller->undoSize(), 102u) << "with the record redo returns to";
    // The oldest reachable state is the one before change 49.
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.47f);
    EXPECT_FLOAT_EQ(value(Param::phaseShift), 0.48f);
}

TEST_F(Controller, AChangeAfterUndoCutsRedo) {
    perform("changeParam", "{ param: wetMix, to: 0.5 }");
    perform("changeParam", "{ param: phaseShift, to: 0.1 }");
    perform("undo");
    EXPECT_EQ(get("redo.description"), "Change Phase Shift");
    EXPECT_TRUE(controller->isEnabled(view(), "redo", ""));
    perform("changeParam", "{ param: wetMix, to: 0.6 }");
    EXPECT_FALSE(controller->isEnabled(view(), "redo", ""));
    EXPECT_EQ(controller->undoSize(), 2u) << "a new record, though the one below has the same description";
}

TEST_F(Controller, UndoUndoRedoRedoReturnsToTheNewestState) {
    perform("changeParam", "{ param: wetMix, to: 0.5 }");
    perform("changeParam", "{ param: phaseShift, to: 0.1 }");
    drag("params.phaseShift", {0.2, 0.3});  // merged: no record of its own
    perform("undo");
    EXPECT_FLOAT_EQ(value(Param::phaseShift), 0.5f);
    perform("undo");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 1.0f);
    perform("redo");
    perform("redo");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.5f);
    EXPECT_FLOAT_EQ(value(Param::phaseShift), 0.3f);
    EXPECT_FALSE(controller->isEnabled(view(), "redo", ""));
    EXPECT_EQ(get("undo.description"), "Change Phase Shift");
}

TEST_F(Controller, UndoSwitchesBackToTheChangedProgram) {
    perform("changeParam", "{ param: wetMix, to: 0.5 }");
    host.dispatch(vst2::effSetProgram, 0, 2);
    controller->fastTick();
    perform("undo");
    EXPECT_EQ(instance().getCurrentProgram(), 0);
    EXPECT_FLOAT_EQ(value(Param::wetMix), 1.0f);
    EXPECT_EQ(get("params.wetMix"), "1");
}

// ---- Clipboard, init and randomise ----

TEST_F(Controller, CopyAndPasteCarryAPatch) {
    set("patch.name", "Carried");
    perform("changeParam", "{ param: wetMix, to: 0.25 }");
    perform("copyPatch");
    perform("initPatch");
    EXPECT_EQ(get("patch.name"), "Init Patch");
    EXPECT_EQ(get("patch.modified"), "false");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 1.0f);
    EXPECT_TRUE(controller->isEnabled(view(), "pastePatch", ""));
    perform("pastePatch");
    EXPECT_EQ(get("patch.name"), "Carried");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.25f);
    EXPECT_EQ(get("undo.description"), "Paste Patch");
}

TEST_F(Controller, ExchangeSwapsAndABadClipboardChangesNothing) {
    perform("copyPatch");
    perform("changeParam", "{ param: wetMix, to: 0.25 }");
    perform("exchangePatch");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 1.0f);
    EXPECT_NE(readClipboardText().find("wetMix"), std::string::npos);
    perform("exchangePatch");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.25f);

    writeClipboardText("not a patch", true);
    const std::size_t records = controller->undoSize();
    EXPECT_FALSE(controller->isEnabled(view(), "exchangePatch", ""));
    EXPECT_NE(errorOf("exchangePatch", ""), "no error");
    EXPECT_EQ(readClipboardText(), "not a patch");
    EXPECT_FLOAT_EQ(value(Param::wetMix), 0.25f);
    EXPECT_EQ(controller->undoSize(), records);
    writeClipboardText("", true);
    EXPECT_EQ(errorOf("pastePatch", ""), "No content on clipboard");
}

TEST_F(Controller, RandomNamesAreSixToTwentyTwoLowerCaseLetters) {
    std::set<std::string> names;
    for (int i = 0; i < 200; ++i) {
        perform("randomizePatch");
        const std::string name = get("patch.name");
        EXPECT_GE(name.size(), 6u);
        EXPECT_LE(name.size(), 22u);
        for (char c : name) EXPECT_TRUE(c >= 'a' && c <= 'z') << name;
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 200u) << "two calls within one millisecond differ";
    EXPECT_EQ(controller->undoSize(), 101u);
}

TEST_F(Controller, RandomisingWithSyncOnKeepsTheDelayOnItsSteps) {
    for (int i = 0; i < 50; ++i) {
        perform("changeParam", "{ param: delaySync, to: 1 }");
        perform("randomizePatch");
        const float steps = value(Param::delayTime) * 14.0f;
        EXPECT_NEAR(steps, std::round(steps), 1e-4) << "whatever the new delaySync is";
    }
}

// ---- Startup bank ----

class TemporaryStore {
public:
    TemporaryStore() : path("/tmp/tidewake-controller-" + std::to_string(::getpid()) + ".store") {
        std::filesystem::remove(path);
    }
    ~TemporaryStore() { std::filesystem::remove(path); }
    Path file() const { return Path::parse(path); }
    bool exists() const { return std::filesystem::exists(path); }
    std::string path;
};

TEST_F(Controller, TheStartupBankIsWrittenOnlyAfterAChange) {
    TemporaryStore store;
    controller->saveChanges(store.file());
    EXPECT_FALSE(store.exists());

    perform("changeParam", "{ param: wetMix, to: 0.25 }");
    controller->saveChanges(store.file());
    ASSERT_TRUE(store.exists());
    std::vector<std::string> texts;
    int current = -1;
    ASSERT_TRUE(readStartupBank(tidewakeDescriptor(), SharedStore(store.file()), texts, current));
    EXPECT_EQ(current, 0);
    EXPECT_NE(texts.at(0).find("wetMix"), std::string::npos);
    EXPECT_TRUE(texts.at(1).empty());
}

}  // namespace
