#include <gtest/gtest.h>
#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "autopilot/AutopilotRun.h"
#include "autopilot/FolderCandidates.h"
#include "autopilot/FolderRuleSaving.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "space/SpaceFixtures.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

const TimePoint kNow = fromEpochSeconds(1795000000);
const CalendarContext kBerlin("en_US", "Europe/Berlin");

void setModified(const std::string& path, std::int64_t secondsBeforeNow) {
    const timespec t{epochSeconds(kNow) - secondsBeforeNow, 0};
    const timespec times[2] = {t, t};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

// A folder of its own under the test home, where folder rules may work.
std::string ruleFolder() {
    static int n = 0;
    const std::string dir = XdgPaths::home() + "/code/app-" + std::to_string(++n);
    makeDir(dir);
    return dir;
}

FolderWatchRule ruleFor(const std::string& folder, const char* sentence) {
    FolderRuleDraft draft = FolderRuleDraft::fresh();
    draft.parentPath = folder;
    draft.phrase = sentence;
    draft.apply(*FolderRuleParser::parse(sentence));
    auto rule = FolderRuleSaving::ruleFromDraft(draft, kNow);
    rule.isEnabled = true;
    return rule;
}

AutopilotRun::Environment runEnvironment() {
    AutopilotRun::Environment env;
    env.home = XdgPaths::home();
    env.logsFolder = XdgPaths::stateHome() + "/Brimvale/Logs";
    env.cleaner.now = [] { return kNow; };
    env.cleaner.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    return env;
}

std::vector<std::string> relativePaths(const std::vector<FolderCandidate>& items, const std::string& folder) {
    std::vector<std::string> out;
    for (const auto& c : items) out.push_back(c.path.substr(folder.size() + 1));
    std::sort(out.begin(), out.end());
    return out;
}

} // namespace

TEST(FolderCandidates, GlobsAndMatching) {
    EXPECT_TRUE(FolderCandidates::globMatches("*.log", "a.log"));
    EXPECT_FALSE(FolderCandidates::globMatches("*.log", "a.log.gz"));
    EXPECT_TRUE(FolderCandidates::globMatches("build-??", "build-é1")); // one character, two bytes
    EXPECT_FALSE(FolderCandidates::globMatches("a*b", "a\nb"));
    EXPECT_TRUE(FolderCandidates::globMatches("[x]*", "[x]y")); // brackets are literal
    EXPECT_FALSE(FolderCandidates::globMatches("Build", "build"));

    const FolderCandidate oldDir{"/p/Build", "Build", true, 0, kNow - std::chrono::hours(24 * 8), 1};
    const FolderCandidate undated{"/p/x.LOG", "x.LOG", false, 0, std::nullopt, 1};
    auto rule = ruleFor("/p", "delete subfolders named build older than 7 days");
    EXPECT_TRUE(candidateMatches(oldDir, rule, kNow));
    rule.minimumAgeDays = 9;
    EXPECT_FALSE(candidateMatches(oldDir, rule, kNow));
    rule = ruleFor("/p", "delete *.log");
    EXPECT_TRUE(candidateMatches(undated, rule, kNow));
    rule.minimumAgeDays = 1;
    EXPECT_FALSE(candidateMatches(undated, rule, kNow)) << "an age needs a date";
    rule.extensions.clear(), rule.minimumAgeDays.reset();
    EXPECT_FALSE(candidateMatches(undated, rule, kNow)) << "nothing at all names nothing";
}

TEST(FolderCandidates, RecursiveListingStopsAtMatchesAndSkipsLinks) {
    const std::string dir = ruleFolder();
    writeFile(dir + "/web/build/build/inner.js", "x");
    writeFile(dir + "/web/src/a.js", "x");
    writeFile(dir + "/.git/build/HEAD", "x");
    ASSERT_EQ(::symlink("/usr", (dir + "/web/build-link").c_str()), 0);
    setModified(dir + "/web/build", 3600);
    const auto rule = ruleFor(dir, "delete subfolders named build");
    const auto listed = listCandidates(rule, kNow);
    ASSERT_TRUE(listed);
    EXPECT_EQ(relativePaths(*listed, dir), (std::vector<std::string>{".git", "web", "web/build", "web/src", "web/src/a.js"}));
    const auto plan = FolderRuleRunner::plan(rule, kNow, XdgPaths::home());
    ASSERT_EQ(plan->entries.size(), 1u);
    EXPECT_EQ(plan->entries[0].bytes, 4096) << "the folder is measured by what is inside";
    // Written to after the preview: the cleaner leaves it alone.
    writeFile(dir + "/web/build/new.js", "x");
    EXPECT_EQ(Cleaner(runEnvironment().cleaner).applyList(plan->entries, XdgPaths::home()).failures,
              std::vector<std::string>{"Couldn’t clean build. It changed since the preview, so it was left alone."});
}

