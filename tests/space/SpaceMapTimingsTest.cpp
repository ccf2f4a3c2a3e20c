#include <gtest/gtest.h>

#include "foundation/FileIO.h"
#include "space/SpaceMapTimings.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;
using T = SpaceMapTimings;

TEST(SpaceMapTimings, ThroughputIsTheUpperMedianOfUsableTimings) {
    struct Case {
        const char* what;
        T::Table table;
        double rate;
    } cases[] = {
        {"none", {}, 1'500'000'000.0},
        {"three", {{"/a", {1000, 1, 1000}}, {"/b", {2000, 1, 1000}}, {"/c", {3000, 1, 1000}}}, 2},
        {"two gives the higher", {{"/a", {1000, 1, 1000}}, {"/b", {3000, 1, 1000}}}, 3},
        {"short and empty ones left out",
         {{"/a", {5000, 1, 1000}}, {"/short", {10, 1, 0.49}}, {"/zero", {0, 0, 9}}},
         5},
        {"exactly half a second counts", {{"/a", {100, 1, 0.5}}}, 200},
    };
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(T::throughput(c.table), c.rate) << c.what;
}

TEST(SpaceMapTimings, DurationWordings) {
    const std::pair<double, const char*> cases[] = {
        {0, "a few seconds"},          {4.9, "a few seconds"},        {5, "about 5 seconds"},
        {6, "about 5 seconds"},        {52, "about 50 seconds"},      {54.9, "about 55 seconds"},
        {55, "about a minute"},        {89, "about a minute"},        {90, "about 2 minutes"},
        {125, "about 2 minutes"},      {3599, "about 60 minutes"},    {3600, "about an hour"},
        {5300, "about an hour"},       {5400, "about 2 hours"},       {36000, "about 10 hours"},
    };
    for (const auto& [s, text] : cases) EXPECT_EQ(T::durationText(s), text) << s;
}

TEST(SpaceMapTimings, EstimatesInTheirThreeWordings) {
    const T::Table table{{"/home/ann", {12'000'000'000, 10, 40}}, {"/quick", {3'000'000'000, 10, 0.2}}};
    const std::vector<MountedVolume> volumes{{"/media/usb", "USB", 64'000'000'000, 4'000'000'000},
                                             {"/media/odd", "Odd", 1'000, 5'000}};
    // Rate: only /home/ann's 300 MB/s counts.
    const auto last = T::estimate("/home/ann", table, volumes);
    ASSERT_TRUE(last);
    EXPECT_EQ(T::estimateText(last), "Mapped 12 GB last time. Takes about 40 seconds");
    const auto quick = T::estimate("/quick", table, volumes); // too short to trust: bytes / rate
    ASSERT_TRUE(quick);
    EXPECT_DOUBLE_EQ(quick->seconds, 10.0);
    const auto volume = T::estimate("/media/usb", table, volumes);
    ASSERT_TRUE(volume);
    EXPECT_EQ(volume->bytes, 60'000'000'000);
    EXPECT_EQ(T::estimateText(volume), "60 GB in use. Mapping it takes about 3 minutes; you can keep working meanwhile.");
    EXPECT_EQ(T::estimate("/media/odd", table, volumes)->bytes, 0); // free above total: never below 0
    EXPECT_FALSE(T::estimate("/media/usb/photos", table, volumes));
    EXPECT_EQ(T::estimateText(std::nullopt),
              "First map of this folder. Folders usually take seconds; a whole drive takes a few minutes.");
}

TEST(SpaceMapTimings, TimeLeft) {
    const T::Estimate e{10'000, 10, T::EstimateSource::lastTime};
    EXPECT_FALSE(T::timeLeft(std::nullopt, 100, 5));
    EXPECT_FALSE(T::timeLeft(T::Estimate{0, 0, T::EstimateSource::volume}, 100, 5));
    EXPECT_FALSE(T::timeLeft(e, 0, 5));
    EXPECT_FALSE(T::timeLeft(e, 100, 0.99));
    EXPECT_DOUBLE_EQ(*T::timeLeft(e, 2'000, 2), 8.0);
    EXPECT_DOUBLE_EQ(*T::timeLeft(e, 20'000, 2), 0.0); // more than expected: never below 0
}

TEST(SpaceMapTimings, OnlyCompleteMapsAreRememberedAndTheyPersist) {
    const std::string dir = TestEnvironment::freshFolder("timings");
    const UserDefaults defaults(dir + "/defaults.json");
    T::Table table = T::load(defaults);
    EXPECT_TRUE(table.empty());

    DiskMap cancelled;
    cancelled.rootPath = "/data";
    cancelled.totalBytes = 5;
    cancelled.truncated = true;
    EXPECT_FALSE(T::record(table, cancelled, 3));
    EXPECT_TRUE(table.empty());

    DiskMap done = cancelled;
    done.truncated = false;
    done.fileCount = 2;
    EXPECT_TRUE(T::record(table, done, 3.25));
    T::save(defaults, table);
    EXPECT_EQ(T::load(defaults), table);
    EXPECT_EQ(T::load(defaults).at("/data"), (ScanTiming{5, 2, 3.25}));

    for (const char* bad : {R"({"spaceMapTimings.v1": [1, 2]})", R"({"spaceMapTimings.v1": {"/a": {"bytes": "x"}}})",
                            "not json"}) {
        writeFile(dir + "/defaults.json", bad);
        EXPECT_TRUE(T::load(defaults).empty()) << bad;
    }
}
