#include <gtest/gtest.h>

#include "duplicates/DuplicateCleanup.h"
#include "foundation/Dates.h"

using namespace bv;
namespace dt = bv::duplicateTexts;

namespace {

const std::string kHome = "/home/ana";

DuplicateFile file(const std::string& path, std::int64_t bytes, int minute, bool shares = false) {
    return DuplicateFile{path, bytes, *parseIsoDate("2026-11-20T10:" + std::string(minute < 10 ? "0" : "") +
                                                    std::to_string(minute) + ":00Z"),
                         shares};
}

DuplicateGroup group(const std::string& id, std::int64_t size, std::vector<DuplicateFile> files, int objects) {
    return DuplicateGroup{id, size, std::move(files), size * (objects - 1)};
}

std::vector<std::string> pathsOf(const CleanupPlan& plan) {
    std::vector<std::string> out;
    for (const auto& e : plan.entries) out.push_back(e.path);
    return out;
}

} // namespace

TEST(DuplicateCleanup, KeeperInTheMiddleLeavesTwoEntriesNamingIt) {
    const auto g = group("3000000-aa", 3'000'000,
                         {file(kHome + "/Documents/a.mov", 3'000'000, 1), file(kHome + "/Documents/b.mov", 3'000'000, 2),
                          file(kHome + "/Pictures/c.mov", 3'000'000, 3)},
                         3);
    DuplicateKeepMap keep = initialDuplicateKeep({g});
    EXPECT_EQ(keep.at(g.id), kHome + "/Documents/a.mov") << "after a scan the lowest path stays";
    keep[g.id] = kHome + "/Documents/b.mov";
    const auto plan = buildDuplicatePlan({g}, keep, {kHome}, kHome);
    EXPECT_TRUE(plan.refusals.empty());
    ASSERT_EQ(pathsOf(plan), (std::vector<std::string>{kHome + "/Documents/a.mov", kHome + "/Pictures/c.mov"}));
    for (const auto& e : plan.entries) {
        EXPECT_EQ(e.note, "Same contents as ~/Documents/b.mov, which stays. Moves to the Trash.");
        ASSERT_TRUE(e.recheck);
        EXPECT_EQ(e.recheck->keeperPath, kHome + "/Documents/b.mov");
        EXPECT_EQ(e.recheck->keeperBytes, 3'000'000);
        EXPECT_EQ(e.recheck->keeperModified, g.files[1].modified);
    }
    // The fields the cleaner's checks rely on, for the first entry.
    const auto& e = plan.entries[0];
    EXPECT_EQ(e.id, "duplicate|" + kHome + "/Documents/a.mov");
    EXPECT_EQ(e.disposition, CleanupDisposition::trash);
    EXPECT_EQ(e.allowRoot, kHome);
    EXPECT_EQ(e.origin, CleanupOrigin::duplicate);
    EXPECT_EQ(e.tier, CleanupTier::userData);
    EXPECT_EQ(e.recheck->touchedAtPlan, g.files[0].modified);
    EXPECT_EQ(e.recheck->expectedBytes, 3'000'000);
}

