#include <gtest/gtest.h>

#include <set>

#include "clean/DevCacheCatalog.h"

using namespace bv;
using Case = DevCacheCatalog::Behavior::Case;

TEST(DevCacheCatalog, EveryRowIsComplete) {
    const std::set<std::string> groups{"Packages", "Build tools",      "Apple",            "Testing", "Rust",
                                       "Editors",  "App updates",      "AI models",        "Virtual machines",
                                       "Other"};
    std::set<std::string> ids;
    for (const auto& row : DevCacheCatalog::recipes()) {
        EXPECT_TRUE(ids.insert(row.id).second) << "two rows share the id " << row.id;
        EXPECT_EQ(DevCacheCatalog::recipe(row.id), &row) << row.id;
        EXPECT_FALSE(row.title.empty()) << row.id;
        EXPECT_FALSE(row.note.empty()) << row.id;
        EXPECT_TRUE(row.note.ends_with(".")) << row.id;
        EXPECT_TRUE(groups.contains(row.group)) << row.id << " " << row.group;
        EXPECT_FALSE(row.relativePath.empty() || row.relativePath.front() == '/' || row.relativePath.back() == '/')
            << row.id;
        EXPECT_EQ(row.behavior.suffix.empty(), row.behavior.kind != Case::suffixedChildren) << row.id;
    }
}

TEST(DevCacheCatalog, RowsWithAMeaningOfTheirOwn) {
    const auto* npm = DevCacheCatalog::recipe("npm");
    ASSERT_TRUE(npm);
    EXPECT_EQ(npm->toolCommand, "npm cache clean --force");
    const auto* sim = DevCacheCatalog::recipe("sim-unavailable");
    ASSERT_TRUE(sim);
    EXPECT_EQ(sim->toolCommand, "xcrun simctl delete unavailable");
    EXPECT_EQ(sim->behavior.kind, Case::unavailableSimulators);
    EXPECT_TRUE(sim->optIn);

    // Two rows name one folder; two rows share one title.
    EXPECT_EQ(DevCacheCatalog::recipe("vm-simulators")->relativePath, sim->relativePath);
    EXPECT_EQ(DevCacheCatalog::recipe("yarn")->title, DevCacheCatalog::recipe("yarn-library")->title);
    EXPECT_EQ(DevCacheCatalog::recipe("updater-shipit")->behavior, DevCacheCatalog::Behavior::suffixed(".ShipIt"));
    EXPECT_EQ(DevCacheCatalog::recipe("updater-electron")->behavior.suffix, "-updater");
    EXPECT_EQ(DevCacheCatalog::recipe("nvm")->behavior.kind, Case::nodeVersions);
    EXPECT_EQ(DevCacheCatalog::recipe("missing"), nullptr);
}
