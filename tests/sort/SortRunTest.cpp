// Runs of Auto-Sort rules against real folders in the temporary home: previews, fresh
// checks at apply time, moves, renames, zips checked by unzip, the Trash checked by
// trash-cli, and refusals, some of them as an unprivileged user.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "core/AppPersistence.h"
#include "foundation/CalendarContext.h"
#include "foundation/FileIO.h"
#include "space/SpaceFixtures.h"
#include "sort/CleanupRuleRunner.h"
#include "sort/RulePerformer.h"
#include "sort/RuleRunEngine.h"
#include "sort/SortAutoRun.h"
#include "sort/SortPreview.h"
#include "sort/SortRuleStore.h"
#include "sort/ZipArchiver.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

const CalendarContext kCalendar("en_US", "Europe/Berlin");

std::string readAll(const std::string& path) { return readWholeFile(path).value_or(""); }

std::string run(const std::string& command) { return runCommand(command).output; }

void setModified(const std::string& path, TimePoint t) {
    const auto s = epochSeconds(t);
    struct timespec times[2] = {{s, 0}, {s, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

SortRule makeRule(std::vector<SortCondition> conditions, SortAction action, TimePoint createdAt) {
    SortRule r;
    r.id = Uuid::generate();
    r.name = r.phrase = "test rule";
    r.conditions = std::move(conditions);
    r.action = std::move(action);
    r.createdAt = createdAt;
    return r;
}

class SortRun : public ::testing::Test {
protected:
    void SetUp() override {
        base = TestEnvironment::freshFolder("sortrun");
        downloads = base + "/Downloads";
        desktop = base + "/Desktop";
        makeDir(downloads);
        makeDir(desktop);
    }
    // A file written an hour ago, so it has settled.
    std::string file(const std::string& name, const std::string& content = "data") {
        const std::string path = downloads + "/" + name;
        writeFile(path, content);
        setModified(path, Clock::now() - std::chrono::hours(1));
        return path;
    }
    ApplyOutcome previewAndApply(const std::vector<SortRule>& rules, TimePoint now) {
        const auto preview = SortPreview::preview(rules, downloads, desktop, now);
        const RuleRunEngine engine(downloads, desktop, kCalendar);
        return engine.apply(preview, {}, rules, engine.gatherFresh(rules, now), now);
    }
    std::string base, downloads, desktop;
};

} // namespace

TEST_F(SortRun, ArrivalRuleActsOnlyOnFilesThatCameAfterItAndSettled) {
    file("a.pdf");
    const auto samples = gatherSamples(downloads, SortPlace::downloads, false, Clock::now());
    ASSERT_EQ(samples.size(), 1u);
    const TimePoint arrived = *samples[0].added;
    auto rule = makeRule({SortCondition::fileExtension("pdf")}, SortAction::moveToFolder(base + "/Sorted"),
                         arrived - std::chrono::seconds(1));
    rule.trigger = SortTrigger::whenAdded();
    auto olderRule = rule;
    olderRule.createdAt = arrived + std::chrono::seconds(1); // the file was there before this rule

    for (int seconds : {119, 120}) {
        const TimePoint now = arrived + std::chrono::seconds(seconds);
        const auto plan = SortAutoRun::plan({olderRule, rule}, SortPreview::gather({rule}, downloads, desktop, now), now, kCalendar);
        const RuleRunEngine engine(downloads, desktop, kCalendar);
        const auto outcome = engine.apply(plan.simulation, {}, plan.rules, engine.gatherFresh(plan.rules, now), now);
        EXPECT_TRUE(outcome.errors.empty());
        EXPECT_EQ(outcome.entries.size(), seconds == 120 ? 1u : 0u) << seconds;
    }
    EXPECT_TRUE(exists(base + "/Sorted/a.pdf")); // the folder was made on the way
    EXPECT_FALSE(exists(downloads + "/a.pdf"));
}

TEST_F(SortRun, ClashesAndChangedFilesAreRefusedWithoutStoppingTheRest) {
    file("clash.pdf", "mine");
    file("fine.pdf");
    file("changed.pdf");
    file("gone.pdf");
    makeDir(base + "/Docs");
    writeFile(base + "/Docs/clash.pdf", "theirs");
    const TimePoint now = Clock::now();
    const auto move = makeRule({SortCondition::fileExtension("pdf"), SortCondition::minimumBytes(4)},
                               SortAction::moveToFolder(base + "/Docs/"), now);
    const auto preview = SortPreview::preview({move}, downloads, desktop, now);
    ASSERT_EQ(preview.actions.size(), 4u);

    // After the preview: one file is written again (it has not settled), one is removed.
    writeFile(downloads + "/changed.pdf", "new content");
    ::unlink((downloads + "/gone.pdf").c_str());
    const RuleRunEngine engine(downloads, desktop, kCalendar);
    const auto outcome = engine.apply(preview, {}, {move}, engine.gatherFresh({move}, Clock::now()), Clock::now());

    ASSERT_EQ(outcome.entries.size(), 1u);
    EXPECT_EQ(outcome.entries[0].destinationPath, base + "/Docs/fine.pdf");
    std::vector<std::string> errors = outcome.errors;
    std::sort(errors.begin(), errors.end());
    EXPECT_EQ(errors, (std::vector<std::string>{"changed.pdf no longer matches the rule, so it was left alone.",
                                                "clash.pdf is already in that folder.",
                                                "gone.pdf no longer matches the rule, so it was left alone."}));
    EXPECT_EQ(readAll(downloads + "/clash.pdf"), "mine");
    EXPECT_EQ(readAll(base + "/Docs/clash.pdf"), "theirs");
    EXPECT_TRUE(exists(downloads + "/changed.pdf"));

    // A rule deleted since the preview, and a step outside both folders.
    SimulationResult stray = preview;
    stray.actions.resize(1);
    stray.actions[0].sourcePath = base + "/Downloads2/" + stray.actions[0].fileName;
    FileSample outside;
    outside.path = stray.actions[0].sourcePath;
    outside.name = stray.actions[0].fileName;
    outside.size = 10;
    EXPECT_EQ(engine.apply(stray, {}, {move}, {outside}, now).errors,
              std::vector<std::string>{outside.name + " is outside Downloads and Desktop, so it was left alone."});
    EXPECT_EQ(engine.apply(preview, {}, {}, {}, now).errors.front(),
              preview.actions[0].fileName + " no longer matches a rule, so it was left alone.");
}

TEST_F(SortRun, RenamesAndZips) {
    const std::string notes = file("notes.txt", "some notes");
    const TimePoint march = kCalendar.date(2026, 3, 1, 12);
    setModified(notes, march - std::chrono::hours(1));
    const auto rename = makeRule({SortCondition::nameEquals("notes.txt")}, SortAction::rename("{date}-{name}"), march);
    ApplyOutcome outcome = previewAndApply({rename}, march);
    ASSERT_EQ(outcome.entries.size(), 1u) << (outcome.errors.empty() ? "" : outcome.errors[0]);
    EXPECT_TRUE(exists(downloads + "/2026-03-01-notes.txt"));

    const std::string report = file("report.txt", "quarterly numbers");
    const auto bak = makeRule({SortCondition::nameStartsWith("report")}, SortAction::rename("{name}.bak"), Clock::now());
    ASSERT_EQ(previewAndApply({bak}, Clock::now()).entries.size(), 1u);
    EXPECT_EQ(readAll(downloads + "/report.bak.txt"), "quarterly numbers");

    const auto zip = makeRule({SortCondition::nameEquals("report.bak.txt")}, SortAction::archive(), Clock::now());
    outcome = previewAndApply({zip}, Clock::now());
    ASSERT_EQ(outcome.entries.size(), 1u);
    const std::string archive = downloads + "/report.bak.zip";
    EXPECT_EQ(outcome.entries[0].destinationPath, archive);
    EXPECT_TRUE(exists(downloads + "/report.bak.txt")); // the original stays
    EXPECT_NE(run("unzip -tq '" + archive + "'").find("No errors detected"), std::string::npos);
    EXPECT_EQ(run("zipinfo -1 '" + archive + "'"), "report.bak.txt\n");
    EXPECT_EQ(run("unzip -p '" + archive + "'"), "quarterly numbers");

    EXPECT_EQ(previewAndApply({zip}, Clock::now()).errors,
              std::vector<std::string>{"report.bak.txt already has a zip next to it."});
    EXPECT_EQ(ZipArchiver::freeArchivePath(downloads, "report.bak"), downloads + "/report.bak 2.zip");
    const auto zipZips = makeRule({SortCondition::fileExtension("zip")}, SortAction::archive(), Clock::now());
    setModified(archive, Clock::now() - std::chrono::hours(1));
    EXPECT_EQ(previewAndApply({zipZips}, Clock::now()).errors,
              std::vector<std::string>{"report.bak.zip is already a zip."});
}

TEST_F(SortRun, TrashNeedsAnAgeEvenFromAHandEditedFile) {
    const std::string old = file("old.dmg", "image");
    const std::string folder = TestEnvironment::freshFolder("sortrun-state");
    writeFile(folder + "/rules-v2.json", R"({"version":1,"rules":[
        {"id":"6A0F8C55-1111-4222-8333-444455556666","name":"no age","action":{"type":"trash"},
         "conditions":[{"type":"fileExtension","value":"dmg"}],"trigger":{"type":"whenAdded"}}]})");
    const auto rules = loadSortRuleFiles(AppPersistence(folder), Clock::now()).sortRules;
    ASSERT_EQ(rules.size(), 1u);
    const auto outcome = previewAndApply(rules, Clock::now());
    EXPECT_TRUE(outcome.entries.empty());
    EXPECT_EQ(outcome.errors, std::vector<std::string>{"old.dmg was left alone: the rule has no age, so nothing is deleted."});
    EXPECT_TRUE(exists(old));

    auto aged = rules[0];
    aged.conditions.push_back(SortCondition::olderThanDays(7));
    // The age counts from the file's arrival in the folder, so the run is ten days later.
    const auto trashed = previewAndApply({aged}, Clock::now() + std::chrono::hours(24 * 10));
    ASSERT_EQ(trashed.entries.size(), 1u);
    EXPECT_EQ(trashed.entries[0].bytesReclaimed, 5);
    EXPECT_FALSE(exists(old));
    EXPECT_NE(run("trash-list 2>/dev/null").find(old), std::string::npos); // an independent reader of the Trash
}

