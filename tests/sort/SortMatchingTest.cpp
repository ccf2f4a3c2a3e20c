#include <gtest/gtest.h>

#include "foundation/CalendarContext.h"
#include "sort/NewTodayMatcher.h"
#include "sort/RuleMatcher.h"
#include "sort/RulePerformer.h"
#include "sort/RuleRunEngine.h"
#include "sort/RuleSuggestions.h"
#include "sort/SortAutoRun.h"
#include "sort/SortPreview.h"

using namespace bv;
using CT = SortCondition::Type;

namespace {

const TimePoint kNow = *parseIsoDate("2026-11-15T22:16:00Z");
const CalendarContext kCalendar("en_US", "Europe/Berlin");

TimePoint ago(std::int64_t seconds) { return kNow - std::chrono::seconds(seconds); }

FileSample sample(std::string name, std::int64_t size = 1000, std::int64_t ageSeconds = 0, SortPlace place = SortPlace::downloads) {
    FileSample s;
    s.path = "/home/u/Downloads/" + name;
    s.name = std::move(name);
    s.size = size;
    s.added = s.modified = ago(ageSeconds);
    s.location = place;
    return s;
}

SortRule rule(std::vector<SortCondition> conditions, SortAction action = SortAction::moveToFolder("/home/u/Docs/"),
              MatchMode match = MatchMode::all) {
    SortRule r;
    r.id = Uuid::generate();
    r.name = r.phrase = "a rule";
    r.conditions = std::move(conditions);
    r.action = std::move(action);
    r.match = match;
    r.createdAt = ago(86400 * 30);
    return r;
}

} // namespace

