#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <map>
#include <sys/xattr.h>
#include <unistd.h>

#include "core/AppPersistence.h"
#include "foundation/CalendarContext.h"
#include "foundation/FileIO.h"
#include "sort/FileSample.h"
#include "sort/SortRuleJson.h"
#include "sort/SortRuleStore.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {

const TimePoint kNow = *parseIsoDate("2026-11-15T22:16:00Z");
const char* kID = "0F6B2C3A-1111-4222-8333-444455556666";

SortRule readRule(const std::string& json) { return sortRuleFromJson(*parseJson(json), kNow); }

SortRuleDocument readDocument(const std::string& json) { return SortRuleDocument::fromJson(*parseJson(json), kNow); }

void setTimes(const std::string& path, TimePoint modified) {
    const auto s = epochSeconds(modified);
    struct timespec times[2] = {{s, 0}, {s, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

} // namespace

TEST(SortRuleJson, RuleWithOnlyAnIdTakesEveryDefault) {
    SortRule expected;
    expected.id = *Uuid::parse(kID);
    expected.createdAt = kNow; // a missing date reads as the time of loading
    EXPECT_EQ(readRule(std::string(R"({"id":")") + kID + R"("})"), expected);
}

TEST(SortRuleJson, BadConditionsAreDroppedOneByOne) {
    const SortRule rule = readRule(std::string(R"({"id":")") + kID + R"(","conditions":[
        {"type":"fileExtension","value":"pdf"}, {"type":"colorLabel","value":"red"},
        {"type":"olderThanDays"}, {"type":"olderThanDays","days":"x"}, 7, {"type":"location","place":"moon"},
        {"type":"location","place":"desktop"}]})");
    ASSERT_EQ(rule.conditions.size(), 2u);
    EXPECT_EQ(rule.conditions[0], SortCondition::fileExtension("pdf"));
    EXPECT_EQ(rule.conditions[1], SortCondition::location(SortPlace::desktop));
    try {
        (void)sortConditionFromJson(*parseJson(R"({"type":"colorLabel","value":"red"})"));
        FAIL();
    } catch (const DecodeError& e) {
        EXPECT_STREQ(e.what(), "Unknown condition colorLabel");
    }
}

TEST(SortRuleJson, RoundTripAndOptionalKeys) {
    SortRule rule = defaultSortRule(kNow, CalendarContext("en_US", "Europe/Berlin"));
    rule.conditions.push_back(SortCondition::minimumBytes(9'000'000'000));
    rule.conditions.push_back(SortCondition::nameEquals("a \"b\""));
    Json json = toJson(rule);
    EXPECT_FALSE(json.contains("arrangedCount"));
    EXPECT_FALSE(json.contains("liveSince"));
    EXPECT_FALSE(json.contains("lastArranged"));
    EXPECT_EQ(json["nextRun"], "2026-11-16T22:16:00Z");
    EXPECT_EQ(json["trigger"], (Json{{"type", "schedule"}, {"schedule", "daily"}}));
    EXPECT_EQ(json["conditions"][3], (Json{{"type", "olderThanDays"}, {"days", 7}}));
    EXPECT_EQ(json["conditions"][4], (Json{{"type", "location"}, {"place", "downloads"}}));
    EXPECT_EQ(json["conditions"][5], (Json{{"type", "minimumBytes"}, {"bytes", 9'000'000'000}}));
    EXPECT_EQ(sortRuleFromJson(json, kNow + std::chrono::hours(5)), rule);

    rule.arrangedCount = 1;
    rule.kind = SortRuleKind::arrange;
    rule.liveSince = kNow;
    rule.lastArranged = ArrangeMove{"a.pdf", kNow};
    rule.action = SortAction::rename("{date}");
    rule.trigger = SortTrigger::whenAdded();
    json = toJson(rule);
    EXPECT_EQ(json["arrangedCount"], 1);
    EXPECT_EQ(json["lastArranged"], (Json{{"fileName", "a.pdf"}, {"date", "2026-11-15T22:16:00Z"}}));
    EXPECT_EQ(json["action"], (Json{{"type", "rename"}, {"pattern", "{date}"}}));
    EXPECT_EQ(sortRuleFromJson(json, kNow), rule);
}

TEST(SortRuleJson, WhatFailsARule) {
    for (const char* bad : {R"({"name":"x"})", R"({"id":"not-a-uuid"})", R"({"id":"%s","match":"some"})",
                            R"({"id":"%s","action":{"type":"shred"}})", R"({"id":"%s","trigger":{"type":"schedule","schedule":"yearly"}})",
                            R"({"id":"%s","createdAt":"yesterday"})", R"({"id":"%s","conditions":{}})",
                            R"({"id":"%s","lastArranged":{"fileName":"a"}})", R"({"id":"%s","action":{"type":"moveToFolder"}})"}) {
        std::string text = bad;
        if (auto at = text.find("%s"); at != std::string::npos) text.replace(at, 2, kID);
        EXPECT_ANY_THROW((void)readRule(text)) << text;
    }
    // An unknown kind reads as sort rather than failing.
    EXPECT_EQ(readRule(std::string(R"({"id":")") + kID + R"(","kind":"later"})").kind, SortRuleKind::sort);
}

TEST(SortRuleJson, KindIsInferredForOldPatterns) {
    const auto rule = [](const char* phrase) {
        return std::string(R"({"id":")") + kID + R"(","phrase":")" + phrase +
               R"(","trigger":{"type":"whenAdded"},"action":{"type":"moveToFolder","path":"/home/u/VK"},
               "conditions":[{"type":"nameStartsWith","value":"vk-"},{"type":"location","place":"downloads"}]})";
    };
    EXPECT_EQ(readRule(rule("move vk-* files")).kind, SortRuleKind::arrange);
    EXPECT_EQ(readRule(rule("move vk-* file")).kind, SortRuleKind::sort);
    EXPECT_EQ(readRule(rule("move *vk- files")).kind, SortRuleKind::sort);

    SortRule ending;
    ending.phrase = "move *-sk files";
    ending.trigger = SortTrigger::whenAdded();
    ending.action = SortAction::moveToFolder("/x");
    ending.conditions = {SortCondition::location(SortPlace::downloads), SortCondition::nameEndsWith("-sk")};
    EXPECT_TRUE(looksLikeArrangePattern(ending));
    ending.action = SortAction::moveToFolder("");
    EXPECT_FALSE(looksLikeArrangePattern(ending));
    ending.action = SortAction::moveToFolder("/x");
    ending.conditions.push_back(SortCondition::olderThanDays(3));
    EXPECT_FALSE(looksLikeArrangePattern(ending));
}

TEST(SortRuleJson, DocumentVersions) {
    const std::string rules = std::string(R"([{"id":")") + kID + R"("}])";
    EXPECT_TRUE(readDocument(R"({"version":0,"rules":)" + rules + "}").rules.empty());
    EXPECT_TRUE(readDocument(R"({"version":-3,"rules":"not even a list"})").rules.empty());
    EXPECT_EQ(readDocument(R"({"rules":)" + rules + "}").version, 1);
    EXPECT_EQ(readDocument(R"({"rules":)" + rules + "}").rules.size(), 1u);
    EXPECT_EQ(readDocument(R"({"version":7,"rules":)" + rules + "}").rules.size(), 1u);
    EXPECT_ANY_THROW((void)readDocument(R"({"version":1,"rules":[{"id":"bad"}]})"));
    EXPECT_ANY_THROW((void)readDocument(R"({"version":1})"));
    EXPECT_EQ((SortRuleDocument{5, {}}.toJson()["version"]), 1);
}

TEST(SortRule, ValidationAndSummaries) {
    SortRule rule;
    rule.conditions = {SortCondition::location(SortPlace::downloads)};
    EXPECT_EQ(rule.validationMessage(), "Say which files, with an extension, a name, or a kind.");
    rule.conditions.push_back(SortCondition::kindIs("pdf"));
    rule.action = SortAction::moveToFolder("");
    EXPECT_EQ(rule.validationMessage(), "Choose a folder to move the files to.");
    rule.action = SortAction::rename(" \n ");
    EXPECT_EQ(rule.validationMessage(), "Give the rename a pattern, such as {date}-{name}.");
    rule.action = SortAction::trash();
    rule.conditions.push_back(SortCondition::olderThanDays(0));
    EXPECT_EQ(rule.validationMessage(), "Delete rules need an age, for example \u201Colder than 7 days\u201D.");
    EXPECT_FALSE(rule.hasAge());
    rule.conditions.push_back(SortCondition::olderThanDays(1));
    EXPECT_TRUE(rule.hasAge());
    EXPECT_FALSE(rule.validationMessage());
    EXPECT_FALSE(rule.destinationName());

    rule.action = SortAction::moveToFolder("/home/u/Invoices/");
    EXPECT_EQ(rule.destinationName(), "Invoices");
    EXPECT_EQ(rule.plainSummary(), "All of \u00B7 Move to Invoices \u00B7 When you run it");
    rule.conditions.clear();
    rule.match = MatchMode::any;
    rule.action = SortAction::rename("{name}");
    rule.trigger = SortTrigger::scheduled(CleanSchedule::weekly);
    EXPECT_EQ(rule.plainSummary(), "Any of \u00B7 no conditions \u00B7 Rename \u00B7 Weekly");
    EXPECT_EQ(SortAction::rename("{name}").displayText(), "Rename to {name}");
    EXPECT_EQ(SortAction::moveToFolder("").displayText(), "Move to a folder");
}

TEST(SortRuleStore, LoadsConvertsAndPreservesACorruptFile) {
    const AppPersistence store(test::TestEnvironment::freshFolder("rules"));
    // Nothing on disk: no rules, nothing written.
    auto loaded = loadSortRuleFiles(store, kNow);
    EXPECT_TRUE(loaded.sortRules.empty());
    EXPECT_FALSE(store.exists("rules-v2.json"));

    test::writeFile(store.pathOf("rules.json"), std::string(R"([{"id":")") + kID + R"(","phrase":"put JPEGs in this folder only",
        "action":"keepInFolder","extensions":["jpeg","jpg"],"destinationPath":"/home/u/Pictures","destinationBookmark":"AAEC",
        "isEnabled":false,"createdAt":"2026-01-02T03:04:05Z"}])");
    test::writeFile(store.pathOf("rules-v2.json"), "{\"version\": 1, \"rules\": [");
    loaded = loadSortRuleFiles(store, kNow);
    ASSERT_EQ(loaded.cleanupRules.size(), 1u);
    EXPECT_EQ(loaded.cleanupRules[0].destinationBookmark, std::string("\x00\x01\x02", 3));
    ASSERT_EQ(loaded.sortRules.size(), 1u);
    const SortRule& converted = loaded.sortRules[0];
    EXPECT_EQ(converted.action, SortAction::moveToFolder("/home/u/Pictures"));
    EXPECT_EQ(converted.trigger, SortTrigger::whenAdded());
    EXPECT_FALSE(converted.isEnabled);
    EXPECT_EQ(converted.conditions.size(), 3u);
    // The unreadable file was copied aside, then replaced by the converted list.
    EXPECT_EQ(readWholeFile(store.pathOf("rules-v2.corrupt-2026-11-15T22-16-00Z.json")), "{\"version\": 1, \"rules\": [");
    auto again = loadSortRuleFiles(store, kNow + std::chrono::hours(1));
    EXPECT_EQ(again.sortRules, loaded.sortRules);

    // Saving writes every rule to the new file and only the sayable sort rules to the old one,
    // keeping the bookmark that the older list held.
    std::vector<SortRule> rules = loaded.sortRules;
    SortRule arrange = converted;
    arrange.id = Uuid::generate();
    arrange.kind = SortRuleKind::arrange;
    SortRule zip = converted;
    zip.id = Uuid::generate();
    zip.action = SortAction::archive();
    rules.push_back(arrange);
    rules.push_back(zip);
    saveSortRuleFiles(store, rules, loaded.cleanupRules);
    auto saved = loadSortRuleFiles(store, kNow);
    EXPECT_EQ(saved.sortRules.size(), 3u);
    ASSERT_EQ(saved.cleanupRules.size(), 1u);
    EXPECT_EQ(saved.cleanupRules[0], loaded.cleanupRules[0]);
}

TEST(SortRuleStore, ConversionBack) {
    SortRule rule;
    rule.phrase = "Move PDFs ONLY";
    rule.conditions = {SortCondition::fileExtension("PDF"), SortCondition::fileExtension("a"),
                       SortCondition::location(SortPlace::downloads)};
    rule.action = SortAction::moveToFolder("/d");
    auto back = cleanupRuleFromSortRule(rule, std::nullopt);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->action, RuleAction::keepInFolder);
    EXPECT_EQ(back->extensions, (std::vector<std::string>{"a", "pdf"}));
    EXPECT_EQ(back->destinationPath, "/d");

    const auto refused = [&](auto change) {
        SortRule r = rule;
        change(r);
        return !cleanupRuleFromSortRule(r, std::nullopt);
    };
    EXPECT_TRUE(refused([](SortRule& r) { r.conditions.push_back(SortCondition::kindIs("pdf")); }));
    EXPECT_TRUE(refused([](SortRule& r) { r.conditions.back() = SortCondition::location(SortPlace::desktop); }));
    EXPECT_TRUE(refused([](SortRule& r) { r.match = MatchMode::any; }));
    EXPECT_TRUE(refused([](SortRule& r) { r.kind = SortRuleKind::arrange; }));
    EXPECT_TRUE(refused([](SortRule& r) { r.action = SortAction::trash(); }));
    EXPECT_TRUE(refused([](SortRule& r) { r.action = SortAction::rename("x"); }));
    EXPECT_TRUE(refused([](SortRule& r) { r.conditions = {SortCondition::location(SortPlace::downloads)}; }));
    EXPECT_TRUE(refused([](SortRule& r) {
        r.conditions.push_back(SortCondition::nameStartsWith("a"));
        r.conditions.push_back(SortCondition::nameStartsWith("b"));
    }));
    EXPECT_FALSE(refused([](SortRule& r) {
        r.action = SortAction::trash();
        r.conditions.push_back(SortCondition::olderThanDays(1));
    }));
}

TEST(SortRuleStore, SeedingHappensOnce) {
    const CalendarContext calendar("en_US", "Europe/Berlin");
    BrimvaleSettings settings;
    std::vector<SortRule> rules;
    auto outcome = seedDefaultSortRule(settings, rules, kNow, calendar);
    EXPECT_TRUE(outcome.settingsChanged && outcome.rulesChanged);
    ASSERT_EQ(rules.size(), 1u);
    EXPECT_EQ(rules[0].id.text(), "D3A1D3A1-0000-4000-8000-000000000D36");
    // Deleted by the user: it stays gone.
    rules.clear();
    outcome = seedDefaultSortRule(settings, rules, kNow, calendar);
    EXPECT_FALSE(outcome.settingsChanged || outcome.rulesChanged);
    EXPECT_TRUE(rules.empty());

    // A user who already trashes dmg files gets no second rule, but the flag is still set.
    BrimvaleSettings fresh;
    SortRule own;
    own.action = SortAction::trash();
    own.conditions = {SortCondition::fileExtension("dmg")};
    rules = {own};
    outcome = seedDefaultSortRule(fresh, rules, kNow, calendar);
    EXPECT_TRUE(outcome.settingsChanged);
    EXPECT_FALSE(outcome.rulesChanged);
    EXPECT_TRUE(fresh.didSeedDefaultRules);
    EXPECT_EQ(rules.size(), 1u);
    // "DMG" is not "dmg": the comparison is exact.
    BrimvaleSettings third;
    rules[0].conditions = {SortCondition::fileExtension("DMG")};
    EXPECT_TRUE(seedDefaultSortRule(third, rules, kNow, calendar).rulesChanged);
}

TEST(FileSample, GathersWhatIsSettled) {
    const std::string dir = test::TestEnvironment::freshFolder("Downloads");
    const TimePoint now = Clock::now();
    const auto old = now - std::chrono::hours(1);
    test::writeSizedFile(dir + "/report é.pdf", 1234);
    setTimes(dir + "/report é.pdf", old);
    // Partial downloads wait however old they are; other files once a minute has passed.
    const std::pair<const char*, TimePoint> plain[] = {{"movie.crdownload", old - std::chrono::hours(100)},
        {"Half.PART", old}, {"fresh.txt", now - std::chrono::seconds(59)}, {"settled.txt", now - std::chrono::seconds(60)}};
    for (const auto& [name, modified] : plain) {
        test::writeFile(dir + "/" + name, "x");
        setTimes(dir + "/" + name, modified);
    }
    test::writeFile(dir + "/.hidden", "x");
    test::makeDir(dir + "/Tool.app/Contents");
    setTimes(dir + "/Tool.app", old); // a bundle counts as a file, so it must settle too
    test::makeDir(dir + "/Folder");
    ASSERT_EQ(::symlink((dir + "/report é.pdf").c_str(), (dir + "/link.pdf").c_str()), 0);
    const std::string url = "https://example.com/report.pdf";
    const bool xattrs = ::setxattr((dir + "/report é.pdf").c_str(), "user.xdg.origin.url", url.data(), url.size(), 0) == 0;

    auto samples = gatherSamples(dir, SortPlace::downloads, false, now);
    std::map<std::string, FileSample> byName;
    for (auto& s : samples) byName[s.name] = s;
    EXPECT_EQ(byName.size(), 4u);
    for (const char* absent : {"movie.crdownload", "Half.PART", "fresh.txt", ".hidden", "link.pdf"})
        EXPECT_FALSE(byName.count(absent)) << absent;
    ASSERT_TRUE(byName.count("report é.pdf"));
    const FileSample& report = byName["report é.pdf"];
    EXPECT_EQ(report.size, 1234);
    EXPECT_EQ(report.path, dir + "/report é.pdf");
    EXPECT_FALSE(report.isDirectory);
    EXPECT_TRUE(report.added.has_value());
    EXPECT_EQ(epochSeconds(*report.modified), epochSeconds(old));
    if (xattrs) {
        EXPECT_EQ(report.whereFroms, std::vector<std::string>{url});
    } else {
        GTEST_LOG_(INFO) << "this file system takes no user extended attributes; origin check skipped";
    }
    EXPECT_FALSE(byName["Tool.app"].isDirectory) << "an app bundle counts as a file";
    EXPECT_TRUE(byName["Folder"].isDirectory);
    EXPECT_EQ(byName["Folder"].size, 0);
    EXPECT_TRUE(byName.count("settled.txt"));

    samples = gatherSamples(dir, SortPlace::desktop, true, now);
    EXPECT_EQ(samples.size(), 7u);
    for (const auto& s : samples) EXPECT_EQ(s.location, SortPlace::desktop);
    EXPECT_TRUE(gatherSamples(dir + "/missing", SortPlace::downloads, false, now).empty());
    EXPECT_TRUE(readWhereFroms(dir + "/missing").empty());
}
