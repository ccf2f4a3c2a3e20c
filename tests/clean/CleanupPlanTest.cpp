#include <gtest/gtest.h>

#include "clean/CleanupPlan.h"

using namespace bv;

namespace {

CleanupEntry entry(const std::string& id) {
    CleanupEntry e;
    e.id = id;
    e.title = "Item " + id;
    e.path = "/home/ada/.npm/_cacache/" + id;
    e.bytes = 42;
    return e;
}

} // namespace

// Every value survives its text form; text that is not exactly a value's gives nothing.
TEST(CleanupKinds, TextValuesRoundTripAndUnknownTextGivesNothing) {
    for (auto tier : {CleanupTier::regenerable, CleanupTier::orphaned, CleanupTier::abandonedTool,
                      CleanupTier::possiblyOrphaned, CleanupTier::userData})
        EXPECT_EQ(cleanupTierFromText(textValue(tier)), tier) << textValue(tier);
    for (auto origin : {CleanupOrigin::devCache, CleanupOrigin::nodeModules, CleanupOrigin::folderRule,
                        CleanupOrigin::duplicate, CleanupOrigin::orphan, CleanupOrigin::buildWatch})
        EXPECT_EQ(cleanupOriginFromText(textValue(origin)), origin);
    for (auto d : {CleanupDisposition::trash, CleanupDisposition::permanent})
        EXPECT_EQ(cleanupDispositionFromText(textValue(d)), d);
    for (auto m : {CleanupSheetMode::clean, CleanupSheetMode::saveFolderRule})
        EXPECT_EQ(cleanupSheetModeFromText(textValue(m)), m);

    for (const char* unknown : {"", "Regenerable", "user_data", "regenerable ", "trash", "abandoned"})
        EXPECT_FALSE(cleanupTierFromText(unknown)) << unknown;
    EXPECT_FALSE(cleanupDispositionFromText("Trash"));
    EXPECT_FALSE(cleanupOriginFromText("nodemodules"));
}

TEST(CleanupPlan, ComparesByContentIncludingRefusalsAndRecheck) {
    CleanupPlan a{{entry("1"), entry("2")}, {"Foo was left alone. This stays put."}};
    CleanupPlan b = a;
    EXPECT_EQ(a, b);

    b.refusals.back() += " ";
    EXPECT_NE(a, b) << "a refusal line alone makes another plan";

    b = a;
    b.entries[1].recheck = RecheckCriteria{};
    EXPECT_NE(a, b) << "an empty recheck differs from none";
    a.entries[1].recheck = RecheckCriteria{};
    EXPECT_EQ(a, b);
    b.entries[1].recheck->names = {"*.log"};
    EXPECT_NE(a, b);

    b = a;
    std::swap(b.entries[0], b.entries[1]);
    EXPECT_NE(a, b) << "order is part of a plan";
}

TEST(PreviewRules, NothingToPreviewAndNothingSelectedToClean) {
    EXPECT_EQ(preview::previewError(CleanupPlan{}), "Choose what to preview. Nothing is selected.");
    EXPECT_FALSE(preview::previewError(CleanupPlan{{}, {"Foo was left alone."}})) << "refusals alone are shown";
    EXPECT_FALSE(preview::previewError(CleanupPlan{{entry("1")}, {}}));

    const CleanupPlan plan{{entry("1"), entry("2"), entry("3")}, {}};
    const auto kept = preview::entriesToClean(plan, {"2"});
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].id, "1");
    EXPECT_EQ(kept[1].id, "3");
    EXPECT_FALSE(preview::cleanError(plan, {"2"}));
    EXPECT_EQ(preview::cleanError(plan, {"1", "2", "3"}), "Nothing is selected to clean.");
    EXPECT_EQ(preview::cleanError(CleanupPlan{{}, {"refused"}}, {}), "Nothing is selected to clean.");
    EXPECT_EQ(preview::cleanError(std::nullopt, {}), "Nothing is selected to clean.");
}