TEST(SortMatching, EachConditionAndKind) {
    FileSample fromSite = sample("Report.PDF", 2048, 86400 * 3);
    fromSite.whereFroms = {"https://user@Files.Example.com:8443/x/report.pdf"};
    FileSample typed = sample("picture", 10);
    typed.utTypeIdentifier = "public.image";
    FileSample diskImage = sample("setup.dmg");
    diskImage.utTypeIdentifier = "com.apple.disk-image-udif";
    struct Case { SortCondition condition; FileSample file; bool expected; };
    const std::vector<Case> cases{
        {SortCondition::fileExtension("pdf"), fromSite, true},
        {SortCondition::nameStartsWith("rep"), fromSite, true},
        {SortCondition::nameContains("PORT"), fromSite, true},
        {SortCondition::nameEndsWith("ort"), fromSite, true},      // the name without its extension
        {SortCondition::nameEndsWith("t.pdf"), fromSite, true},    // or the whole name
        {SortCondition::nameEquals("report.pdf"), fromSite, true},
        {SortCondition::olderThanDays(3), fromSite, true},
        {SortCondition::olderThanDays(4), fromSite, false},
        {SortCondition::olderThanDays(0), sample("x", 1, 86400 * 9), false},
        {SortCondition::minimumBytes(2048), fromSite, true},
        {SortCondition::minimumBytes(2049), fromSite, false},
        {SortCondition::downloadSource("example.com"), fromSite, true},
        {SortCondition::downloadSource("other.org"), fromSite, false},
        {SortCondition::location(SortPlace::desktop), fromSite, false},
        {SortCondition::kindIs("image"), sample("a.HEIC"), true},
        {SortCondition::kindIs("image"), typed, true},
        {SortCondition::kindIs("image"), diskImage, false},       // a disk image is no picture
        {SortCondition::kindIs("disk image"), diskImage, true},
        {SortCondition::kindIs("video"), sample("a.mkv"), true},
        {SortCondition::kindIs("com.adobe.pdf"), sample("a.pdf"), true},
        {SortCondition::kindIs("screenshot"), sample("Screen Recording 2026.mov"), true},
        {SortCondition::kindIs("screenshot"), sample("my screenshot.png"), false},
        {SortCondition::kindIs("epub"), sample("book.epub"), true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.condition.matches(c.file, kNow), c.expected)
            << sortConditionTypeName(c.condition.type) << " " << c.condition.value << c.condition.number << " on " << c.file.name;
}

TEST(SortMatching, RuleGatesAlternativesAndExclusions) {
    const auto jpgOrScreenshotWeekOld = rule({SortCondition::fileExtension("jpg"), SortCondition::kindIs("screenshot"),
                                              SortCondition::olderThanDays(7)},
                                             SortAction::trash(), MatchMode::any);
    EXPECT_FALSE(jpgOrScreenshotWeekOld.matches(sample("a.jpg", 1, 86400 * 3), kNow)); // "any" never loosens the age
    EXPECT_TRUE(jpgOrScreenshotWeekOld.matches(sample("a.jpg", 1, 86400 * 8), kNow));
    EXPECT_TRUE(jpgOrScreenshotWeekOld.matches(sample("Screenshot 1.png", 1, 86400 * 8), kNow));
    EXPECT_FALSE(jpgOrScreenshotWeekOld.matches(sample("a.png", 1, 86400 * 8), kNow));

    // Extensions are alternatives even under "all"; the place must be one of those named.
    auto pdfOrTxt = rule({SortCondition::fileExtension("PDF"), SortCondition::fileExtension("txt"),
                          SortCondition::nameContains("tax"), SortCondition::location(SortPlace::desktop)});
    EXPECT_TRUE(pdfOrTxt.matches(sample("tax.txt", 1, 0, SortPlace::desktop), kNow));
    EXPECT_FALSE(pdfOrTxt.matches(sample("tax.txt", 1, 0, SortPlace::downloads), kNow));
    EXPECT_FALSE(pdfOrTxt.matches(sample("rent.pdf", 1, 0, SortPlace::desktop), kNow));

    FileSample folder = sample("tax.pdf", 0, 0, SortPlace::desktop);
    folder.isDirectory = true;
    EXPECT_FALSE(pdfOrTxt.matches(folder, kNow));
    EXPECT_FALSE(pdfOrTxt.matches(sample(".tax.pdf", 1, 0, SortPlace::desktop), kNow));
    pdfOrTxt.isEnabled = false;
    EXPECT_FALSE(pdfOrTxt.matches(sample("tax.pdf", 1, 0, SortPlace::desktop), kNow));
}

TEST(SortMatching, PlannedStepsTextsAndSentences) {
    const FileSample file = sample("a.pdf", 1200000);
    struct Case { SortAction action; std::string summary, symbol; RuleAction kind; std::optional<std::string> destination; };
    const std::vector<Case> cases{
        {SortAction::moveToFolder("/home/u//Docs/"), "Move \u201Ca.pdf\u201D to Docs", "arrow.right", RuleAction::move, "/home/u/Docs/a.pdf"},
        {SortAction::rename("{date}-{name}"), "Rename \u201Ca.pdf\u201D to {date}-{name}", "pencil", RuleAction::move, "{date}-{name}"},
        {SortAction::archive(), "Zip \u201Ca.pdf\u201D and leave the original", "archivebox", RuleAction::move, std::nullopt},
        {SortAction::trash(), "Move \u201Ca.pdf\u201D to the Trash", "trash", RuleAction::trash, std::nullopt},
    };
    for (const auto& c : cases) {
        const auto step = plannedAction(file, rule({SortCondition::olderThanDays(2)}, c.action), "Downloads");
        EXPECT_EQ(step.summary, c.summary);
        EXPECT_EQ(step.symbolName, c.symbol);
        EXPECT_EQ(step.action, c.kind);
        EXPECT_EQ(step.destinationPath, c.destination);
        EXPECT_EQ(step.detail, "Downloads \u00B7 1.2 MB");
        EXPECT_EQ(step.minimumAgeDays, 2);
    }

    SimulationResult preview;
    EXPECT_EQ(previewFootnote(preview), "Preview does not move or delete anything.");
    preview.actions.push_back(plannedAction(file, rule({}), "Downloads"));
    EXPECT_EQ(previewFootnote(preview),
              "Moving a file to another folder on this disk changes where it lives. It does not free space.");
    preview.actions.push_back(plannedAction(file, rule({}, SortAction::trash()), "Downloads"));
    EXPECT_EQ(previewFootnote(preview).substr(0, 39), "1.2 MB would move to the Trash. Empty t");

    ApplyOutcome outcome;
    EXPECT_EQ(runResultSentence(outcome), "Nothing needed to change.");
    outcome.errors = {"x"};
    EXPECT_EQ(runResultSentence(outcome), "Nothing was changed. 1 file was left alone.");
    outcome.entries.resize(2);
    EXPECT_EQ(runResultSentence(outcome), "Moved 2 files.");
    outcome.entries[0].bytesReclaimed = 1500000;
    EXPECT_EQ(runResultSentence(outcome), "Moved 2 files (1.5 MB) to the Trash.");

    const auto zip = rule({SortCondition::fileExtension("pdf")}, SortAction::archive());
    const auto zipPreview = SortPreview::simulate({zip}, {sample("a.pdf"), sample("b.pdf"), sample("c.txt")}, kNow);
    EXPECT_EQ(confirmationQuestion(zipPreview, {}, {zip}), "Zip 2 files and leave the originals in place?");
    EXPECT_EQ(confirmationQuestion(zipPreview, {zipPreview.actions[0].id}, {zip}),
              "Zip 1 file and leave the originals in place?");

    const auto noFolder = rule({SortCondition::fileExtension("pdf")}, SortAction::moveToFolder({}));
    EXPECT_EQ(SortPreview::simulate({noFolder}, {sample("a.pdf")}, kNow).warnings,
              std::vector<std::string>{"Choose a folder for \u201Ca rule\u201D."});
    EXPECT_EQ(SortPreview::rulesFingerprint({zip, noFolder}), "sort|" + zip.id.text() + "," + noFolder.id.text());
}

TEST(SortMatching, RenamePatterns) {
    const TimePoint march = kCalendar.date(2026, 3, 1, 10);
    struct Case { std::string name, pattern; std::optional<std::string> expected; };
    const std::vector<Case> cases{
        {"notes.txt", "{date}-{name}", "2026-03-01-notes.txt"},
        {"notes.txt", "{name}.bak", "notes.bak.txt"},
        {"notes.txt", "{name}-old.TXT", "notes-old.TXT"},
        {"notes.txt", "{name}.{ext}.old", "notes.txt.old"},
        {"notes", "{name}-1", "notes-1"},
        {"notes.txt", "a/{name}", std::nullopt},
        {"notes.txt", "a:{name}", std::nullopt},
        {"notes.txt", ".{name}", std::nullopt},
        {"notes.txt", "", std::nullopt},
        {"{date}.txt", "{name}", "2026-03-01.txt"}, // a name's own braces are expanded by later steps
    };
    for (const auto& c : cases)
        EXPECT_EQ(expandRenamePattern(c.name, c.pattern, march, kCalendar), c.expected) << c.name << " " << c.pattern;
}

TEST(SortAutoRuns, WhichRulesAreDueAndWhatTheyTake) {
    auto scheduled = rule({SortCondition::fileExtension("pdf")});
    scheduled.trigger = SortTrigger::scheduled(CleanSchedule::daily);
    auto arrival = scheduled;
    arrival.trigger = SortTrigger::whenAdded();
    struct Case { std::string what; SortRule r; bool due; };
    auto make = [&](std::string what, auto change, bool due) {
        SortRule r = scheduled;
        change(r);
        return Case{std::move(what), r, due};
    };
    const std::vector<Case> cases{
        make("daily, never run", [](SortRule&) {}, true),
        make("daily, next run now", [](SortRule& r) { r.nextRun = kNow; }, true),
        make("daily, next run later", [](SortRule& r) { r.nextRun = kNow + std::chrono::seconds(1); }, false),
        make("off", [](SortRule& r) { r.trigger = SortTrigger::scheduled(CleanSchedule::off); }, false),
        make("manual", [](SortRule& r) { r.trigger = SortTrigger::manual(); }, false),
        make("arrival", [](SortRule& r) { r.trigger = SortTrigger::whenAdded(); }, true),
        make("rename daily", [](SortRule& r) { r.action = SortAction::rename("{name}-x"); }, false),
        make("zip on arrival", [](SortRule& r) { r.action = SortAction::archive(); r.trigger = SortTrigger::whenAdded(); }, false),
        make("move without folder", [](SortRule& r) { r.action = SortAction::moveToFolder({}); }, false),
        make("trash", [](SortRule& r) { r.action = SortAction::trash(); }, true),
        make("disabled", [](SortRule& r) { r.isEnabled = false; }, false),
        make("arrange", [](SortRule& r) { r.kind = SortRuleKind::arrange; }, false),
    };
    for (const auto& c : cases) EXPECT_EQ(SortAutoRun::isDue(c.r, kNow), c.due) << c.what;

    // An arrival rule made five minutes ago takes only what came after it and has settled.
    arrival.createdAt = ago(300);
    const std::vector<FileSample> files{sample("before.pdf", 1, 301), sample("settled.pdf", 1, 120),
                                        sample("fresh.pdf", 1, 119)};
    auto plan = SortAutoRun::plan({arrival, scheduled}, files, kNow, kCalendar);
    ASSERT_EQ(plan.simulation.actions.size(), 4u); // one for the arrival rule, three for the daily one
    EXPECT_EQ(plan.simulation.actions[0].fileName, "settled.pdf");
    EXPECT_TRUE(plan.rulesChanged);
    EXPECT_EQ(plan.rules[1].nextRun, kCalendar.addingDays(kNow, 1));
    EXPECT_FALSE(SortAutoRun::isDue(plan.rules[1], kNow));
    EXPECT_EQ(SortAutoRun::notificationBody(1), "Sorted 1 file. Details are in History.");
}

TEST(SortSuggestions, DetectorsThresholdsAndDismissals) {
    auto ids = [](const std::vector<RuleSuggestion>& list) {
        std::vector<std::string> out;
        for (const auto& s : list) out.push_back(s.id);
        return out;
    };
    FileSample folder = sample("project", 0, 86400 * 2);
    folder.isDirectory = true;
    FileSample fromSite = sample("data.csv", 10);
    fromSite.whereFroms = {"https://files.example.com/data.csv"};
    const std::vector<FileSample> files{
        sample("old.dmg", 4000, 259200), sample("young.iso", 4000, 259199), sample("Screenshot 2026.png"),
        folder, sample("project.tar.gz", 10, 86400 * 2), sample("big.mov", 500000000), sample("small.mp4", 499999999),
        sample("Invoice-March.pdf"), sample("receipt 12.pdf"), sample("img_0001.jpg"), sample("img_0002.jpg"),
        sample("img_0003.jpg"), sample("report-a.pdf"), sample("report-b.pdf"), fromSite};
    const auto all = RuleSuggestions::refresh(files, kNow, {});
    EXPECT_EQ(ids(all), (std::vector<std::string>{"old-installers", "screenshots", "extracted-archives", "large-videos",
                                                  "invoices", "receipts", "same-site"}));
    EXPECT_EQ(all[0].evidence, "1 disk image, 4 KB, older than 3 days");
    EXPECT_EQ(all[2].evidence, "1 archive already extracted");
    EXPECT_EQ(all[3].evidence, "1 video");

    // A third "report-" file makes a prefix group; a name shared with the Desktop, a duplicate.
    auto more = files;
    more.push_back(sample("report-c.pdf", 5));
    more.push_back(sample("old.dmg", 4000, 259200, SortPlace::desktop));
    const auto withMore = RuleSuggestions::refresh(more, kNow, {"invoices", "screenshots"});
    EXPECT_EQ(ids(withMore), (std::vector<std::string>{"old-installers", "extracted-archives", "duplicates",
                                                       "large-videos", "receipts", "common-prefix", "same-site"}));
    EXPECT_EQ(withMore[2].evidence, "2 copies, 8 KB. The preview lists every copy so you can leave one.");
    EXPECT_EQ(withMore[5].evidence, "3 files starting with \u201Creport\u201D, 2 KB");

    EXPECT_EQ(RuleSuggestions::dismissing({"a"}, "b"), (std::vector<std::string>{"a", "b"}));
    const auto pdfs = rule({SortCondition::fileExtension("pdf")});
    EXPECT_EQ(RuleSuggestions::matchCounts({pdfs}, files, kNow).at(pdfs.id.text()), 4);
}

TEST(NewTodayMatching, NamesTheRuleThatCoversAFile) {
    auto named = rule({SortCondition::fileExtension("pdf")});
    named.name = "PDFs to Docs";
    auto unnamed = rule({SortCondition::fileExtension("txt")});
    unnamed.name = " ";
    const auto pdf = sample("a.pdf"), txt = sample("a.txt"), png = sample("a.png");
    EXPECT_EQ(NewTodayMatcher::sortRuleCovering(pdf, {unnamed, named}, kNow), "PDFs to Docs");
    EXPECT_EQ(NewTodayMatcher::sortRuleCovering(txt, {unnamed, named}, kNow), "Move \u201Ca.txt\u201D to Docs");
    EXPECT_EQ(NewTodayMatcher::sortRuleCovering(png, {unnamed, named}, kNow), std::nullopt);

    CleanupRule old;
    old.id = Uuid::generate();
    old.phrase = "trash png files after 3 days";
    old.action = RuleAction::trash;
    old.extensions = {"png"};
    old.minimumAgeDays = 3;
    EXPECT_EQ(NewTodayMatcher::downloadsRuleCovering(sample("b.png", 1, 86400 * 4), {old}, kNow),
              "Move \u201Cb.png\u201D to the Trash");
    EXPECT_EQ(NewTodayMatcher::downloadsRuleCovering(png, {old}, kNow), std::nullopt);
}
