// App leftovers in a fixture home, against an installed index built from fixture folders laid
// out as the system's are (desktop entries, Flatpak installations, PATH).
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "CleanerTestSupport.h"
#include "clean/AppLeftovers.h"
#include "clean/Cleaner.h"
#include "clean/SmartCleanOriginChecks.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

namespace bv::test {
namespace {

constexpr std::int64_t kDay = 86'400;

// A file of `bytes` file size that takes no room (file size is what a plain file counts).
void sparseFile(const std::string& path, std::int64_t bytes, std::int64_t daysAgo) {
    writeFile(path, "");
    ASSERT_EQ(::truncate(path.c_str(), bytes), 0);
    setModified(path, epochSeconds(Clock::now()) - daysAgo * kDay);
}

// A folder holding one file of real data, both backdated.
void leftoverFolder(const std::string& path, std::int64_t bytes, std::int64_t daysAgo) {
    writeSizedFile(path + "/data.bin", bytes);
    setModified(path + "/data.bin", epochSeconds(Clock::now()) - daysAgo * kDay);
    setModified(path, epochSeconds(Clock::now()) - daysAgo * kDay);
}

InstalledApps::Roots fixtureSystem(const std::string& root) {
    InstalledApps::Roots roots{{root + "/share"}, {root + "/flatpak"}, {root + "/snap"}, {root + "/bin"}};
    makeDir(root + "/flatpak/app/org.example.Installed");
    makeDir(root + "/snap/snapped");
    writeFile(root + "/share/applications/org.example.Desk.desktop",
              "[Desktop Entry]\nName=Desk\nExec=env A=1 /opt/desk/deskprog %U\nStartupWMClass=DeskWindow\n");
    writeFile(root + "/bin/mytool", "#!/bin/sh\n");
    ::chmod((root + "/bin/mytool").c_str(), 0755);
    return roots;
}

TEST(AppLeftovers, StatusesSizeFloorsAndTheSystemsOwnNames) {
    const std::string home = TestEnvironment::freshFolder("leftover-home");
    const std::string prefs = home + "/Library/Preferences/";
    sparseFile(prefs + "com.gone.small.plist", 999'999, 30);
    sparseFile(prefs + "com.gone.big.plist", 1'000'000, 30);
    sparseFile(prefs + "org.example.recent.plist", 49'999'999, 13);   // gone, written 13 days ago: unknown
    sparseFile(prefs + "org.example.recentbig.plist", 50'000'000, 13);
    sparseFile(prefs + "com.apple.Safari.plist", 80'000'000, 30);
    // Folders count what they occupy, so these hold real data above the floor of `gone`.
    leftoverFolder(home + "/.var/app/org.example.Installed", 1'100'000, 30); // an installed Flatpak
    leftoverFolder(home + "/.var/app/org.example.Desk", 1'100'000, 30);      // a desktop entry's id
    leftoverFolder(home + "/.var/app/org.example.Gone", 1'100'000, 30);
    leftoverFolder(home + "/.var/app/com.icloud.x", 1'100'000, 30);
    sparseFile(home + "/.config/user-dirs.dirs", 80'000'000, 30);
    sparseFile(home + "/.config/dconf", 80'000'000, 30);
    sparseFile(home + "/.config/mytool", 80'000'000, 30);   // on PATH
    sparseFile(home + "/.config/deskprog", 80'000'000, 30); // a desktop entry's program
    sparseFile(home + "/.config/snapped", 80'000'000, 30);  // a snap
    sparseFile(home + "/.config/sometool.conf", 60'000'000, 30); // nobody's: unknown, never selected
    sparseFile(home + "/.local/share/slack", 60'000'000, 30);    // a known app's folder name
    sparseFile(home + "/.config/autostart/org.example.Gone.desktop", 10, 30);

    AppLeftovers::Options options;
    options.installedRoots = fixtureSystem(TestEnvironment::freshFolder("leftover-system"));
    const auto result = AppLeftovers::scan(home, options);
    std::map<std::string, OwnerStatus> seen;
    for (const auto& f : result.findings) seen[f.id] = f.status;
    EXPECT_EQ(seen, (std::map<std::string, OwnerStatus>{{"orphan.com.gone.big", OwnerStatus::gone},
                                                        {"orphan.org.example.recentbig", OwnerStatus::unknown},
                                                        {"orphan.org.example.gone", OwnerStatus::gone},
                                                        {"orphan.sometool.conf", OwnerStatus::unknown},
                                                        {"orphan.slack", OwnerStatus::unknown}}));
    EXPECT_EQ(AppLeftovers::recommendedIDs(result.findings),
              (std::set<std::string>{"orphan.com.gone.big", "orphan.org.example.gone"}));
    for (const auto& f : result.findings) {
        if (f.id == "orphan.org.example.gone") {
            EXPECT_EQ(f.title, "Gone leftovers (app not installed)");
            EXPECT_EQ(f.paths.size(), 2u); // the Flatpak data and the login item
            EXPECT_EQ(f.evidence[0], "No app registered for org.example.Gone.");
        }
        if (f.id == "orphan.org.example.recentbig") {
            EXPECT_EQ(f.title, "Recentbig (possibly left behind)");
            EXPECT_EQ(f.evidence, (std::vector<std::string>{"Written in the last two weeks, so something still uses it.",
                                                            "Newest file written 13 days ago."}));
        }
        if (f.id == "orphan.slack") {
            EXPECT_EQ(f.ownerName, "Slack");
        }
    }
    // Sizes sort the findings, largest first.
    for (std::size_t i = 1; i < result.findings.size(); ++i)
        EXPECT_GE(result.findings[i - 1].totalBytes(), result.findings[i].totalBytes());
}

TEST(AppLeftovers, EntriesRefuseWhatTheLawKeepsAndLockFilesHoldAtApplyTime) {
    const std::string home = XdgPaths::home();
    std::vector<OrphanFinding> findings(1);
    OrphanFinding& f = findings[0];
    f.id = "orphan.org.example.tool";
    f.ownerName = "Tool";
    f.bundleIDs = {"org.example.Tool"};
    f.status = OwnerStatus::gone;
    for (const std::string name : {"org.example.Tool", "org.example.Tool2", "org.example.Tool3"}) {
        const std::string path = home + "/.var/app/" + name;
        makeDir(path);
        writeFile(path + "/data", "x");
        f.paths.push_back({path, OrphanLocation::flatpakData, 4096, 1, AppLeftovers::newestActivity(path, 1.0)});
    }
    writeFile(home + "/.var/app/org.example.Tool2/app.lock", "");
    writeFile(home + "/.var/app/org.example.Tool3/ipc.sock", "");
    f.paths.push_back({home + "/Documents/org.example.Tool", OrphanLocation::applicationSupport, 1, 1, std::nullopt});

    const auto plan = AppLeftovers::build(findings, {f.id}, home);
    EXPECT_EQ(plan.refusals, (std::vector<std::string>{"~/Documents/org.example.Tool is protected and was skipped."}));
    ASSERT_EQ(plan.entries.size(), 3u);
    EXPECT_EQ(plan.entries[0].title, "Tool \u00b7 App data");
    EXPECT_EQ(plan.entries[0].note, "Left behind by Tool, which is not installed. Moves to the Trash.");
    EXPECT_EQ(plan.entries[0].allowRoot, home + "/.var/app");
    EXPECT_EQ(plan.entries[0].tier, CleanupTier::orphaned);
    EXPECT_TRUE(AppLeftovers::build(findings, {}, home).isEmpty()); // nothing is preselected

    Cleaner::Environment env;
    env.originChecks = std::make_shared<SmartCleanOriginChecks>();
    const auto result = Cleaner(env).applyList(plan.entries, home);
    const std::string inUse = "It is in use right now (a lock file is present).";
    EXPECT_EQ(result.failures, (std::vector<std::string>{"Couldn\u2019t clean Tool \u00b7 App data. " + inUse,
                                                          "Couldn\u2019t clean Tool \u00b7 App data. " + inUse}));
    EXPECT_EQ(result.logs.size(), 1u);
    EXPECT_FALSE(exists(home + "/.var/app/org.example.Tool"));
}

} // namespace
} // namespace bv::test
