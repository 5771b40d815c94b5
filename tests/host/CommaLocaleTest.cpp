// The editor under a host that set a comma-decimal locale, as hosts built on Qt or GTK do:
// drags, typed values, the LFO needle during playback and the tour must give exactly what
// they give under "C". Each run is traced (values, texts, message boxes, pictures) and the
// two traces compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <string>
#include <vector>

#include "cushy/CushyView.h"
#include "cushy/MessageBox.h"
#include "cushy/TextEntryDialog.h"
#include "cushy/doubles/WindowDouble.h"
#include "editor/ModelController.h"
#include "product/TidewakeDescriptor.h"
#include "tests/host/ProductResources.h"
#include "product/TidewakeEditorFactory.h"
#include "product/TidewakeFactory.h"
#include "vst2/Entry.h"

namespace {

using namespace tw;

constexpr const char* commaLocale = "de_DE.UTF-8";

// Sets a locale for the process and puts "C" back at the end of the scope.
class LocaleScope {
public:
    explicit LocaleScope(const char* name) : set_(std::setlocale(LC_ALL, name) != nullptr) {}
    ~LocaleScope() { std::setlocale(LC_ALL, "C"); }
    bool set() const { return set_; }

private:
    bool set_;
};

struct Trace {
    std::vector<std::string> entries;
    int needleFractions = 0;  // needle texts with a fraction, to know the needle moved
};

vst2::intptr quietHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

std::string bits(float value) {
    std::uint32_t b;
    std::memcpy(&b, &value, sizeof b);
    return std::to_string(b);
}

std::string pictureHash(const Raster32& canvas, IntRect area) {
    std::uint64_t hash = 1469598103934665603ull;
    for (std::int32_t y = area.top; y < area.top + area.height; ++y) {
        for (std::int32_t x = area.left; x < area.left + area.width; ++x) {
            hash = (hash ^ *canvas.at(x, y)) * 1099511628211ull;
        }
    }
    return std::to_string(hash);
}

// Everything a user does in the scenario, with the values, texts and pictures it gives.
Trace runEditor() {
    Trace trace;
    // The real engine, for a needle that moves.
    vst2::AEffect* effect = createEffect(&quietHost, std::make_unique<TidewakeFactory>(), &tidewakeEditor());
    struct Close {
        vst2::AEffect* e;
        ~Close() { e->dispatcher(e, vst2::effClose, 0, 0, nullptr, 0); }
    } closing{effect};
    effect->dispatcher(effect, vst2::effSetSampleRate, 0, 0, nullptr, 48000.0f);
    effect->dispatcher(effect, vst2::effMainsChanged, 0, 1, nullptr, 0);
    Instance& instance = Vst2Plugin::of(effect)->instance();
    std::unique_ptr<ModelController> controller =
        tidewakeEditor().createController(instance, test::resources(), test::strings());
    WindowDouble window(controller->client(), 525, 475);
    controller->open(&window);
    std::u32string toType;
    window.user = [&](WindowDouble& w) {
        WindowClient& client = w.topHelper()->client();
        if (auto* box = dynamic_cast<MessageBox*>(&client)) {
            for (const std::string& line : box->lines()) trace.entries.push_back("message: " + line);
        } else if (dynamic_cast<TextEntryDialog*>(&client) != nullptr) {
            w.topHelper()->type(toType);
        }
        w.topHelper()->key(Key::enter);
    };
    window.advance(20);
    auto get = [&](const std::string& name) { return controller->getVariable(controller->rootView(), name); };
    auto note = [&](const char* what, int id) {
        const std::string name = tidewakeDescriptor().parameters[std::size_t(id)].name;
        window.paintAll();
        trace.entries.push_back(std::string(what) + " " + bits(instance.getParameter(0, id)) + " " +
                                get("params." + name + ".human") + " " + pictureHash(window.canvas(), {0, 0, 525, 475}));
    };
    auto drag = [&](int x, int y, int dy) {
        window.mouseMove(x, y);
        window.mouseDown(x, y);
        for (int i = 1; i <= std::abs(dy); ++i) window.mouseMove(x, y + (dy < 0 ? -i : i), 1u << leftButton);
        window.mouseUp(x, y + dy);
        window.advance(20);
    };
    auto typeInto = [&](int x, int y, const std::u32string& text) {
        toType = text;
        window.mouseMove(x, y);
        window.mouseDown(x, y);
        window.mouseUp(x, y);
        window.advance(20);
    };

    drag(48, 132, -10);  // the shift amount, from its centre
    note("shift drag", Param::freqShiftAmount);
    drag(312, 116, -10);  // the delay time
    note("delay drag", Param::delayTime);
    drag(312, 116, -7);  // and on from a fractional value
    note("delay drag again", Param::delayTime);
    typeInto(312, 150, U"7.93 ms");
    note("delay typed", Param::delayTime);
    typeInto(264, 352, U"37.5 %");
    note("lfo amount typed", Param::lfoAmount);

    // The tour types its first page, with its pauses, and moves its bubble.
    window.mouseMove(465, 20);
    window.mouseDown(465, 20);
    window.mouseUp(465, 20);
    for (int step = 0; step < 40; ++step) {
        window.advance(100);
        window.paintAll();
        trace.entries.push_back("tour " + pictureHash(window.canvas(), {0, 0, 525, 475}));
    }
    // Playback with the LFO running: its needle moves at every frame.
    constexpr IntRect needleArea{316, 282, 64, 56};
    // A signal, or the engine rests and the needle with it.
    std::vector<float> in(1024), out(1024);
    for (std::size_t i = 0; i < in.size(); ++i) in[i] = (i / 16) % 2 == 0 ? 0.25f : -0.25f;
    float* inputs[2] = {in.data(), in.data()};
    float* outputs[2] = {out.data(), out.data()};
    for (int frame = 0; frame < 30; ++frame) {
        for (int block = 0; block < 3; ++block) effect->processReplacing(effect, inputs, outputs, 1024);
        window.advance(60);
        window.paintAll();
        // Each instance's engine has a seed of its own, so needles differ from run to run:
        // each frame is drawn again under "C" from the same values, and must not differ.
        const std::string needle = get("feedbacks.lfoNeedlePositions[0]");
        if (needle.find_first_of(".,") != std::string::npos) ++trace.needleFractions;
        const std::string drawn = pictureHash(window.canvas(), needleArea);
        const std::string locale = std::setlocale(LC_ALL, nullptr);
        std::setlocale(LC_ALL, "C");
        controller->rootView().invalidateAll();
        window.paintAll();
        const bool same = pictureHash(window.canvas(), needleArea) == drawn;
        std::setlocale(LC_ALL, locale.c_str());
        trace.entries.push_back(std::string("needle ") + (same ? "drawn as under C" : "differs from C: " + needle));
    }

    controller->close();
    return trace;
}

TEST(CommaLocale, DragsTypedValuesTheNeedleAndTheTourGoAsUnderC) {
    Trace plain;
    {
        LocaleScope c("C");
        plain = runEditor();
    }
    for (const std::string& entry : plain.entries) ASSERT_EQ(entry.rfind("message: ", 0), std::string::npos) << entry;
    ASSERT_GT(plain.needleFractions, 0) << "the needle must move for the comparison to mean anything";
    Trace comma;
    {
        LocaleScope de(commaLocale);
        if (!de.set()) GTEST_SKIP() << "the locale " << commaLocale << " is not installed (tools/deps.sh makes it)";
        ASSERT_EQ(std::localeconv()->decimal_point[0], ',');
        comma = runEditor();
    }
    const std::size_t n = std::min(comma.entries.size(), plain.entries.size());
    for (std::size_t i = 0; i < n; ++i) ASSERT_EQ(comma.entries[i], plain.entries[i]) << "entry " << i;
    EXPECT_EQ(comma.entries.size(), plain.entries.size());
}

}  // namespace