TEST(DuplicateCleanup, KeeperFallsBackToTheFirstFile) {
    const auto g = group("200000-bb", 200'000, {file("/data/x/one", 200'000, 1), file("/data/y/two", 200'000, 2)}, 2);
    for (const DuplicateKeepMap& keep : {DuplicateKeepMap{}, DuplicateKeepMap{{g.id, "/data/z/gone"}},
                                         DuplicateKeepMap{{"other-id", "/data/y/two"}}}) {
        EXPECT_EQ(duplicateKeeper(g, keep)->path, "/data/x/one");
        const auto plan = buildDuplicatePlan({g}, keep, {"/data"}, kHome);
        EXPECT_EQ(pathsOf(plan), std::vector<std::string>{"/data/y/two"});
    }
}

// Notes stand beside the plan in group and file order; a group where nothing can go gives
// notes and no entries.
TEST(DuplicateCleanup, NotesForWhatCannotGo) {
    const std::vector<DuplicateGroup> groups{
        // Hard links only: one note, no entries.
        group("500000-cc", 500'000, {file("/data/h/one", 500'000, 1, true), file("/data/h/two", 500'000, 1, true)}, 1),
        // Copies under a root that was removed after the scan; the keeper need not be in a root.
        group("400000-dd", 400'000, {file("/old/keeper", 400'000, 1), file("/old/copy", 400'000, 2),
                                     file("/data/kept-root/copy", 400'000, 3)}, 3),
        // Protected places inside the home folder, and one allowed content folder.
        group("300000-ee", 300'000, {file(kHome + "/.config/app/blob", 300'000, 1),
                                     file(kHome + "/.ssh/blob", 300'000, 2), file(kHome + "/Music/blob", 300'000, 3),
                                     file(kHome + "/src/.git/objects/blob", 300'000, 4)}, 4),
        // A group of one file gives nothing at all.
        group("100000-ff", 100'000, {file("/data/single", 100'000, 1)}, 1),
    };
    const auto plan = buildDuplicatePlan(groups, initialDuplicateKeep(groups), {"/data/", kHome}, kHome);
    EXPECT_EQ(plan.refusals, (std::vector<std::string>{
                                 "one shares one storage object across its copies, so nothing would be freed.",
                                 "copy is outside the scanned folders and was skipped.",
                                 "blob is in a protected folder and was skipped.",
                                 "blob is in a protected folder and was skipped.",
                             }));
    EXPECT_EQ(pathsOf(plan), (std::vector<std::string>{"/data/kept-root/copy", kHome + "/Music/blob"}));
    EXPECT_EQ(plan.entries[0].allowRoot, "/data") << "the matching root in standard form";
    EXPECT_EQ(plan.entries[0].note, "Same contents as /old/keeper, which stays. Moves to the Trash.");
    EXPECT_EQ(plan.entries[1].note, "Same contents as ~/.config/app/blob, which stays. Moves to the Trash.");

    // A nameless first file is called "Files".
    const auto rootFiles = group("600000-gg", 600'000, {file("/", 600'000, 1, true), file("/x", 600'000, 1, true)}, 1);
    EXPECT_EQ(buildDuplicatePlan({rootFiles}, {}, {"/"}, kHome).refusals,
              std::vector<std::string>{"Files shares one storage object across its copies, so nothing would be freed."});
}

TEST(DuplicateCleanup, ReviewsAllAGroupOrOneCopy) {
    const std::vector<DuplicateGroup> groups{
        group("900000-a", 900'000, {file("/d/a1", 900'000, 1), file("/d/a2", 900'000, 2), file("/d/a3", 900'000, 3)}, 3),
        group("800000-b", 800'000, {file("/d/b1", 800'000, 1), file("/d/b2", 800'000, 2)}, 2),
    };
    DuplicateKeepMap keep = initialDuplicateKeep(groups);
    keep["900000-a"] = "/d/a3";
    using Scope = DuplicateReviewRequest::Scope;
    const struct {
        DuplicateReviewRequest request;
        std::vector<std::string> paths;
    } cases[] = {
        {{Scope::all, "", ""}, {"/d/a1", "/d/a2", "/d/b2"}},
        {{Scope::group, "800000-b", ""}, {"/d/b2"}},
        {{Scope::group, "no-such-group", ""}, {}},
        {{Scope::oneCopy, "900000-a", "/d/a2"}, {"/d/a2"}},
        {{Scope::oneCopy, "900000-a", "/d/a3"}, {}}, // the keeper itself never goes
    };
    for (const auto& c : cases) {
        const auto review = reviewDuplicates(c.request, groups, keep, {"/d"}, kHome);
        ASSERT_TRUE(review.plan) << c.request.groupId;
        EXPECT_FALSE(review.error);
        EXPECT_EQ(pathsOf(*review.plan), c.paths) << c.request.groupId << " " << c.request.path;
        for (const auto& e : review.plan->entries)
            if (e.path.rfind("/d/a", 0) == 0) {
                EXPECT_EQ(e.recheck->keeperPath, "/d/a3");
            }
    }
    const auto none = reviewDuplicates({Scope::all, "", ""}, {}, keep, {"/d"}, kHome);
    EXPECT_FALSE(none.plan);
    EXPECT_EQ(none.error, "Nothing to clean. Scan for duplicates first.");
}
