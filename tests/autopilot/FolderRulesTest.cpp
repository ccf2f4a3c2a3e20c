#include <gtest/gtest.h>

#include "autopilot/FolderRuleDraft.h"
#include "autopilot/FolderRuleParser.h"
#include "autopilot/FolderWatchRule.h"
#include "autopilot/ScheduleDates.h"
#include "foundation/CalendarContext.h"
#include "foundation/FileIO.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {

const CalendarContext kBerlin("en_US", "Europe/Berlin");

TimePoint at(const char* iso) { return *parseIsoDate(iso); }

const char* kRuleJson = R"({"id":"6f1c3b2a-0000-4000-8000-00000000abcd","parentPath":"/home/u/Projects","phrase":"",
  "names":["build"],"extensions":[],"directoriesOnly":true,"scope":"recursive","disposition":"trash",
  "schedule":"daily","isEnabled":true,"createdAt":"2026-11-01T10:00:00Z"})";

} // namespace

TEST(FolderRuleParser, Shapes) {
    struct Case {
        const char* phrase;
        bool parses;
        std::vector<std::string> names = {};
        std::vector<std::string> extensions = {};
        std::optional<std::int64_t> age = std::nullopt;
        std::optional<std::int64_t> keep = std::nullopt;
        bool directoriesOnly = false;
        FolderScope scope = FolderScope::children;
        const char* interpretation = "";
    };
    const Case cases[] = {
        {"delete everything except the newest 0", false},
        {"keep the newest 3", true, {}, {}, {}, 3, false, FolderScope::children,
         "Delete everything inside except the newest 3."},
        {"Delete everything EXCEPT THE NEWEST 5 older than 3 days", true, {}, {}, {}, 5, false, FolderScope::children,
         "Delete everything inside except the newest 5."},
        {"delete *.log older than 14 days", true, {}, {"log"}, 14, {}, false, FolderScope::recursive,
         "Delete *.log older than 14 days."},
        {"delete *.LOG, *.Tmp and *.", true, {}, {"log", "tmp"}, {}, {}, false, FolderScope::recursive,
         "Delete *.log, *.tmp."},
        {"delete subfolders named build, dist and out older than 30 days", true, {"build", "dist", "out"}, {}, 30, {},
         true, FolderScope::recursive, "Delete subfolders named build, dist, out older than 30 days."},
        {"subfolders named DerivedData", true, {"DerivedData"}, {}, {}, {}, true, FolderScope::recursive,
         "Delete subfolders named DerivedData."},
        {"delete folders named node_modules that are 1 day old", true, {"node_modules"}, {}, 1, {}, true,
         FolderScope::recursive, "Delete subfolders named node_modules older than 1 day."},
        {"delete directories named , and , ,and weekly", false},
        {"delete folders named a/b, c AND d, when full", true, {"a/b", "c AND d"}, {}, {}, {}, true, FolderScope::recursive,
         "Delete subfolders named a/b, c AND d."},
        {"delete files older than 0 days", false},
        {"delete folders older than 7 days", false},
        {"delete files older than 7 days", true, {}, {}, 7, {}, false, FolderScope::children,
         "Delete files older than 7 days."},
        {"remove files after 0 days 2 days old", true, {}, {}, 2, {}, false, FolderScope::children,
         "Delete files older than 2 days."},
        {"files 3 days old", false},
        {"", false},
        {"   ", false},
    };
    for (const auto& c : cases) {
        const auto r = FolderRuleParser::parse(c.phrase);
        ASSERT_EQ(r.has_value(), c.parses) << c.phrase;
        if (!r) continue;
        EXPECT_EQ(r->names, c.names) << c.phrase;
        EXPECT_EQ(r->extensions, c.extensions) << c.phrase;
        EXPECT_EQ(r->minimumAgeDays, c.age) << c.phrase;
        EXPECT_EQ(r->keepNewest, c.keep) << c.phrase;
        EXPECT_EQ(r->directoriesOnly, c.directoriesOnly) << c.phrase;
        EXPECT_EQ(r->suggestedScope, c.scope) << c.phrase;
        EXPECT_EQ(r->interpretation, c.interpretation) << c.phrase;
        EXPECT_FALSE(r->glob);
    }
}

