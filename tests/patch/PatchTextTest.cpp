#include "patch/ModelFactory.h"
#include "patch/PatchPath.h"
#include "product/TidewakeFactory.h"
#include "platform/Folders.h"

#include "tests/Failure.h"

#include <gtest/gtest.h>

#include <vector>

using namespace tw;
using tw::test::failure;

namespace {

// Tidewake with a note of every text that reaches the value parser.
class ListeningFactory final : public TidewakeFactory {
public:
    mutable std::vector<std::pair<int, std::string>> parsed;
    bool textToValue(const Patch& patch, int id, std::string_view text, float& out) const override {
        parsed.emplace_back(id, std::string(text));
        return TidewakeFactory::textToValue(patch, id, text, out);
    }
    std::string heard(int id) const {
        for (const auto& [row, text] : parsed)
            if (row == id) return text;
        return "<none>";
    }
};

const TidewakeFactory factory;

enum Id { freqShiftRange = 0, antiReflection = 2, phaseShift = 3, feedbackAmount = 7, wetMix = 12, lfoShape = 13 };

}  // namespace

TEST(PatchText, FullFormLayout) {
    std::unique_ptr<Patch> patch = factory.createInitPatch();
    patch->setName("Lead: \"Big\" Echo");
    patch->storeParameter(wetMix, 0.25f);
    std::string text = factory.patchToText(*patch, false);
    EXPECT_EQ(text.rfind("TidewakePatch: {\n\tformat: 1\n\tname: \"Lead: \\\"Big\\\" Echo\"\n\tmodified: true\n"
                         "\tparameters: {\n\t\tfreqShiftRange: \"Wide\"\n",
                         0),
              0u)
        << text;
    EXPECT_NE(text.find("\n\t\twetMix: \"25.0000000 %\"\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\n\t\tantiReflection: \"On\"\n"), std::string::npos);
    EXPECT_NE(text.find("\n\t\tphaseShift: \"0.0000000 degrees\"\n"), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 7), "\"\n\t}\n}\n");
    EXPECT_EQ(text.find("path:"), std::string::npos) << "no path, no label";
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 7 + 19);
}

TEST(PatchText, HeaderlessHasOnlyFormatAndParameters) {
    std::unique_ptr<Patch> patch = factory.createInitPatch();
    patch->setPath(Path::parse("/home/u/My Sound.tidewake"));
    std::string text = factory.patchToText(*patch, true);
    EXPECT_EQ(text.rfind("TidewakePatch: {\n\tformat: 1\n\tparameters: {\n", 0), 0u);
    for (const char* label : {"name:", "path:", "modified:"}) EXPECT_EQ(text.find(label), std::string::npos) << label;
}

TEST(PatchText, RoundTripIsStable) {
    std::unique_ptr<Patch> patch = factory.createInitPatch();
    const float values[19] = {0.0f,  0.731f, 0.0f, 0.2f,  0.9f, 0.0f, 0.44f, 0.93f, 1.0f, 0.3f,
                              0.62f, 0.5f,   0.7f, 1.0f,  0.0f, 0.8f, 2.0f / 3.0f, 1.0f, 0.12f};
    patch->setParameters(0, 19, values);
    patch->setPath(Path::parse("/patches/Odd, name.tidewake"));
    patch->setName("Stable");
    patch->markClean();

    std::string first = factory.patchToText(*patch, false);
    std::unique_ptr<Patch> back = factory.patchFromText(first);
    EXPECT_EQ(back->getName(), "Stable");
    EXPECT_EQ(back->getPath().toString(), "/patches/Odd, name.tidewake");
    EXPECT_FALSE(back->isModified());
    for (int id = 0; id < 19; ++id) EXPECT_NEAR(back->getParameter(id), values[id], 1e-5f) << "row " << id;
    EXPECT_EQ(factory.patchToText(*back, false), first) << "a second save gives the same bytes";
}

TEST(PatchText, FormatOnlyGivesDefaultsAndIsClean) {
    std::unique_ptr<Patch> patch = factory.patchFromText("TidewakePatch: { format: 1 }");
    std::unique_ptr<Patch> init = factory.createInitPatch();
    for (int id = 0; id < 19; ++id) EXPECT_EQ(patch->getParameter(id), init->getParameter(id));
    EXPECT_EQ(patch->getName(), "");
    EXPECT_TRUE(patch->getPath().empty());
    EXPECT_FALSE(patch->isModified());
}

