#include <gtest/gtest.h>

#include "core/AppPersistence.h"
#include "core/BrimvaleSettings.h"
#include "core/UserDefaults.h"
#include "foundation/FileIO.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {
const char* kRequired = R"("nodeModulesPermanent": false, "nodeModulesUntouchedDays": 30,
    "menuBarShowsFreeSpace": true, "launchAtLogin": false, "defaultFolderSchedule": "daily")";

BrimvaleSettings decode(const std::string& extra) {
    return BrimvaleSettings::fromJson(*parseJson("{" + std::string(kRequired) + extra + "}"));
}
} // namespace

TEST(Settings, LegacyKeysFillTheirSuccessors) {
    struct Case {
        const char* extra;
        bool alerts;
        LowSpaceUnit unit;
        bool either;
    };
    const Case cases[] = {
        {"", true, LowSpaceUnit::gigabytes, false},
        {R"(, "lowSpaceGigabytesEnabled": false, "lowSpacePercentEnabled": true)", true, LowSpaceUnit::percent, false},
        {R"(, "lowSpaceGigabytesEnabled": false, "lowSpacePercentEnabled": false)", false, LowSpaceUnit::gigabytes, false},
        {R"(, "lowSpaceGigabytesEnabled": true, "lowSpacePercentEnabled": true)", true, LowSpaceUnit::gigabytes, true},
        {R"(, "lowSpacePercentEnabled": false)", true, LowSpaceUnit::gigabytes, false},
        // Successors win over legacy keys.
        {R"(, "lowSpaceGigabytesEnabled": false, "lowSpacePercentEnabled": false, "alertsEnabled": true,
            "lowSpaceUnit": "percent", "alertWhenBelowEither": true)", true, LowSpaceUnit::percent, true},
    };
    for (const auto& c : cases) {
        const auto s = decode(c.extra);
        EXPECT_EQ(s.alertsEnabled, c.alerts) << c.extra;
        EXPECT_EQ(s.lowSpaceUnit, c.unit) << c.extra;
        EXPECT_EQ(s.alertWhenBelowEither, c.either) << c.extra;
    }
}

TEST(Settings, RequiredKeysAndDefaults) {
    EXPECT_EQ(decode(""), BrimvaleSettings{}) << "the required keys alone give the defaults";
    EXPECT_EQ(decode(R"(, "lowSpacePercent": 500)").lowSpacePercent, 500) << "decoding never clamps";
    for (const char* dropped : {"nodeModulesPermanent", "nodeModulesUntouchedDays", "menuBarShowsFreeSpace",
                                "launchAtLogin", "defaultFolderSchedule"}) {
        Json j = BrimvaleSettings{}.toJson();
        j.erase(dropped);
        EXPECT_THROW((void)BrimvaleSettings::fromJson(j), DecodeError) << dropped;
    }
    EXPECT_THROW((void)decode(R"(, "lowSpaceLastAlert": "last tuesday")"), DecodeError);
    EXPECT_THROW((void)decode(R"(, "lowSpaceUnit": "furlongs")"), DecodeError);
}

TEST(Settings, RoundTripsEveryField) {
    BrimvaleSettings s;
    s.nodeModulesPermanent = true;
    s.defaultFolderSchedule = CleanSchedule::weekly;
    s.lowSpaceUnit = LowSpaceUnit::percent;
    s.lowSpaceLastAlert = parseIsoDate("2026-11-15T22:16:00Z");
    s.seenCues = {"a", "b"};
    s.installationID = "X";
    s.lifetimeBytesFreed = 9'000'000'000;
    s.firstCleanupAt = parseIsoDate("2026-01-01T00:00:00Z");
    EXPECT_EQ(BrimvaleSettings::fromJson(*parseJson(encodeJson(s.toJson()))), s);
    const std::string text = encodeJson(s.toJson());
    EXPECT_NE(text.find("\"lowSpaceLastAlert\": \"2026-11-15T22:16:00Z\""), std::string::npos);
    EXPECT_EQ(text.find("tourCompletedAt"), std::string::npos) << "empty optionals are left out";
    EXPECT_EQ(text.find("lowSpaceGigabytesEnabled"), std::string::npos) << "legacy keys are never written";
}

TEST(Settings, SetterClamps) {
    const std::tuple<std::int64_t, std::int64_t, std::int64_t, std::int64_t> cases[] = {
        // input, gigabytes, percent, days
        {0, 1, 1, 1}, {-3, 1, 1, 1}, {5000, 2000, 99, 5000}, {40, 40, 40, 40}, {2000, 2000, 99, 2000}, {99, 99, 99, 99}};
    for (const auto& [in, gb, pct, days] : cases) {
        EXPECT_EQ(BrimvaleSettings::clampGigabytes(in), gb) << in;
        EXPECT_EQ(BrimvaleSettings::clampPercent(in), pct) << in;
        EXPECT_EQ(BrimvaleSettings::clampUntouchedDays(in), days) << in;
    }
}

TEST(Persistence, LiveFolderSavesLoadsAndKeepsCorruptCopies) {
    const AppPersistence store = AppPersistence::live();
    ASSERT_TRUE(store.directory());
    EXPECT_EQ(*store.directory(), test::TestEnvironment::root() + "/home/.local/share/Brimvale");
    store.saveJson("settings.json", BrimvaleSettings{}.toJson());
    EXPECT_TRUE(store.exists("settings.json"));
    EXPECT_EQ(store.load("settings.json", BrimvaleSettings::fromJson), BrimvaleSettings{});

    ASSERT_TRUE(writeFileAtomically(store.pathOf("rules-v2.json"), "{ not json"));
    EXPECT_FALSE(store.loadJson("rules-v2.json"));
    const auto now = *parseIsoDate("2026-11-15T22:16:00Z");
    EXPECT_EQ(AppPersistence::corruptCopyName("rules-v2.json", now), "rules-v2.corrupt-2026-11-15T22-16-00Z.json");
    store.preserveCorruptCopy("rules-v2.json", now);
    EXPECT_EQ(readWholeFile(store.pathOf("rules-v2.corrupt-2026-11-15T22-16-00Z.json")), "{ not json");
    EXPECT_TRUE(store.exists("rules-v2.json")) << "a copy, not a move";

    const AppPersistence none;
    none.saveJson("settings.json", Json::object());
    EXPECT_FALSE(none.loadJson("settings.json"));
    EXPECT_FALSE(none.exists("settings.json"));
}

TEST(Persistence, UnwritableFolderFailsSilently) {
    const AppPersistence store("/proc/brimvale-cannot-exist");
    store.saveJson("settings.json", Json::object()); // must not throw or crash
    EXPECT_FALSE(store.load("settings.json", BrimvaleSettings::fromJson));
}

TEST(UserDefaults, KeepsKeysApartAndSurvivesGarbage) {
    const std::string dir = test::TestEnvironment::freshFolder("defaults");
    UserDefaults d(dir + "/defaults.json");
    d.setValue("sidebarSelection", "space");
    d.setValue("spaceMapTimings.v1", Json::object({{"/", {{"bytes", 1}, {"files", 2}, {"seconds", 0.5}}}}));
    EXPECT_EQ(d.text("sidebarSelection"), "space");
    EXPECT_TRUE(d.value("spaceMapTimings.v1"));
    ASSERT_TRUE(writeFileAtomically(d.filePath(), "garbage"));
    EXPECT_FALSE(d.text("sidebarSelection"));
    d.setValue("sidebarSelection", "overview");
    EXPECT_EQ(d.text("sidebarSelection"), "overview");
}
