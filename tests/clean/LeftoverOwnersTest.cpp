// Owner names of leftover children, and the parent-folder file of the old-project search.
#include <gtest/gtest.h>

#include "clean/LeftoverOwners.h"
#include "clean/NodeModuleRoot.h"
#include "support/TestEnvironment.h"

namespace bv::test {
namespace {

TEST(LeftoverOwners, NamesByLocation) {
    using L = OrphanLocation;
    const struct {
        const char* child;
        L location;
        std::optional<std::string> owner;
    } rows[] = {
        {"ABCDE12345.group.com.example.app", L::groupContainers, "com.example.app"},
        {"groups.com.example.app", L::groupContainers, "com.example.app"},
        {"com.example.app.plist", L::preferences, "com.example.app"},
        {"com.example.app", L::preferences, std::nullopt},
        {"com.example.app.0A1B2C3D-0000-1111-2222-333344445555.plist", L::preferencesByHost, "com.example.app"},
        {"com.example.app.savedState", L::savedState, "com.example.app"},
        {"com.example.app.binarycookies", L::cookies, "com.example.app"},
        {"com.example.app.ShipIt", L::caches, "com.example.app"},
        {"org.example.Tool.desktop", L::loginItem, "org.example.Tool"},
        {"tool.autostart", L::loginItem, std::nullopt},
        {".hidden", L::settings, std::nullopt},
        {"0A1B2C3D-0000-1111-2222-333344445555", L::containers, std::nullopt}, // owner comes from metadata
        {"com.apple.Safari", L::flatpakData, std::nullopt},
        {"com.icloud.x", L::applicationSupport, std::nullopt},
        {"gtk-3.0", L::settings, std::nullopt},
        {"org.freedesktop.Platform", L::flatpakData, std::nullopt},
        {"mytokens", L::appData, std::nullopt}, // looks private
        {"1password", L::settings, "1password"}, // private-looking words don't hide known apps
    };
    for (const auto& r : rows) EXPECT_EQ(LeftoverOwners::ownerName(r.child, r.location), r.owner) << r.child;

    EXPECT_TRUE(LeftoverOwners::namesAnApp("com.example", OrphanLocation::applicationSupport));
    EXPECT_FALSE(LeftoverOwners::namesAnApp("app.conf", OrphanLocation::settings));
    EXPECT_TRUE(LeftoverOwners::namesAnApp("org.example.App", OrphanLocation::settings));
    EXPECT_EQ(LeftoverOwners::knownApp("Google/Chrome")->name, "Google Chrome");
    EXPECT_EQ(LeftoverOwners::displayName("org.example.tool", true), "Tool");
}

TEST(NodeRoots, RoundTripAndABadFileReadsAsNone) {
    const std::string dir = TestEnvironment::freshFolder("node-roots");
    EXPECT_TRUE(loadNodeRoots(dir).empty());
    const std::vector<NodeModuleRoot> roots{{*Uuid::parse("6F9619FF-8B86-D011-B42D-00C04FC964FF"), "/home/u/Projects", "cGF0aA=="},
                                            {*Uuid::parse("6F9619FF-8B86-D011-B42D-00C04FC964F0"), "/srv/code", std::nullopt}};
    ASSERT_TRUE(saveNodeRoots(dir, roots));
    EXPECT_EQ(loadNodeRoots(dir), roots);
    writeFile(dir + "/node-roots.json", R"([{"id": "not-a-uuid", "path": "/x"}])");
    EXPECT_TRUE(loadNodeRoots(dir).empty());
}

} // namespace
} // namespace bv::test