TEST(PatchText, ModifiedFlagAndHeaderLabels) {
    EXPECT_TRUE(factory.patchFromText("TidewakePatch: { format: 1\n modified: true }")->isModified());
    EXPECT_FALSE(factory.patchFromText("TidewakePatch: { format: 1\n modified: false }")->isModified());
    EXPECT_FALSE(factory.patchFromText("TidewakePatch: { format: 1\n modified: yes }")->isModified());

    // The path names the patch after its file, but a stored name wins.
    auto named = factory.patchFromText("TidewakePatch: { format: 1\n name: \"Kept\"\n path: \"/p/File Name.tidewake\" }");
    EXPECT_EQ(named->getName(), "Kept");
    EXPECT_EQ(named->getPath().toString(), "/p/File Name.tidewake");
    auto unnamed = factory.patchFromText("TidewakePatch: { format: 1\n path: \"/p/File Name.tidewake\" }");
    EXPECT_EQ(unnamed->getName(), "File Name");
}

TEST(PatchText, RefusesOtherTextsWithTheirMessages) {
    EXPECT_EQ(failure([] { factory.patchFromText("OtherPatch: { format: 1 }"); }), "Invalid data format");
    EXPECT_EQ(failure([] { factory.patchFromText(""); }), "Invalid data format");
    EXPECT_EQ(failure([] { factory.patchFromText("TidewakePatch: { format: 0 }"); }), "Patch format is too old");
    EXPECT_EQ(failure([] { factory.patchFromText("TidewakePatch: { name: \"x\" }"); }), "Patch format is too old");
    EXPECT_EQ(failure([] { factory.patchFromText("TidewakePatch: { format: 2 }"); }), "Patch format is too new");
    EXPECT_THROW(factory.patchFromText("TidewakePatch: { format: 2 }"), FormatException);

    EXPECT_TRUE(factory.isPatchText("TidewakePatch: { format: 1 }"));
    EXPECT_FALSE(factory.isPatchText("TidewakePatch: { format: 2 }"));
    EXPECT_FALSE(factory.isPatchText("TidewakePatch: { format: 0x0 }"));
    EXPECT_FALSE(factory.isPatchText("garbage {{{"));
}

TEST(PatchText, UnitsAreCutOnlyAfterABlank) {
    ListeningFactory listening;
    listening.patchFromText(
        "TidewakePatch: {\r\n\tformat: 1\r\n\tparameters: {\r\n"
        "\t\tfeedbackAmount: \"-inf dB\"\r\n\t\twetMix: \"50%\"\r\n\t\tphaseShift: \"90 degrees\"\r\n"
        "\t\tlfoShape: \"Square\"\r\n\t}\r\n}\r\n");
    EXPECT_EQ(listening.heard(feedbackAmount), "-inf");
    EXPECT_EQ(listening.heard(wetMix), "50%") << "no blank before the unit: not cut";
    EXPECT_EQ(listening.heard(phaseShift), "90");
    EXPECT_EQ(listening.heard(lfoShape), "Square");
    EXPECT_EQ(listening.heard(antiReflection), "<none>") << "absent rows are not parsed";
}

TEST(PatchText, BadValuesAndUnknownLabelsFallBack) {
    std::unique_ptr<Patch> patch = factory.patchFromText(
        "TidewakePatch: { format: 1, parameters: { wetMix: \"lots\", lfoShape: \"Saw\", noSuchKnob: \"11\" } }");
    EXPECT_EQ(patch->getParameter(wetMix), 1.0f) << "the default of wetMix";
    EXPECT_FLOAT_EQ(patch->getParameter(lfoShape), 1.0f / 3.0f);
}

TEST(PatchText, FactoryPathsAreStoredRelative) {
    const ModelDescriptor& d = factory.getDescriptor();
    Path inFactory = factoryPatchesFolder("Tidewake").join("MW Dr Dub.tidewake");
    EXPECT_EQ(storedPatchPath(d, inFactory), "MW Dr Dub.tidewake");
    EXPECT_EQ(storedPatchPath(d, Path::parse("/elsewhere/MW Dr Dub.tidewake")), "/elsewhere/MW Dr Dub.tidewake");
    EXPECT_EQ(interpretPatchPath(d, "MW Dr Dub.tidewake").toString(), inFactory.toString());
    EXPECT_EQ(interpretPatchPath(d, "/abs/x.tidewake").toString(), "/abs/x.tidewake");
    EXPECT_TRUE(interpretPatchPath(d, "").empty());

    std::unique_ptr<Patch> patch = factory.createInitPatch();
    patch->setPath(inFactory);
    std::string text = factory.patchToText(*patch, false);
    EXPECT_NE(text.find("\tpath: \"MW Dr Dub.tidewake\"\n"), std::string::npos);
    EXPECT_EQ(factory.patchFromText(text)->getPath().toString(), inFactory.toString());
}