TEST(FolderRuleRunner, KeepNewestFoldersOnly) {
    const std::string dir = ruleFolder();
    for (int i = 1; i <= 4; ++i) {
        makeDir(dir + "/release-" + std::to_string(i));
        setModified(dir + "/release-" + std::to_string(i), 1000 * (10 - i)); // release-4 newest
    }
    writeFile(dir + "/notes.txt", "newest of all");
    auto rule = ruleFor(dir, "keep the newest 2");
    rule.directoriesOnly = true;
    auto plan = FolderRuleRunner::plan(rule, kNow, XdgPaths::home());
    ASSERT_EQ(plan->entries.size(), 2u);
    EXPECT_EQ(plan->entries[0].title, "release-1");
    EXPECT_EQ(plan->entries[1].title, "release-2");

    // The order changed before the run: release-2 is now among the newest two.
    removeTree(dir + "/release-4");
    const auto result = Cleaner(runEnvironment().cleaner).applyList(plan->entries, XdgPaths::home());
    ASSERT_EQ(result.failures, (std::vector<std::string>{
                                   "Couldn’t clean release-2. It changed since the preview, so it was left alone."}));
    EXPECT_FALSE(exists(dir + "/release-1"));
    EXPECT_TRUE(exists(dir + "/release-2") && exists(dir + "/notes.txt"));
}

