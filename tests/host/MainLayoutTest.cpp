// The product's face as a user meets it: the main layout over the real controller in a
// window double, its segments, menu, status line, about box and tour, the built artwork
// the layouts name, and the string table that must hold every text they translate.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>

#include "product/TidewakeEditorFactory.h"
#include "cushy/CushyView.h"
#include "cushy/MessageBox.h"
#include "cushy/PopupMenu.h"
#include "cushy/StringTable.h"
#include "cushy/TextEntryDialog.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/Font.h"
#include "graphics/Image.h"
#include "graphics/PNGWriter.h"
#include "graphics/ResourceManager.h"
#include "editor/ModelController.h"
#include "product/TidewakeDescriptor.h"
#include "tests/host/ProductResources.h"
#include "tests/host/TestHost.h"

namespace {

using namespace tw;
using tw::test::TestHost;
using tw::test::resources;
using tw::test::strings;

std::string resourceText(const char* type, const char* name) {
    const std::vector<std::uint8_t> bytes = resources().loadBinary(type, name);
    return std::string(bytes.begin(), bytes.end());
}

// The tests leave the screens they reach in the build's pictures/face, to be looked at.
void keepPicture(WindowDouble& window, const std::string& name) {
    const std::filesystem::path folder = std::filesystem::path(TIDEWAKE_BINARY_DIR) / "pictures" / "face";
    std::filesystem::create_directories(folder);
    writePNG((folder / (name + ".png")).string(), window.screenshot());
}

// Places on the screen, in window coordinates, that the tests reach for.
constexpr int menuX = 501, menuY = 20;
constexpr int tourX = 465, tourY = 20;
constexpr int wetX = 458, wetY = 292;

class MainLayout : public ::testing::Test {
protected:
    void SetUp() override {
        controller = tidewakeEditor().createController(host.instance(), resources(), strings());
        window = std::make_unique<WindowDouble>(controller->client(), 525, 475);
        controller->open(window.get());
        ASSERT_EQ(controller->rootView().currentLayout(), "Tidewake_main");
        // A message box would mean a layout fault: count it and close it.
        window->user = [this](WindowDouble& w) {
            ++messageBoxes;
            for (const std::string& line : static_cast<MessageBox&>(w.topHelper()->client()).lines())
                ADD_FAILURE() << "message: " << line;
            w.topHelper()->key(Key::enter);
        };
        window->advance(20);
    }
    void TearDown() override { controller->close(); }

    std::string get(const std::string& name) { return controller->getVariable(controller->rootView(), name); }
    float value(int id) { return host.instance().getParameter(0, id); }
    void click(int x, int y) {
        window->mouseMove(x, y);
        window->mouseDown(x, y);
        window->mouseUp(x, y);
        window->advance(20);
    }
    std::uint32_t pixel(int x, int y) {
        window->paintAll();
        return *window->canvas().at(x, y);
    }
    // Opens the main menu and clicks its item `index`, after `look` has seen the menu.
    void chooseFromMenu(std::size_t index, const std::function<void(PopupMenu&)>& look = {}) {
        window->user = [&, index](WindowDouble& w) {
            WindowDouble* menu = w.topHelper();
            ASSERT_NE(menu, nullptr);
            auto& popup = static_cast<PopupMenu&>(menu->client());
            if (look) look(popup);
            const IntRect r = popup.itemRect(index);
            menu->mouseMove(r.left + 10, r.top + r.height / 2);
            menu->mouseDown(r.left + 10, r.top + r.height / 2);
            menu->mouseUp(r.left + 10, r.top + r.height / 2);
        };
        click(menuX, menuY);
        window->user = nullptr;
    }