TEST_F(SortRun, UnwritableFoldersGiveTheSystemsReasonAndLoseNothing) {
    const std::string a = file("a.txt"), b = file("b.txt"), c = file("c.txt");
    makeDir(base + "/Locked");
    for (const auto& p : {TestEnvironment::root(), base, downloads, desktop, base + "/Locked"}) ::chmod(p.c_str(), 0755);
    for (const auto& p : {a, b, c}) ::chmod(p.c_str(), 0644);
    ::chmod(downloads.c_str(), 0555);
    const TimePoint now = Clock::now();
    const auto move = makeRule({SortCondition::nameEquals("a.txt")}, SortAction::moveToFolder(base + "/Locked/New"), now);
    const auto zip = makeRule({SortCondition::nameEquals("b.txt")}, SortAction::archive(), now);
    const auto rename = makeRule({SortCondition::nameEquals("c.txt")}, SortAction::rename("{name}-x"), now);
    makeDir(base + "/Out");
    ::chmod((base + "/Out").c_str(), 0777);
    const std::string report = base + "/Out/outcome";
    const int code = runAsNobody([&] {
        const std::vector<SortRule> rules{move, zip, rename};
        const auto preview = SortPreview::preview(rules, downloads, desktop, now);
        const RuleRunEngine engine(downloads, desktop, kCalendar);
        const auto outcome = engine.apply(preview, {}, rules, engine.gatherFresh(rules, now), now);
        std::ofstream out(report);
        for (const auto& e : outcome.errors) out << e << "\n";
        return outcome.entries.empty() ? 0 : 1;
    });
    ::chmod(downloads.c_str(), 0755);
    if (code < 0) GTEST_SKIP() << "could not switch to an unprivileged user";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(readAll(report), "\u201CNew\u201D couldn\u2019t be created: Permission denied.\n"
                               "Couldn\u2019t zip b.txt. The original was left in place.\n"
                               "c.txt couldn\u2019t be renamed: Permission denied.\n");
    for (const auto& p : {a, b, c}) EXPECT_TRUE(exists(p));
    EXPECT_FALSE(exists(downloads + "/b.zip"));
}

