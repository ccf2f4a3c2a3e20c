#include <gtest/gtest.h>

#include "clean/SmartCleanLayout.h"

using namespace bv;

namespace {

const std::string kHome = "/home/ada";

DevScanRow row(const std::string& id, const std::string& relative, std::int64_t bytes, bool optIn = false) {
    DevScanRow r;
    r.id = id;
    r.title = id;
    r.path = kHome + "/" + relative;
    r.resolvedPath = r.path;
    r.allowRoot = r.path;
    r.bytes = bytes;
    r.note = "Comes back the next time you build.";
    r.group = "Packages";
    r.optIn = optIn;
    r.selectable = true;
    return r;
}

// One line per card: what a card shows, so a whole layout compares in one assertion.
std::vector<std::string> cardLines(const std::vector<SmartCleanLayout::Card>& cards) {
    std::vector<std::string> out;
    for (const auto& c : cards)
        out.push_back(c.id + " | " + c.title + " | rows " + std::to_string(c.rows.size()) + ", hidden " +
                      std::to_string(c.hiddenCount) + ", small " + std::to_string(c.smallRows.size()) + " | " +
                      std::to_string(c.totalBytes) + " | " + c.safety + " | " + c.keptLine.value_or("-"));
    return out;
}

} // namespace

TEST(SmartCleanLayout, RecommendedRowsAndTheMillionByteEdge) {
    std::vector<DevScanRow> rows{row("npm", ".npm/_cacache", 1'000'000), row("yarn", ".yarn/cache", 999'999),
                                 row("archives", "Library/Developer/Xcode/Archives", 5'000'000, true),
                                 row("cache-tag", ".cache/CACHEDIR.TAG", 2'000'000)};
    rows.push_back(row("pip", "Library/Caches/pip", 3'000'000));
    rows.back().selectable = false;
    SmartCleanLayout::selectRecommended(rows);
    const bool expected[] = {true, false, false, false, false};
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i].selected, expected[i]) << rows[i].id;
}

TEST(SmartCleanLayout, CardsGroupByFamilyWithSmallRowsAndSafety) {
    std::vector<DevScanRow> rows{
        row("yarn", ".yarn/cache", 1'000'000),          row("yarn-library", "Library/Caches/Yarn", 999'999),
        row("cache-pip", ".cache/pip", 4'000'000),       row("cache-tag", ".cache/CACHEDIR.TAG", 10),
        row("node-v18.1.0", ".nvm/versions/node/v18.1.0", 9'000'000, true),
        row("node-v20.1.0", ".nvm/versions/node/v20.1.0", 9'000'000, true)};
    rows.back().selectable = false;
    rows.back().blockedReason = "This is the version you use every day. It stays.";

    // Exactly 1,000,000 bytes is large and 999,999 small; the blocked version counts nothing.
    EXPECT_EQ(cardLines(SmartCleanLayout::cards(rows, false)),
              (std::vector<std::string>{
                  "node | Node | rows 1, hidden 0, small 0 | 9000000 | Moves to Trash | The version you use every day stays.",
                  "other-cache | Tool caches (~/.cache) | rows 1, hidden 1, small 0 | 4000010 | Comes back automatically | -",
                  "yarn | Yarn | rows 1, hidden 1, small 0 | 1999999 | Comes back automatically | -"}));
    EXPECT_EQ(SmartCleanLayout::cards(rows, true)[2].smallRows.size(), 1u);
}

TEST(SmartCleanLayout, SelectedRowsBecomeEntriesOrRefusals) {
    std::vector<DevScanRow> rows{row("npm", ".npm/_cacache", 5), row("node-v18.1.0", ".nvm/versions/node/v18.1.0", 5, true),
                                 row("archives", "Library/Developer/Xcode/Archives", 5, true),
                                 row("cargo-cache", ".cargo/registry/cache", 5), row("blocked", ".npm/_cacache", 5),
                                 row("sneaky", ".npm/_cacache", 5), row("unpicked", ".npm/_cacache", 5)};
    rows[3].resolvedPath = "/tmp/elsewhere";
    rows[4].blockedReason = "This stays put.";
    rows[5].path = rows[5].resolvedPath = kHome + "/.ssh";
    rows[5].allowRoot = kHome + "/.ssh";
    for (auto& r : rows) r.selected = r.id != "unpicked";

    const auto plan = SmartCleanLayout::plan(rows, kHome);
    ASSERT_EQ(plan.entries.size(), 3u);
    EXPECT_EQ(plan.entries[0].tier, CleanupTier::regenerable);
    EXPECT_EQ(plan.entries[0].symbolName, "trash");
    EXPECT_EQ(plan.entries[0].origin, CleanupOrigin::devCache);
    EXPECT_EQ(plan.entries[1].tier, CleanupTier::abandonedTool);
    EXPECT_EQ(plan.entries[2].tier, CleanupTier::userData);
    EXPECT_EQ(plan.refusals, (std::vector<std::string>{"cargo-cache points outside its cache folder, so it was skipped.",
                                                       "blocked was left alone. This stays put.",
                                                       "sneaky is protected and was not cleaned."}));

    DevScanRow sim = row("sim-unavailable", "Library/Developer/CoreSimulator/Devices", 5, true);
    sim.selected = true;
    const auto simPlan = SmartCleanLayout::plan({sim}, kHome);
    ASSERT_EQ(simPlan.entries.size(), 1u) << "the simulator tool's row skips the cache law";
    EXPECT_EQ(simPlan.entries[0].disposition, CleanupDisposition::permanent);
    EXPECT_EQ(simPlan.entries[0].symbolName, "terminal");
}