TEST(AutopilotRun, ConfirmedBound) {
    EXPECT_EQ(confirmedBoundMessage(200, 0, 100, 0), std::nullopt);
    EXPECT_EQ(confirmedBoundMessage(201, 0, 100, 0), "matched 201 items, far more than the 100 in the preview you confirmed");
    EXPECT_EQ(confirmedBoundMessage(20, 1'000'000'000, 0, 0), std::nullopt);
    EXPECT_EQ(confirmedBoundMessage(20, 3'000'000'001, 0, 1'500'000'000),
              "matched 3 GB, far more than the 1.5 GB you confirmed");
    EXPECT_EQ(confirmedBoundMessage(5000, 1, std::nullopt, 0), std::nullopt);

    struct Case {
        int items;
        std::optional<std::int64_t> confirmed;
        const char* skipped;
    };
    for (const Case& c : {Case{23, 3, nullptr},
                          Case{24, 3, "Autopilot skipped “delete *.log”: matched 24 items, far more than the 3 in the "
                                      "preview you confirmed. Open Autopilot to preview it again."},
                          Case{60, std::nullopt, nullptr}}) {
        const std::string dir = ruleFolder();
        for (int i = 0; i < c.items; ++i) writeFile(dir + "/" + std::to_string(i) + ".log", "x");
        auto rule = ruleFor(dir, "delete *.log");
        rule.confirmedCount = c.confirmed;
        rule.confirmedBytes = 4096 * 3;
        const auto result = AutopilotRun::run({rule}, kNow, runEnvironment());
        if (c.skipped) {
            ASSERT_EQ(result.skips.size(), 1u);
            EXPECT_EQ(result.skips[0].text, c.skipped);
            EXPECT_TRUE(result.entries.empty() && exists(dir + "/0.log"));
        } else {
            EXPECT_TRUE(result.skips.empty());
            EXPECT_EQ(result.cleaned.logs.size(), static_cast<size_t>(c.items)) << c.items;
            EXPECT_FALSE(exists(dir + "/0.log"));
            ASSERT_TRUE(result.manifestPath);
            EXPECT_NE(readWholeFile(*result.manifestPath).value_or("").find("\"trigger\": \"autopilot\""), std::string::npos);
        }
    }
}

TEST(AutopilotRun, MissingFolderTurnsTheRuleOffOnce) {
    const std::string dir = ruleFolder();
    std::vector<FolderWatchRule> rules{ruleFor(dir, "delete *.log")};
    rules[0].nextRun = kNow - std::chrono::minutes(1);
    removeTree(dir);
    int reports = 0;
    for (int tick = 0; tick < 2; ++tick) {
        const auto due = AutopilotRun::dueRules(rules, kNow);
        AutopilotRun::advanceDue(rules, due, kNow, kBerlin);
        std::vector<FolderWatchRule> running;
        for (size_t i : due) running.push_back(rules[i]);
        const auto result = AutopilotRun::run(running, kNow, runEnvironment());
        for (auto& r : rules)
            for (const auto& id : result.turnedOff) r.isEnabled = r.isEnabled && r.id != id;
        for (const auto& s : result.skips) {
            ++reports;
            EXPECT_EQ(s.text, "Autopilot skipped “delete *.log”: its folder moved or is missing. The rule is now off.");
        }
    }
    EXPECT_EQ(reports, 1);
    EXPECT_FALSE(rules[0].isEnabled);
    EXPECT_EQ(rules[0].nextRun, kNow + std::chrono::hours(24)) << "moved before any work";
}

// Root reads every folder: the listing runs as nobody to meet a folder it may not read.
TEST(AutopilotRun, UnreadableFolderCountsAsMissing) {
    const std::string dir = ruleFolder();
    writeFile(dir + "/a.log", "x");
    ::chmod(dir.c_str(), 0700);
    const auto rule = ruleFor(dir, "delete *.log");
    // -1 (the drop to nobody failed) fails the test as surely as a listing that worked.
    EXPECT_EQ(runAsNobody([&] { return listCandidates(rule, kNow) ? 1 : 0; }), 0);
}

// A permanent rule removes through the cleaner's pinned removal: an item swapped for a link
// after listing, even in the last moment before removal, is never followed.
TEST(AutopilotRun, PermanentRuleNeverFollowsASwappedLink) {
    const std::string outside = TestEnvironment::freshFolder("outside");
    writeFile(outside + "/precious.txt", "keep");
    for (bool atTheLastMoment : {false, true}) {
        const std::string dir = ruleFolder();
        writeFile(dir + "/web/build/out.js", "x");
        auto rule = ruleFor(dir, "delete subfolders named build");
        rule.disposition = CleanupDisposition::permanent;
        const auto plan = FolderRuleRunner::plan(rule, kNow, XdgPaths::home());
        ASSERT_EQ(plan->entries.size(), 1u);
        EXPECT_EQ(plan->entries[0].symbolName, "trash.slash");
        const auto swap = [&] {
            removeTree(dir + "/web/build");
            ASSERT_EQ(::symlink(outside.c_str(), (dir + "/web/build").c_str()), 0);
        };
        Cleaner::Environment env = runEnvironment().cleaner;
        if (atTheLastMoment) env.beforeAction = [&](const CleanupEntry&) { swap(); };
        else swap();
        const auto result = Cleaner(env).applyList(plan->entries, XdgPaths::home());
        EXPECT_EQ(result.logs.size(), 0u);
        EXPECT_EQ(readWholeFile(outside + "/precious.txt").value_or(""), "keep");
    }
}

TEST(FolderRuleSaving, EditedRuleKeepsItsPlaceAndTheDraftResets) {
    const AppPersistence persistence(TestEnvironment::freshFolder("data"));
    std::vector<FolderWatchRule> rules{ruleFor("/a", "delete *.log"), ruleFor("/b", "delete *.tmp")};
    FolderRuleDraft draft = FolderRuleDraft::fresh();
    draft.parentPath = "/c";
    draft.apply(*FolderRuleParser::parse("delete *.bak"));
    draft.schedule = CleanSchedule::hourly;
    const auto saved = FolderRuleSaving::save(rules, draft, rules[0].id, 4, 8192, kNow, kBerlin, CleanSchedule::weekly, persistence);
    ASSERT_EQ(saved.rules.size(), 2u);
    EXPECT_EQ(saved.rules[0].id, rules[0].id);
    EXPECT_EQ(saved.rules[0].parentPath, "/c");
    EXPECT_EQ(saved.rules[0].nextRun, kNow + std::chrono::hours(1));
    EXPECT_EQ(saved.rules[0].confirmedCount, 4);
    EXPECT_EQ(saved.draft, FolderRuleDraft::fresh(CleanSchedule::weekly));
    EXPECT_EQ(saved.message, "Saved. It will run on its schedule, and you can run it now from Autopilot.");
    EXPECT_EQ(loadFolderRules(persistence), saved.rules);
    EXPECT_EQ(FolderRuleSaving::save(rules, draft, std::nullopt, 0, 0, kNow, kBerlin, CleanSchedule::daily, persistence).rules.size(), 3u);
}
