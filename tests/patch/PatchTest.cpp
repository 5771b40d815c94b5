#include "patch/Patch.h"

#include <gtest/gtest.h>

#include <string>

#include "product/TidewakeFactory.h"

using namespace tw;

TEST(Patch, InitPatchHasTheDefaultsAndIsClean) {
    TidewakeFactory factory;
    auto patch = factory.createInitPatch();
    const auto& rows = factory.getDescriptor().parameters;
    ASSERT_EQ(patch->getParameterCount(), 19);
    for (int i = 0; i < 19; ++i) EXPECT_EQ(patch->getParameter(i), rows[static_cast<std::size_t>(i)].defaultValue);
    EXPECT_FALSE(patch->isModified());
    EXPECT_EQ(patch->getName(), "");
    EXPECT_TRUE(patch->getPath().empty());
}

TEST(Patch, StampsMoveOnRealChangesOnly) {
    Patch patch(3);
    patch.markClean();
    std::uint32_t stamp = patch.getChangeStamp();
    EXPECT_FALSE(patch.storeParameter(1, 0.0f)) << "the same value is no change";
    EXPECT_EQ(patch.getChangeStamp(), stamp);
    EXPECT_TRUE(patch.storeParameter(1, 0.5f));
    EXPECT_NE(patch.getChangeStamp(), stamp);
    EXPECT_TRUE(patch.isModified());
    std::uint32_t modified = patch.getChangeStamp();
    patch.markClean();
    EXPECT_FALSE(patch.isModified());
    EXPECT_NE(patch.getChangeStamp(), modified) << "clean takes a fresh stamp, so watchers see the change";
    const float values[3] = {0.5f, 0.5f, 0.5f};
    stamp = patch.getChangeStamp();
    EXPECT_TRUE(patch.setParameters(0, 3, values));
    EXPECT_FALSE(patch.setParameters(0, 3, values));
    EXPECT_NE(patch.getChangeStamp(), stamp);
}

TEST(Patch, NamesAreCutTo255BytesAndCompared) {
    Patch patch(1);
    std::string longName(300, 'n');
    EXPECT_TRUE(patch.setName(longName));
    EXPECT_EQ(patch.getName(), std::string(255, 'n'));
    std::uint32_t stamp = patch.getChangeStamp();
    EXPECT_FALSE(patch.setName(longName + "different only after 255")) << "only the first 255 bytes count";
    EXPECT_EQ(patch.getChangeStamp(), stamp);
    char buffer[8];
    patch.getName(7, buffer);
    EXPECT_STREQ(buffer, "nnnnnnn");
}

TEST(Patch, PathNamesThePatchAfterTheFile) {
    Patch patch(1);
    patch.setName("Stored");
    patch.setPath(Path::parse("/home/me/patches/Dub Siren.tidewake"));
    EXPECT_EQ(patch.getName(), "Dub Siren");
    EXPECT_EQ(patch.getPath().toString(), "/home/me/patches/Dub Siren.tidewake");
    patch.setName("Renamed");
    patch.setPath(Path());
    EXPECT_TRUE(patch.getPath().empty());
    EXPECT_EQ(patch.getName(), "Renamed") << "clearing the path keeps the name";
}

TEST(Patch, CloneCopiesEverythingIncludingStamps) {
    Patch patch(2);
    patch.storeParameter(0, 0.25f);
    patch.setPath(Path::parse("/a/b.tidewake"));
    auto copy = patch.clone();
    EXPECT_EQ(copy->getParameter(0), 0.25f);
    EXPECT_EQ(copy->getName(), "b");
    EXPECT_EQ(copy->getPath().toString(), "/a/b.tidewake");
    EXPECT_EQ(copy->getChangeStamp(), patch.getChangeStamp());
    EXPECT_EQ(copy->isModified(), patch.isModified());
    copy->storeParameter(0, 1.0f);
    EXPECT_EQ(patch.getParameter(0), 0.25f);
}
