#include <gtest/gtest.h>

#include <filesystem>
#include <utime.h>

#include "clean/DevCacheScanner.h"
#include "core/BrimvaleSettings.h"
#include "foundation/FileIO.h"
#include "guidance/FirstRunClean.h"
#include "guidance/FirstRunFlow.h"
#include "guidance/FirstRunItems.h"
#include "guidance/TourPlayer.h"
#include "platform/XdgPaths.h"
#include "sort/FileSample.h"
#include "support/DevCacheHome.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

namespace bv {
namespace {

using test::writeFile;
using test::writeSizedFile;

void age(const std::string& path, int days) {
    const std::time_t when = std::time(nullptr) - static_cast<std::time_t>(days) * 86400;
    const utimbuf times{when, when};
    ::utime(path.c_str(), &times);
}

TEST(FirstRunFlow, StepsFromWelcomeToClose) {
    FirstRunFlow flow;
    BrimvaleSettings settings;
    // Access not granted: the access step asks; "Continue" waits for access.
    EXPECT_FALSE(flow.continueFromWelcome(false).entered);
    EXPECT_EQ(flow.step(), FirstRunStep::access);
    EXPECT_FALSE(flow.continueWithAccess(false).entered);
    const auto start = flow.continueWithoutAccess(settings);
    EXPECT_TRUE(settings.didSkipFullDiskAccess);
    EXPECT_TRUE(start.entered && start.startScan && flow.scanning());
    // Going to the scan step again starts nothing more.
    EXPECT_FALSE(flow.goToScanning().entered);
    EXPECT_FALSE(flow.continueWithAccess(true).startScan);

    flow.scanFinished({{"developer-a", "developer", "Developer caches", "A", "/x/a", 10, "", "/x", {}, false}});
    EXPECT_TRUE(flow.scanDone() && !flow.scanning());
    flow.tourFinished();
    EXPECT_EQ(flow.step(), FirstRunStep::report);
    flow.openFirstClean();
    EXPECT_FALSE(flow.beginClean());
    EXPECT_EQ(flow.note(), "Choose what to clean.");
    flow.backToReport();
    EXPECT_EQ(flow.step(), FirstRunStep::report);
    flow.openFirstClean();
    flow.setSelected("developer-a", true);
    ASSERT_TRUE(flow.beginClean());
    EXPECT_FALSE(flow.beginClean()); // one clean at a time
    flow.cleanFinished(10, {"Couldn\u2019t move \u201cB\u201d to the Trash"});
    EXPECT_EQ(flow.freed(), 10);
    EXPECT_EQ(flow.note(), "Couldn\u2019t move \u201cB\u201d to the Trash");
    FirstRunFlow::close(settings);
    EXPECT_TRUE(settings.didCompleteFirstRun);
    // Leaving it there and coming back starts again at the welcome.
    flow.reset();
    EXPECT_EQ(flow.step(), FirstRunStep::welcome);
    // Where access is simply there, the welcome goes straight to the scan.
    EXPECT_TRUE(flow.continueFromWelcome(true).startScan);
}

TEST(FirstRunTour, WaitsOnTheLastSlideForTheScanAndReplaysOnItsOwn) {
    TourPlayer tour;
    EXPECT_FALSE(tour.skip(TourMode::firstRun, false));
    EXPECT_TRUE(tour.isLastSlide());
    EXPECT_EQ(tour.forwardTitle(TourMode::firstRun, false), "Finishing the scan\u2026");
    EXPECT_FALSE(tour.next(TourMode::firstRun, false));
    EXPECT_EQ(tour.forwardTitle(TourMode::firstRun, true), "See what I found");
    EXPECT_TRUE(tour.next(TourMode::firstRun, true));
    EXPECT_TRUE(tour.isFinished());

    tour.restart();
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(tour.next(TourMode::replay, false));
    EXPECT_EQ(tour.forwardTitle(TourMode::replay, false), "Done");
    EXPECT_TRUE(tour.next(TourMode::replay, false));
    EXPECT_EQ(TourPlayer::accessibleDescription(2), "Feature tour, slide 3");
    EXPECT_EQ(TourPlayer::footerText(true, 7'000'000), "Scan finished \u00b7 7 MB found");
}

TEST(FirstRunItems, DownloadsSortIntoThreeCategoriesAndRepeatsMustMatchByteForByte) {
    const std::string dl = test::TestEnvironment::freshFolder("first-run-downloads");
    writeSizedFile(dl + "/tool.deb", 40'000);
    age(dl + "/tool.deb", 30);
    writeSizedFile(dl + "/fresh.AppImage", 40'000); // an installer from today stays
    writeFile(dl + "/report.pdf", "same bytes");
    writeFile(dl + "/report (1).pdf", "same bytes");
    writeFile(dl + "/notes.txt", "first text");
    writeFile(dl + "/notes(1).txt", "other text"); // same size, other content
    writeSizedFile(dl + "/movie.mkv", 2'000'000);
    age(dl + "/movie.mkv", 200);
    writeSizedFile(dl + "/small-old.txt", 10);
    age(dl + "/small-old.txt", 200);

    const auto items = FirstRunItems::fromDownloads(gatherSamples(dl, SortPlace::downloads, true, Clock::now()), dl,
                                                    Clock::now());
    std::vector<std::string> ids;
    for (const auto& item : items) ids.push_back(item.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"installers-tool.deb", "duplicates-report (1).pdf", "downloads-movie.mkv"}));
    const auto totals = FirstRunItems::totals(items);
    ASSERT_EQ(totals.size(), 1U);
    EXPECT_EQ(totals[0].title, "Old installers and downloads");
    EXPECT_EQ(totals[0].bytes, 40'000 + 10 + 2'000'000);

    EXPECT_TRUE(FirstRunItems::isRepeatName("a.tar.gz.1", "a.tar.gz"));
    EXPECT_FALSE(FirstRunItems::isRepeatName("report (x).pdf", "report.pdf"));
}

// The whole first look and first clean over a real home: the developer cache scan, the
// items, the clean into the real Trash (checked with trash-cli), the manifest on disk.
TEST(FirstRunClean, CleansTheTickedItemsIntoTheTrashAndWritesAManifest) {
    const std::string home = XdgPaths::home();
    const auto fixture = test::writeDevCacheHome(home);
    auto items = FirstRunItems::fromDeveloperRows(DevCacheScanner::scan(home).rows);
    std::int64_t ticked = 0;
    for (const auto& item : items)
        if (item.selected) ticked += item.bytes;
    EXPECT_GE(ticked, test::DevCacheHome::kRecommendedBytes);
    for (const auto& item : items) EXPECT_EQ(item.path.rfind(fixture.outside, 0), std::string::npos);

    // A vanished item and one outside its folder fail alone; the others still go.
    FirstRunItem vanished{"downloads-gone", "downloads", "Old downloads", "gone.zip", home + "/Downloads/gone.zip",
                          5, "Moves to Trash", home + "/Downloads", {}, true};
    FirstRunItem astray = vanished;
    astray.title = "astray.txt";
    astray.path = fixture.outside + "/crate.tar";
    std::vector<FirstRunItem> chosen;
    for (const auto& item : items)
        if (item.selected) chosen.push_back(item);
    chosen.push_back(vanished);
    chosen.push_back(astray);

    const auto result = FirstRunClean::run(chosen, home, XdgPaths::logsDir(), "1.0", Clock::now());
    EXPECT_EQ(result.freed, ticked);
    EXPECT_EQ(result.failures, (std::vector<std::string>{"Couldn\u2019t move \u201cgone.zip\u201d to the Trash",
                                                          "Couldn\u2019t move \u201castray.txt\u201d to the Trash"}));
    EXPECT_TRUE(test::exists(fixture.outside + "/crate.tar"));
    for (const auto& item : chosen) {
        if (item.categoryID == "developer") {
            EXPECT_FALSE(test::exists(item.path)) << item.path;
        }
    }
    ASSERT_TRUE(result.manifestPath);
    const auto manifest = parseJson(readWholeFile(*result.manifestPath).value_or(""));
    ASSERT_TRUE(manifest);
    EXPECT_EQ((*manifest)["trigger"], "first-run");
    EXPECT_EQ((*manifest)["lines"].size(), result.logs.size());
    if (test::haveCommand("trash-list")) {
        const auto listed = test::runCommand("trash-list").output;
        for (const auto& log : result.logs) EXPECT_NE(listed.find(log.sourcePath), std::string::npos) << log.sourcePath;
    }
}

} // namespace
} // namespace bv