TEST_F(SortRun, OlderDownloadsRulesPreviewAndRunOneAtATime) {
    file("setup.dmg");
    file("paper.pdf");
    CleanupRule trash;
    trash.id = Uuid::generate();
    trash.phrase = "trash dmg files after 3 days";
    trash.action = RuleAction::trash;
    trash.extensions = {"dmg"};
    trash.minimumAgeDays = 3;
    CleanupRule move = trash;
    move.phrase = "move pdfs";
    move.action = RuleAction::move;
    move.extensions = {"pdf"};
    move.minimumAgeDays.reset();
    move.destinationPath = base + "/Papers";

    const TimePoint now = Clock::now();
    const auto movePreview = SortPreview::previewCleanupRule(move, downloads, now);
    EXPECT_EQ(movePreview.warnings, std::vector<std::string>{"Choose the folder again for \u201Cmove pdfs\u201D."});
    const CleanupRuleRunner runner(downloads, kCalendar);
    EXPECT_EQ(runner.apply(movePreview, {}, move, now).errors,
              std::vector<std::string>{"Couldn\u2019t update paper.pdf: The destination folder is missing."});

    // The age counts from the arrival in Downloads: a day later is too soon, four days is enough.
    SimulationResult early = SortPreview::previewCleanupRule(trash, downloads, now + std::chrono::hours(96));
    EXPECT_EQ(runner.apply(early, {}, trash, now + std::chrono::hours(24)).errors,
              std::vector<std::string>{"Couldn\u2019t update setup.dmg: The file is newer than the rule allows."});
    const TimePoint later = now + std::chrono::hours(24 * 4);
    const auto outcome = runner.apply(SortPreview::previewCleanupRule(trash, downloads, later), {}, trash, later);
    EXPECT_EQ(outcome.entries.size(), 1u);
    EXPECT_FALSE(exists(downloads + "/setup.dmg"));

    ::chmod(downloads.c_str(), 0);
    const int code = runAsNobody([&] {
        return SortPreview::previewCleanupRule(trash, downloads, later).warnings ==
                       std::vector<std::string>{kDownloadsUnreadable} ? 0 : 1;
    });
    ::chmod(downloads.c_str(), 0755);
    if (code >= 0) {
        EXPECT_EQ(code, 0);
    }
}
