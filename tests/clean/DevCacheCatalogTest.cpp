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
