#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "model/AppModel.h"
#include "space/qt/StorageSurveyModel.h"
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
    StorageSurveyModel& s = *model.room<StorageSurveyModel>();
    QAbstractItemModelTester topTester{s.topFoldersModel(), QAbstractItemModelTester::FailureReportingMode::Fatal};
    QAbstractItemModelTester coverageTester{s.coverageModel(), QAbstractItemModelTester::FailureReportingMode::Fatal};
    TimePoint now = kStart;

    Fixture() {
        test::writeSizedFile(XdgPaths::downloads() + "/movie.mkv", 2'000'000);
        test::writeSizedFile(XdgPaths::home() + "/Applications/tool.AppImage", 300'000);
        model.setNow([this] { return now; });
        s.setPlaces(tempHomePlaces);
    }

    // A reading arrives and, as after every refresh, a plain survey request follows it.
    bool readVolumeAndSettle(std::int64_t freeBytes) {
        model.applySnapshot(volume(now, freeBytes));
        s.survey(false);
        return spinUntil([&] { return !s.scanning() && s.lastSurvey(); });
    }
};

std::int64_t segment(const StorageSurveyModel& survey, const std::string& id) {
    for (const auto& s : survey.segments())
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
        EXPECT_TRUE(f.s.segments().empty());
        ASSERT_TRUE(f.readVolumeAndSettle(100'000'000'000));
        const Uuid firstSurvey = f.s.token();
        // The first survey measured the temporary home for real.
        ASSERT_EQ(f.s.segments().size(), 6u);
        EXPECT_EQ(segment(f.s, "downloads"), FolderMeasure::bytes(XdgPaths::downloads()));
        EXPECT_EQ(segment(f.s, "apps"), FolderMeasure::bytes(XdgPaths::home() + "/Applications"));
        ASSERT_FALSE(f.s.topFolders().empty());
        EXPECT_EQ(f.s.topFolders().front().id, "downloads");
        EXPECT_TRUE(f.s.coverageItems().empty()) << "an empty Trash has no row";
        EXPECT_TRUE(f.s.status().isEmpty());

        f.now = kStart + c.after;
        QSignalSpy topReset(f.s.topFoldersModel(), &QAbstractItemModel::modelReset);
        f.model.applySnapshot(volume(f.now, 90'000'000'000));
        f.s.survey(false);
        EXPECT_EQ(f.s.token() != firstSurvey, c.measuresAgain) << c.after.count();
        ASSERT_TRUE(spinUntil([&] { return !f.s.scanning(); }));
        EXPECT_EQ(segment(f.s, "free"), 90'000'000'000) << "the bar follows the new reading either way";
        EXPECT_EQ(f.s.lastSurvey(), c.measuresAgain ? f.now : kStart) << c.after.count();
        EXPECT_EQ(topReset.count(), 0) << "the same folders again leave the list alone";
    }
}

TEST(StorageSurveyModel, APlainRequestLeavesARunningSurveyAloneAndAForcedOneStartsOver) {
    Fixture f;
    f.s.survey(true);
    const Uuid first = f.s.token();
    f.s.survey(false); // a plain request leaves the running survey alone
    EXPECT_EQ(f.s.token(), first);
    f.now = kStart + 5s;
    f.s.survey(true);
    EXPECT_NE(f.s.token(), first);
    ASSERT_TRUE(spinUntil([&] { return !f.s.scanning(); }));
    EXPECT_EQ(f.s.lastSurvey(), kStart + 5s);
    EXPECT_EQ(f.s.segments().size(), 6u);
}