    TestHost host;
    std::unique_ptr<ModelController> controller;
    std::unique_ptr<WindowDouble> window;
    int messageBoxes = 0;
};

TEST_F(MainLayout, EveryParameterHasItsControlAndShowsItsValue) {
    const std::string layout = resourceText("cushy", "Tidewake_main");
    for (const ParameterSpec& row : tidewakeDescriptor().parameters) {
        const bool knob = layout.find("variable: params." + row.name + ",") != std::string::npos;
        const bool button = layout.find("param: " + row.name + ",") != std::string::npos;
        EXPECT_TRUE(knob != button) << row.name << ": one knob, or buttons, and not both";
        EXPECT_NE(layout.find("params." + row.name + ".human"), std::string::npos) << row.name << ": its value shows";
    }
    EXPECT_EQ(messageBoxes, 0);
}

TEST_F(MainLayout, SegmentsSetTheirStepAndLightUp) {
    // Left of the caption inside the "Wide" segment of the shift range, which is the default.
    constexpr int wideX = 67, wideY = 90;
    constexpr std::uint32_t lit = 0xFF18686Cu, unlit = 0xFF0A1520u;
    EXPECT_EQ(pixel(wideX, wideY), lit);
    click(174, 84);
    EXPECT_EQ(value(Param::freqShiftRange), 1.0f);
    EXPECT_EQ(get("params.freqShiftRange.human"), "Midi");
    EXPECT_EQ(pixel(wideX, wideY), unlit);
    click(86, 84);
    EXPECT_FLOAT_EQ(value(Param::freqShiftRange), 1.0f / 3.0f);
    EXPECT_EQ(pixel(wideX, wideY), lit);

    // The LFO target's "Low-pass", and the stereo toggle under the LFO's amount.
    click(293, 418);
    EXPECT_EQ(get("params.lfoTarget.human"), "Low-pass Filter");
    click(264, 378);
    EXPECT_EQ(get("params.lfoStereo.human"), "On");
    click(264, 378);
    EXPECT_EQ(get("params.lfoStereo.human"), "Off");
}

TEST_F(MainLayout, StepsAHostRoundedShowAsTheStepsTheEngineTakes) {
    // Qtractor keeps the range's third as 0.333333: "Wide" is in force, and lit.
    constexpr int wideX = 67, wideY = 90;
    constexpr std::uint32_t lit = 0xFF18686Cu;
    auto fromHost = [&](int id, float value) {
        host.effect->setParameter(host.effect, id, value);
        window->advance(20);
    };
    fromHost(Param::freqShiftRange, 1.0f);
    ASSERT_NE(pixel(wideX, wideY), lit);
    fromHost(Param::freqShiftRange, 0.333333f);
    EXPECT_EQ(get("params.freqShiftRange.human"), "Wide");
    EXPECT_EQ(pixel(wideX, wideY), lit);
    EXPECT_EQ(get("params.freqShiftRange"), "0.3333333");

    // A synced delay time is a step of 14: its knob shows the step, not the rounding.
    fromHost(Param::delaySync, 1.0f);
    fromHost(Param::delayTime, 5.0f / 14.0f);
    const std::string exact = get("params.delayTime");
    const std::uint32_t knob = pixel(312, 100);
    fromHost(Param::delayTime, 0.357143f);
    EXPECT_EQ(get("params.delayTime"), exact);
    EXPECT_EQ(pixel(312, 100), knob);
    EXPECT_EQ(messageBoxes, 0);
}

TEST_F(MainLayout, KnobsTurnTheirFilmsAndTheirValueCaptionsFollow) {
    // The wet knob's arc at 4:30 o'clock lights only near the top of its range.
    const int arcX = wetX + 14, arcY = wetY + 15;
    const std::uint32_t full = pixel(arcX, arcY);
    keepPicture(*window, "knobs-default");
    window->mouseMove(wetX, wetY);
    window->mouseDown(wetX, wetY);
    for (int y = wetY + 10; y <= wetY + 220; y += 10) window->mouseMove(wetX, y, 1u << leftButton);
    window->mouseUp(wetX, wetY + 220);
    window->advance(20);
    EXPECT_EQ(value(Param::wetMix), 0.0f);
    EXPECT_NE(pixel(arcX, arcY), full);
    EXPECT_EQ(get("params.wetMix.human"), "0.00 %");
    window->paintAll();
    keepPicture(*window, "knob-wet-at-zero");
    EXPECT_EQ(controller->undoSize(), 1u);
}

TEST_F(MainLayout, AValueClickTypesAValueAndWhileSyncedOffersTurnOffSync) {
    constexpr int timeValueX = 312, timeValueY = 150;
    window->user = [](WindowDouble& w) {
        auto* dialog = dynamic_cast<TextEntryDialog*>(&w.topHelper()->client());
        ASSERT_NE(dialog, nullptr) << "unsynced, the value opens text entry at once";
        w.topHelper()->type(U"250 ms");
        w.topHelper()->key(Key::enter);
    };
    click(timeValueX, timeValueY);
    EXPECT_EQ(get("params.delayTime.human"), "250.00 ms");

    click(312, 190);  // the Sync switch under the time
    ASSERT_EQ(get("params.delaySync.human"), "On");
    std::vector<MenuItem> offered;
    window->user = [&](WindowDouble& w) {
        auto* menu = dynamic_cast<PopupMenu*>(&w.topHelper()->client());
        ASSERT_NE(menu, nullptr) << "synced, the value offers a menu";
        offered = menu->items();
        const IntRect r = menu->itemRect(1);
        w.topHelper()->mouseMove(r.left + 10, r.top + 5);
        w.topHelper()->mouseDown(r.left + 10, r.top + 5);
        w.topHelper()->mouseUp(r.left + 10, r.top + 5);
    };
    click(timeValueX, timeValueY);
    ASSERT_EQ(offered.size(), 2u);
    EXPECT_EQ(offered[0].caption, "Type a Value...");
    EXPECT_EQ(offered[1].caption, "Turn Off Sync");
    EXPECT_EQ(get("params.delaySync.human"), "Off");
    EXPECT_EQ(get("undo.description"), "Turn Off Sync");
}

TEST_F(MainLayout, TheStatusLineFollowsThePointer) {
    window->mouseMove(312, 116);
    EXPECT_EQ(get("status.name"), "Delay Time");
    EXPECT_EQ(get("status.value"), "params.delayTime.human");
    window->advance(1100);  // the hint's delay
    window->paintAll();
    keepPicture(*window, "status-and-hint");
    // The hint window shows the same after its delay.
    ASSERT_EQ(window->helpers().size(), 1u) << "the hint window";
    EXPECT_TRUE(window->helpers()[0]->visible());
    window->mouseMove(501, 20);
    EXPECT_EQ(get("status.name"), "Menu");
    EXPECT_EQ(get("status.value"), "status.none");
    EXPECT_EQ(get("status.none"), "");
    window->mouseMove(260, 220);  // between the panels
    EXPECT_EQ(get("status.name"), "");
    window->mouseMove(312, 116);
    window->mouseLeave();
    EXPECT_EQ(get("status.name"), "");
    EXPECT_EQ(get("status.value"), "status.none");
}

TEST_F(MainLayout, TheMainMenuUndoesWithItsDescriptionAndShiftClickRepeats) {
    window->mouseDown(wetX, wetY);
    for (int y = wetY + 10; y <= wetY + 50; y += 10) window->mouseMove(wetX, y, 1u << leftButton);
    window->mouseUp(wetX, wetY + 50);
    window->advance(20);
    const float dragged = value(Param::wetMix);
    ASSERT_LT(dragged, 1.0f);

    std::vector<MenuItem> items;
    chooseFromMenu(0, [&](PopupMenu& menu) {
        items = menu.items();
        window->paintAll();
        keepPicture(*window, "main-menu");
    });
    ASSERT_EQ(items.size(), 15u);
    EXPECT_EQ(items[0].caption, "Undo Change Wet Mix");
    EXPECT_TRUE(items[0].enabled);
    EXPECT_FALSE(items[1].enabled) << "nothing to redo yet";
    EXPECT_TRUE(items[2].separator);
    EXPECT_EQ(items[3].caption, "Initialize");
    EXPECT_EQ(items[7].caption, "Randomize");
    EXPECT_EQ(items[9].caption, "Open...");
    EXPECT_EQ(items[12].caption, "Zoom");
    EXPECT_EQ(items[13].caption, "Check for Updates");
    EXPECT_EQ(items[14].caption, "About Tidewake");
    EXPECT_EQ(value(Param::wetMix), 1.0f) << "Undo took the drag back";
    EXPECT_EQ(get("lastMainMenuAction"), "undo");

    chooseFromMenu(7);
    const std::string randomName = get("patch.name");
    EXPECT_EQ(get("lastMainMenuAction"), "randomizePatch");

    // Shift-click: no menu, the last choice again.
    bool menuShown = false;
    window->user = [&](WindowDouble&) { menuShown = true; };
    window->setModifiers(true, false, false);
    click(menuX, menuY);
    window->setModifiers(false, false, false);
    EXPECT_FALSE(menuShown);
    EXPECT_NE(get("patch.name"), randomName) << "randomised again";
}

TEST_F(MainLayout, TheAboutBoxGrowsInAndAClickAnywhereClosesIt) {
    constexpr int cardX = 110, cardY = 104;
    const std::uint32_t before = pixel(cardX, cardY);
    chooseFromMenu(14);
    EXPECT_EQ(get("modalLayout"), "Tidewake_about");
    window->advance(400);
    EXPECT_EQ(pixel(cardX, cardY), 0xFF112638u) << "the card's fill";
    keepPicture(*window, "about");
    EXPECT_NE(pixel(4, 460), pixel(cardX, cardY));

    // A click on the tour button's place closes the box and opens nothing underneath.
    click(tourX, tourY);
    EXPECT_EQ(get("modalLayout"), "");
    window->advance(400);
    EXPECT_EQ(pixel(cardX, cardY), before);
    EXPECT_EQ(messageBoxes, 0);
}

TEST_F(MainLayout, TheTourTypesEveryPageAndClosesOnAClick) {
    click(tourX, tourY);
    EXPECT_EQ(get("modalLayout"), "Tidewake_messages");
    EXPECT_EQ(get("messages.number"), "0");
    window->advance(4000);
    window->paintAll();
    click(163, 153);  // the first page's "next" link, typed out under its text
    EXPECT_EQ(get("messages.number"), "1");
    EXPECT_EQ(get("modalLayout"), "Tidewake_messages");
    for (int page = 0; page <= 4; ++page) {
        controller->setVariable(controller->rootView(), "messages.number", std::to_string(page), false);
        controller->update(controller->rootView());
        window->paintAll();
        window->advance(4000);
        window->paintAll();
        keepPicture(*window, "tour-page-" + std::to_string(page));
    }
    EXPECT_EQ(messageBoxes, 0) << "every page lays out without a fault";
    // The bubble sits beside the header on the last page; a click on it, off its links, closes.
    click(300, 60);
    EXPECT_EQ(get("modalLayout"), "");
}

TEST_F(MainLayout, EveryTranslatedTextHasItsKeyInTheStringTable) {
    const std::string table = resourceText("txt", "Tidewake_strings");
    std::set<std::string> missing;
    const std::regex xlate(R"~(\[xlate\]([^\[]+)\[/xlate\])~");
    const std::regex status(R"~(\{ status\.(?:name|hint), "([^"]+)" \})~");
    for (const char* layout : {"Tidewake_main", "Tidewake_about", "Tidewake_messages"}) {
        const std::string text = resourceText("cushy", layout);
        for (const std::regex* pattern : {&xlate, &status}) {
            for (auto it = std::sregex_iterator(text.begin(), text.end(), *pattern); it != std::sregex_iterator(); ++it) {
                const std::string key = (*it)[1];
                if (table.find("\"" + key + "\":") == std::string::npos) missing.insert(key);
            }
        }
    }
    EXPECT_TRUE(missing.empty()) << "first missing: " << (missing.empty() ? "" : *missing.begin());
    EXPECT_NE(table.find("\"<modified:true>\": \"*\""), std::string::npos);
}

TEST(Artwork, FilmsHoldTheFramesTheLayoutCounts) {
    struct Film {
        const char* name;
        std::int32_t size, frames;
    };
    for (const Film& f : {Film{"Tidewake_knob_big", 64, 96}, Film{"Tidewake_knob_unipolar", 48, 64}, Film{"Tidewake_knob_modulation", 48, 64},
                          Film{"Tidewake_knob_small", 32, 64}, Film{"Tidewake_lamp", 16, 16}}) {
        const std::shared_ptr<Image> image = resources().getImage(resources().parseImageSpec(f.name));
        const IntRect bounds = image->getBounds();
        EXPECT_EQ(bounds.width, f.size) << f.name;
        EXPECT_EQ(bounds.height, f.size * f.frames) << f.name;
    }
    const std::shared_ptr<Image> backdrop = resources().getImage(resources().parseImageSpec("Tidewake_backdrop"));
    EXPECT_EQ(backdrop->getBounds().width, 525);
    EXPECT_EQ(backdrop->getBounds().height, 475);
}

TEST(Artwork, TheLongestValuesFitTheirCaptions) {
    const std::shared_ptr<Font> bold = resources().getFont("{ fnt: Tidewake_sans_11_bold }");
    auto width = [&](std::u16string_view text) { return bold->measure(Point{0, 0}, text, false).width; };
    EXPECT_LE(width(u"-20000.00 Hz (-D#9 +08)"), 160) << "the shift amount in Wide, with its note";
    EXPECT_LE(width(u"-180.00 degrees"), 104) << "the phase";
    EXPECT_LE(width(u"-100.00"), 56) << "the sideband mix";
    EXPECT_LE(width(u"3/16 (1/8.)"), 76) << "a synced delay or LFO rate";
    EXPECT_LE(width(u"121.403 ms"), 80) << "the smear";
    EXPECT_LE(width(u"40000.00 Hz"), 104) << "a filter";
    EXPECT_LE(width(u"-20000.00 Hz"), 106) << "the LFO amount on the shift";
}

TEST(Artwork, EveryStatusHintFitsTheStatusLine) {
    // The hint's caption on the status line is 293 pixels wide, in the regular 11.
    const std::shared_ptr<Font> regular = resources().getFont("{ fnt: Tidewake_sans_11 }");
    const std::string layout = resourceText("cushy", "Tidewake_main");
    const std::regex hint(R"~(\{ status\.hint, "([^"]+)" \})~");
    int seen = 0;
    for (auto it = std::sregex_iterator(layout.begin(), layout.end(), hint); it != std::sregex_iterator(); ++it, ++seen) {
        const std::string text = (*it)[1];
        const std::u16string wide(text.begin(), text.end());
        EXPECT_LE(regular->measure(Point{0, 0}, wide, false).width, 293) << text;
    }
    EXPECT_GT(seen, 20);
}

}  // namespace
