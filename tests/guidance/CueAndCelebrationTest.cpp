#include <gtest/gtest.h>

#include "guidance/Celebration.h"
#include "guidance/CueEngine.h"
#include "guidance/SoundCue.h"

namespace bv {
namespace {

CueContext ready(const std::string& screen) {
    CueContext c;
    c.screen = screen;
    c.firstRunDone = true;
    c.reclaimableBytes = 2'500'000'000;
    c.suggestionCount = 2;
    return c;
}

TEST(CueChoice, EachScreenShowsItsCueOnlyWhileItsConditionsHold) {
    struct Case {
        const char* what;
        CueContext context;
        std::optional<CueKey> expected;
    };
    auto with = [](CueContext c, auto change) { change(c); return c; };
    const std::vector<Case> cases = {
        {"overview with something to clean", ready("overview"), CueKey::reviewClean},
        {"first run not done", with(ready("overview"), [](auto& c) { c.firstRunDone = false; }), std::nullopt},
        {"a sheet is open", with(ready("duplicates"), [](auto& c) { c.sheetOpen = true; }), std::nullopt},
        {"overview while scanning", with(ready("overview"), [](auto& c) { c.scanning = true; }), std::nullopt},
        {"overview with nothing", with(ready("overview"), [](auto& c) { c.reclaimableBytes = 0; }), std::nullopt},
        {"overview after a clean", with(ready("overview"), [](auto& c) { c.hasCleanedEver = true; }), std::nullopt},
        {"overview dismissed", with(ready("overview"), [](auto& c) { c.seen = {"reviewClean"}; }), std::nullopt},
        {"rules with suggestions", ready("rules"), CueKey::autoSortSuggestions},
        {"rules without", with(ready("rules"), [](auto& c) { c.suggestionCount = 0; }), std::nullopt},
        {"autopilot", ready("watchedFolders"), CueKey::autopilotFirst},
        {"autopilot dismissed", with(ready("watchedFolders"), [](auto& c) { c.seen = {"autopilotFirst"}; }), std::nullopt},
        {"duplicates", ready("duplicates"), CueKey::duplicatesFirst},
        {"duplicates scanned", with(ready("duplicates"), [](auto& c) { c.hasScannedDuplicates = true; }), std::nullopt},
        {"another screen's dismissal does not count", with(ready("duplicates"), [](auto& c) { c.seen = {"reviewClean"}; }),
         CueKey::duplicatesFirst},
        {"a screen without a cue", ready("space"), std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(chooseCue(c.context), c.expected) << c.what;
}

TEST(CueChoice, TextsAndDismissal) {
    const CueText review = cueText(CueKey::reviewClean, ready("overview"));
    EXPECT_EQ(review.text, "2.5 GB can go. Review & Clean is a preview; nothing moves until you confirm.");
    EXPECT_EQ(review.button, "Review & Clean");
    EXPECT_FALSE(cueText(CueKey::duplicatesFirst, ready("duplicates")).button);

    std::vector<std::string> seen;
    EXPECT_TRUE(markCueSeen(seen, CueKey::duplicatesFirst));
    EXPECT_FALSE(markCueSeen(seen, CueKey::duplicatesFirst));
    EXPECT_EQ(seen, std::vector<std::string>{"duplicatesFirst"});
}

TEST(Celebration, TierByBytesAndRecord) {
    struct Case {
        std::int64_t bytes, best;
        CelebrationTier tier;
    };
    const Case cases[] = {
        {0, 0, CelebrationTier::none},
        {999'999'999, 0, CelebrationTier::none},
        {1'000'000'000, 0, CelebrationTier::spark},
        {2000, 1000, CelebrationTier::confetti},          // a new record
        {500'000'000, 500'000'000, CelebrationTier::none}, // equal to the best is no record
        {10'000'000'000, 0, CelebrationTier::confetti},
        {1'500'000'000, 4'000'000'000, CelebrationTier::spark},
    };
    for (const auto& c : cases) EXPECT_EQ(celebrationTier(c.bytes, c.best), c.tier) << c.bytes << " after " << c.best;
}

TEST(Celebration, AnEarlierTimerDoesNotEndANewerCelebration) {
    CelebrationState state;
    const auto first = state.start(CelebrationTier::spark);
    const auto second = state.start(CelebrationTier::confetti);
    EXPECT_FALSE(state.expire(first));
    EXPECT_EQ(state.tier(), CelebrationTier::confetti);
    EXPECT_TRUE(state.expire(second));
    EXPECT_EQ(state.tier(), CelebrationTier::none);
}

TEST(SoundVolume, TheDesktopSwitchCountsAsOnUnlessClearlyOff) {
    EXPECT_TRUE(interfaceSoundsOn(std::nullopt));
    EXPECT_TRUE(interfaceSoundsOn(Json("yes")));
    EXPECT_FALSE(interfaceSoundsOn(Json(false)));
    EXPECT_FALSE(interfaceSoundsOn(Json(0)));
}

} // namespace
} // namespace bv

#include "guidance/ReducedMotion.h"

namespace bv {
namespace {

TEST(ReducedMotion, EnvironmentAndGtkSwitch) {
    EXPECT_FALSE(reduceMotionFromEnvironment("0"));
    EXPECT_EQ(gtkAnimationsEnabled("[Settings]\ngtk-theme-name=Adwaita\n"), std::nullopt);
    EXPECT_EQ(gtkAnimationsEnabled("[Settings]\ngtk-enable-animations = false\n"), false);
    EXPECT_EQ(gtkAnimationsEnabled("[Settings]\r\ngtk-enable-animations=1\r\n"), true);
}

} // namespace
} // namespace bv
