#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "diagnostics/CrashHandler.h"
#include "diagnostics/DiagnosticsStore.h"
#include "foundation/FileIO.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace std::chrono;

namespace {

const system_clock::time_point kBase = system_clock::from_time_t(1795000000) + milliseconds(42);

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

} // namespace

TEST(DiagnosticsStore, KindLabelJoinsWhatThePayloadHolds) {
    const struct { int crash, hang, cpu, disk; const char* label; } cases[] = {
        {0, 0, 0, 0, "diagnostic"}, {1, 0, 0, 0, "crash"},         {0, 2, 0, 5, "hang+diskwrite"},
        {3, 1, 1, 1, "crash+hang+cpu+diskwrite"}, {0, 0, 1, 0, "cpu"},
    };
    for (const auto& c : cases) EXPECT_EQ(DiagnosticsStore::kindLabel(c.crash, c.hang, c.cpu, c.disk), c.label);
}

TEST(DiagnosticsStore, NamesByDateLabelAndDigestAndSavesARepeatOnce) {
    const DiagnosticsStore store(test::TestEnvironment::freshFolder("reports") + "/made/by/save");
    std::string first, again;
    ASSERT_EQ(store.save("{\"a\":1}", "hang+diskwrite", kBase, &first), DiagnosticsStore::SaveResult::saved);
    // sha256 of {"a":1}
    EXPECT_EQ(nameOf(first), "20261118T110640.042Z-hang+diskwrite-"
                             "015abd7f5cc57a2dd94b7590f04ad8084273905ee33ec5cebeae62276a97f862.json");
    // Delivered again later, even under another label: still the one file.
    EXPECT_EQ(store.save("{\"a\":1}", "crash", kBase + hours(3), &again), DiagnosticsStore::SaveResult::repeat);
    EXPECT_EQ(again, first);
    EXPECT_EQ(store.count(), 1u);
    const auto parts = DiagnosticsStore::parseName(nameOf(first));
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts->kind, "hang+diskwrite");
    EXPECT_EQ(parts->date, kBase);
    EXPECT_FALSE(DiagnosticsStore::parseName("notes.json"));
    EXPECT_TRUE(DiagnosticsStore("/nonexistent/diagnostics").list().empty());
}

TEST(DiagnosticsStore, TheReportOverTheLimitRemovesTheOldest) {
    const DiagnosticsStore store(test::TestEnvironment::freshFolder("limit"), 20);
    for (int i = 0; i < 21; ++i)
        ASSERT_EQ(store.save("{\"n\":" + std::to_string(i) + "}", "crash", kBase + seconds(i)),
                  DiagnosticsStore::SaveResult::saved);
    const auto reports = store.list();
    ASSERT_EQ(reports.size(), 20u);
    EXPECT_EQ(nameOf(reports.front()).substr(0, 20), DiagnosticsStore::fileDate(kBase + seconds(20)));
    EXPECT_EQ(nameOf(reports.back()).substr(0, 20), DiagnosticsStore::fileDate(kBase + seconds(1)));
}

TEST(DiagnosticsStore, APendingCrashCollectedTwiceIsOneReport) {
    const std::string dir = test::TestEnvironment::freshFolder("pending");
    const DiagnosticsStore store(dir);
    const std::string payload = "{\"kind\":\"crash\",\"signal\":11,\"timeMs\":1795000000042}\n";
    for (int round = 0; round < 2; ++round) {
        test::writeFile(dir + "/.crash-77.pending", payload);
        EXPECT_EQ(CrashHandler::collectPending(store), 1);
        EXPECT_FALSE(test::exists(dir + "/.crash-77.pending"));
    }
    const auto reports = store.list();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(nameOf(reports[0]).substr(0, 27), "20261118T110640.042Z-crash-");
    EXPECT_EQ(readWholeFile(reports[0]), payload);
}