TEST(FolderRuleParser, Summary) {
    FolderWatchRule rule;
    EXPECT_EQ(FolderRuleParser::summary({}, {}, rule), "Clean this folder.");
    rule.minimumAgeDays = 1;
    EXPECT_EQ(FolderRuleParser::summary({}, {}, rule), "Delete files older than 1 days.");
    EXPECT_EQ(FolderRuleParser::summary({"a", "b"}, {}, rule), "Delete subfolders named a, b.");
    EXPECT_EQ(FolderRuleParser::summary({"a"}, {"log", "tmp"}, rule), "Delete *.log, *.tmp older than 1 days.");
    rule.minimumAgeDays.reset();
    EXPECT_EQ(FolderRuleParser::summary({"a"}, {"log"}, rule), "Delete *.log.");
    rule.keepNewest = 4;
    EXPECT_EQ(FolderRuleParser::summary({"a"}, {"log"}, rule), "Delete everything except the newest 4.");
}

TEST(FolderWatchRule, ReadsWritesAndRefuses) {
    FolderWatchRule rule = FolderWatchRule::fromJson(*parseJson(kRuleJson));
    EXPECT_EQ(rule.id.text(), "6F1C3B2A-0000-4000-8000-00000000ABCD");
    EXPECT_FALSE(rule.confirmedCount) << "a rule without a confirmed count reads fine";
    EXPECT_EQ(FolderWatchRule::fromJson(rule.toJson()), rule);
    Json json = rule.toJson();
    for (const char* key : {"parentBookmark", "glob", "minimumAgeDays", "keepNewest", "nextRun", "confirmedCount",
                            "confirmedBytes"})
        EXPECT_FALSE(json.contains(key)) << key;

    rule.parentBookmark = std::string("\x01\x02", 2);
    rule.glob = "*.o?";
    rule.minimumAgeDays = 3;
    rule.keepNewest = 2;
    rule.nextRun = at("2026-11-02T10:00:00Z");
    rule.confirmedCount = 12;
    rule.confirmedBytes = 9'000'000'000;
    rule.disposition = CleanupDisposition::permanent;
    rule.scope = FolderScope::children;
    json = rule.toJson();
    EXPECT_EQ(json["parentBookmark"], "AQI=");
    EXPECT_EQ(json["disposition"], "permanent");
    EXPECT_EQ(FolderWatchRule::fromJson(json), rule);

    for (const char* key : {"names", "extensions", "scope", "disposition", "isEnabled", "createdAt", "phrase"}) {
        Json missing = *parseJson(kRuleJson);
        missing.erase(key);
        EXPECT_THROW((void)FolderWatchRule::fromJson(missing), DecodeError) << key;
    }
    Json bad = *parseJson(kRuleJson);
    bad["schedule"] = "yearly";
    EXPECT_THROW((void)FolderWatchRule::fromJson(bad), DecodeError);
}

TEST(FolderWatchRule, FileFallsBackToEmpty) {
    const AppPersistence store(test::TestEnvironment::freshFolder("folder-rules"));
    EXPECT_TRUE(loadFolderRules(store).empty());
    test::writeFile(store.pathOf("folder-rules.json"), std::string("[") + kRuleJson + ", {\"id\": 1}]");
    EXPECT_TRUE(loadFolderRules(store).empty());
    std::vector<FolderWatchRule> rules{FolderWatchRule::fromJson(*parseJson(kRuleJson))};
    saveFolderRules(store, rules);
    EXPECT_EQ(loadFolderRules(store), rules);
}

TEST(FolderWatchRule, DetailLines) {
    FolderWatchRule rule = FolderWatchRule::fromJson(*parseJson(kRuleJson));
    EXPECT_EQ(rule.detailLines(), (std::vector<std::string>{"Include subfolders", "Trash", "build", "Daily"}));
    rule.names = {"a", "b"};
    rule.extensions = {"log", "tmp"};
    rule.glob = "x-*";
    rule.minimumAgeDays = 1;
    rule.keepNewest = 3;
    rule.scope = FolderScope::children;
    rule.disposition = CleanupDisposition::permanent;
    rule.schedule = CleanSchedule::off;
    EXPECT_EQ(rule.detailLines(), (std::vector<std::string>{"Direct children", "Permanent", "a, b", "*.log, *.tmp", "x-*",
                                                            "after 1 days", "keep newest 3", "Off"}));
}

