#include <gtest/gtest.h>

#include "core/AppModel.h"
#include "platform/XdgPaths.h"
#include "space/FolderMeasure.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spinUntil;
using namespace std::chrono_literals;

namespace {

const TimePoint kStart = *parseIsoDate("2026-11-22T08:00:00Z");
constexpr std::int64_t kTotal = 500'000'000'000;

VolumeSnapshot volume(TimePoint at, std::int64_t freeBytes) { return {at, "Test Disk", kTotal, freeBytes}; }

// The survey on the temporary home, with the system places left out so the test reads
// only what it built.
SurveyPlaces tempHomePlaces() {
    SurveyPlaces places = SurveyPlaces::current();
    places.apps = {places.home + "/Applications"};
    places.coverage = StorageSurvey::coveragePlaces(places.trash);
    places.coverage.resize(1); // the Trash alone
    return places;
}

struct Fixture {
    AppModel model{true};
    TimePoint now = kStart;

    Fixture() {
        test::writeSizedFile(XdgPaths::downloads() + "/movie.mkv", 2'000'000);
        test::writeSizedFile(XdgPaths::home() + "/Applications/tool.AppImage", 300'000);
        model.setNow([this] { return now; });
        model.setSurveyPlaces(tempHomePlaces);
    }

    // A reading arrives and, as after every refresh, a plain survey request follows it.
    bool readVolumeAndSettle(std::int64_t freeBytes) {
        model.applySnapshot(volume(now, freeBytes));
        model.surveyStorage(false);
        return spinUntil([&] { return !model.storageScanning() && model.lastStorageSurvey(); });
    }
};

std::int64_t segment(const AppModel& model, const std::string& id) {
    for (const auto& s : model.storageSegments())
        if (s.id == id) return s.bytes;
    return -1;
}

} // namespace

TEST(StorageSurveyModel, APlainSurveyWaitsFifteenMinutesAndOnlyRedrawsTheBarMeanwhile) {
    struct Case {
        std::chrono::seconds after;
        bool measuresAgain;
    };
    for (const Case c : {Case{899s, false}, Case{900s, true}}) {
        Fixture f;
        EXPECT_TRUE(f.model.storageSegments().empty());
        ASSERT_TRUE(f.readVolumeAndSettle(100'000'000'000));
        const Uuid firstSurvey = f.model.storageSurveyToken();
        // The first survey measured the temporary home for real.
        ASSERT_EQ(f.model.storageSegments().size(), 6u);
        EXPECT_EQ(segment(f.model, "downloads"), FolderMeasure::bytes(XdgPaths::downloads()));
        EXPECT_EQ(segment(f.model, "apps"), FolderMeasure::bytes(XdgPaths::home() + "/Applications"));
        std::int64_t whole = 0;
        for (const auto& s : f.model.storageSegments()) whole += s.bytes;
        EXPECT_EQ(whole, kTotal) << "other takes up exactly what the known folders leave";
        ASSERT_FALSE(f.model.topFolders().empty());
        EXPECT_EQ(f.model.topFolders().front().id, "downloads");
        EXPECT_TRUE(f.model.coverageItems().empty()) << "an empty Trash has no row";
        EXPECT_TRUE(f.model.surveyStatus().isEmpty());

        f.now = kStart + c.after;
        f.model.applySnapshot(volume(f.now, 90'000'000'000));
        f.model.surveyStorage(false);
        EXPECT_EQ(f.model.storageSurveyToken() != firstSurvey, c.measuresAgain) << c.after.count();
        ASSERT_TRUE(spinUntil([&] { return !f.model.storageScanning(); }));
        EXPECT_EQ(segment(f.model, "free"), 90'000'000'000) << "the bar follows the new reading either way";
        EXPECT_EQ(f.model.lastStorageSurvey(), c.measuresAgain ? f.now : kStart) << c.after.count();
    }
}

TEST(StorageSurveyModel, APlainRequestLeavesARunningSurveyAloneAndAForcedOneStartsOver) {
    Fixture f;
    f.model.surveyStorage(true);
    const Uuid first = f.model.storageSurveyToken();
    f.model.surveyStorage(false); // a plain request leaves the running survey alone
    EXPECT_EQ(f.model.storageSurveyToken(), first);
    f.now = kStart + 5s;
    f.model.surveyStorage(true);
    EXPECT_NE(f.model.storageSurveyToken(), first);
    ASSERT_TRUE(spinUntil([&] { return !f.model.storageScanning(); }));
    EXPECT_EQ(f.model.lastStorageSurvey(), kStart + 5s);
    EXPECT_EQ(f.model.storageSegments().size(), 6u);
}