TEST(ScheduleDates, NextDateKeepsTheHourAcrossDaylightSaving) {
    // Berlin leaves summer time on 25 October 2026.
    const TimePoint before = at("2026-10-24T07:30:00Z"); // 09:30 local
    EXPECT_FALSE(nextDate(CleanSchedule::off, before, kBerlin));
    EXPECT_EQ(*nextDate(CleanSchedule::hourly, before, kBerlin), before + std::chrono::hours(1));
    EXPECT_EQ(*nextDate(CleanSchedule::daily, before, kBerlin), at("2026-10-25T08:30:00Z"));
    EXPECT_EQ(*nextDate(CleanSchedule::weekly, before, kBerlin), at("2026-10-31T08:30:00Z"));
}

TEST(ScheduleDates, NextAutoCleanLine) {
    const TimePoint now = at("2026-11-15T06:00:00Z"); // 07:00 in Berlin
    FolderWatchRule rule = FolderWatchRule::fromJson(*parseJson(kRuleJson));
    EXPECT_EQ(nextAutoCleanText({rule}, now, kBerlin), "Automatic cleanup is off");
    rule.nextRun = at("2026-11-15T07:05:00Z"); // 08:05 this morning: still "tonight"
    FolderWatchRule later = rule;
    later.nextRun = at("2026-11-15T05:00:00Z");
    later.isEnabled = false;
    const std::string tonight = nextAutoCleanText({rule, later}, now, kBerlin);
    EXPECT_EQ(tonight.rfind("Next auto-clean tonight 8:05", 0), 0u) << tonight;
    rule.nextRun = at("2026-11-16T22:30:00Z"); // 23:30 tomorrow
    EXPECT_EQ(nextAutoCleanText({rule}, now, kBerlin).rfind("Next auto-clean tomorrow 11:30", 0), 0u);
    rule.nextRun = at("2026-11-20T09:00:00Z");
    const std::string far = nextAutoCleanText({rule}, now, kBerlin);
    EXPECT_EQ(far.rfind("Next auto-clean Nov 20 10:00", 0), 0u) << far;
}

TEST(FolderRuleDraft, FreshValuesAndChecks) {
    FolderRuleDraft draft = FolderRuleDraft::fresh(CleanSchedule::weekly);
    EXPECT_EQ(draft.names(), (std::vector<std::string>{"build", "dist", ".next", "target", "DerivedData"}));
    EXPECT_EQ(draft.minimumAgeDays, 7);
    EXPECT_EQ(draft.keepNewest, 5);
    EXPECT_TRUE(draft.directoriesOnly);
    EXPECT_EQ(draft.scope, FolderScope::recursive);
    EXPECT_EQ(draft.schedule, CleanSchedule::weekly);
    EXPECT_EQ(FolderRuleDraft::fresh().schedule, CleanSchedule::daily);

    const std::string home = test::TestEnvironment::root() + "/home";
    EXPECT_EQ(previewCheckMessage(draft, home), "Choose a folder first.");
    EXPECT_EQ(directPreviewCheckMessage(draft, home),
              "Choose a folder and what to remove, such as a name, a file type, or an age.");
    draft.parentPath = home + "/Projects/app";
    draft.namesText = " , ,";
    EXPECT_EQ(previewCheckMessage(draft, home), "Say what to remove: a name, a file type, or an age.");
    draft.extensionsText = "*.LOG, .tmp, *.";
    EXPECT_EQ(draft.extensions(), (std::vector<std::string>{"log", "tmp"}));
    EXPECT_FALSE(previewCheckMessage(draft, home));
    draft.parentPath = home;
    EXPECT_EQ(previewCheckMessage(draft, home), "That folder is kept safe. Pick a project folder instead.");
    EXPECT_EQ(directPreviewCheckMessage(draft, home), "That folder is kept safe. Pick a project folder, then preview again.");

    draft.apply(*FolderRuleParser::parse("keep the newest 2"));
    EXPECT_TRUE(draft.useKeepNewest);
    EXPECT_EQ(draft.keepNewest, 2);
    EXPECT_TRUE(draft.names().empty());
    EXPECT_FALSE(draft.useAge);
    EXPECT_EQ(draft.scope, FolderScope::children);
}
