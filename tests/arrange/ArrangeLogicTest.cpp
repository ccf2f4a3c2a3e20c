#include <gtest/gtest.h>

#include "arrange/ArrangePatterns.h"
#include "arrange/ArrangeSettleTracker.h"
#include "arrange/ArrangeSweep.h"
#include "arrange/ArrangeTexts.h"
#include "arrange/ArrangeTimers.h"
#include "arrange/NamePattern.h"
#include "ArrangeRig.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

const TimePoint t0 = fromEpochSeconds(1'800'000'000);

FileSample sample(const std::string& name, std::int64_t size, TimePoint modified, TimePoint added = t0) {
    FileSample s;
    s.name = name;
    s.path = "/dl/" + name;
    s.size = size;
    s.modified = modified;
    s.added = added;
    return s;
}

std::vector<std::string> names(const std::vector<FileSample>& samples) {
    std::vector<std::string> out;
    for (const auto& s : samples) out.push_back(s.name);
    return out;
}

} // namespace

TEST(ArrangeSettle, SettlesTwoSecondsAfterTheLastChange) {
    ArrangeSettleTracker tracker;
    // Written at t0 and seen at once: not yet. Still the same 1.9 s later: not yet; at 2.0 s: settled.
    EXPECT_TRUE(tracker.update({sample("a", 10, t0)}, t0).empty());
    EXPECT_TRUE(tracker.update({sample("a", 10, t0)}, t0 + 1900ms).empty());
    EXPECT_EQ(names(tracker.update({sample("a", 10, t0)}, t0 + 2000ms)), std::vector<std::string>{"a"});
    // It grows: a new look from its new date, and the clock starts again.
    EXPECT_TRUE(tracker.update({sample("a", 20, t0 + 2500ms)}, t0 + 2600ms).empty());
    EXPECT_EQ(names(tracker.update({sample("a", 20, t0 + 2500ms)}, t0 + 4500ms)), std::vector<std::string>{"a"});
    // A finished file met for the first time long after its last write settles at once; one
    // dated in the future waits the full time from now.
    EXPECT_EQ(names(tracker.update({sample("old", 5, t0 - 1h)}, t0 + 5s)), std::vector<std::string>{"old"});
    EXPECT_TRUE(tracker.update({sample("future", 5, t0 + 1h)}, t0 + 5s).empty());
    // Paths gone from the listing are forgotten.
    EXPECT_EQ(tracker.looks().size(), 1u);
}

TEST(ArrangeSweep, UnfinishedDownloadsWait) {
    const std::vector<FileSample> listing = {
        sample("a.zip", 1, t0),         sample("a.zip.crdownload", 1, t0), sample("b.iso", 1, t0),
        sample("b.iso.part", 1, t0),    sample("c.PARTIAL", 1, t0),       sample("d.download", 1, t0),
        sample("e.tmp", 1, t0),         sample("f.opdownload", 1, t0),    sample("g.pdf", 1, t0),
        sample("crdownload", 1, t0),    sample("h.zip.crdownload.txt", 1, t0),
    };
    EXPECT_EQ(names(finishedDownloads(listing)), (std::vector<std::string>{"g.pdf", "crdownload", "h.zip.crdownload.txt"}));
}

TEST(ArrangeSweep, NewFilesMoveOlderOnesWaitFirstRuleTakesAFile) {
    const SortRule first = test::arrangeRule("vk-", "/out/A", t0);
    SortRule second = test::arrangeRule("vk-", "/out/B", t0);
    SortRule off = test::arrangeRule("zz-", "/out/Z", t0);
    off.isEnabled = false;
    const std::vector<SortRule> rules = {first, second, off};
    ArrangeSettleTracker tracker;
    const std::vector<FileSample> listing = {
        sample("vk-new.pdf", 1, t0, t0 + 1s),   // added after the pattern: moves
        sample("vk-old.pdf", 1, t0, t0 - 1s),   // there one second before: waits
        sample("vk-fresh.pdf", 1, t0 + 9s, t0 + 9s), // still being written: settling
        sample("vk-failed.pdf", 1, t0, t0 + 1s), // a sweep could not move it before: waits
        sample("zz-off.pdf", 1, t0, t0 + 1s),
        sample("other.pdf", 1, t0, t0 + 1s),
        sample("vk-dl.pdf.crdownload", 1, t0 + 9s), // its final name waits with the settling one
    };
    const auto plan = planArrangeSweep(listing, rules, tracker, {"/dl/vk-failed.pdf"}, t0 + 10s);
    ASSERT_EQ(plan.steps.size(), 1u);
    EXPECT_EQ(plan.steps[0].sample.name, "vk-new.pdf");
    EXPECT_EQ(plan.steps[0].ruleID, first.id);
    EXPECT_EQ(names(plan.waiting.at(first.id)), (std::vector<std::string>{"vk-old.pdf", "vk-failed.pdf"}));
    EXPECT_EQ(plan.waiting.count(second.id), 0u);
    EXPECT_TRUE(plan.stillSettling);
    EXPECT_EQ(plan.unfinished, (std::vector<std::string>{"vk-dl.pdf", "vk-fresh.pdf"}));
    // An unrelated file being written does not keep the sweeps coming.
    ArrangeSettleTracker other;
    EXPECT_FALSE(planArrangeSweep({sample("x.log", 1, t0 + 9s)}, rules, other, {}, t0 + 10s)
                     .stillSettling);
}

TEST(ArrangeTimers, RechecksFollowSettlingFilesAndOneSweepRunsAtATime) {
    ArrangeTimers timers;
    // A sweep that leaves a file settling asks again 2.5 s later.
    ASSERT_TRUE(timers.begin());
    timers.finish(t0, true);
    EXPECT_EQ(timers.nextDeadline(), t0 + 2500ms);
    EXPECT_FALSE(timers.takeDue(t0 + 2499ms));
    ASSERT_TRUE(timers.takeDue(t0 + 2500ms));
    // While it runs, a tick's sweep is held and comes 2.5 s after the running one ends.
    timers.noteTick(t0 + 2600ms);
    EXPECT_FALSE(timers.takeDue(t0 + 2600ms));
    EXPECT_FALSE(timers.begin());
    timers.finish(t0 + 3s, false);
    EXPECT_EQ(timers.nextDeadline(), t0 + 5500ms);
}

TEST(ArrangePatterns, SavingRefusesWithItsSentences) {
    const std::vector<SortRule> existing = {test::arrangeRule("vk-", "/home/me/Invoices", t0)};
    using Rows = std::vector<ArrangePatternRow>;
    const std::pair<Rows, std::string> refusals[] = {
        {{{"  ", "/x"}}, "Type the start or end of a name."},
        {{{"a*b", "/x"}}, "Use one word: vk- or vk-* for the start, *-sk or -sk for the end."},
        {{{"vk-*", "/x"}}, "\u201Cvk-*\u201D already goes to Invoices. Change that one instead."},
        {{{"*.pdf", "/x"}, {"*.PDF", "/y"}}, "\u201C*.PDF\u201D already has a folder."},
        {{{"-sk", ""}}, "Choose the folder these files go to."},
    };
    for (const auto& [rows, message] : refusals) {
        const auto result = saveArrangePatterns(rows, existing, t0);
        EXPECT_EQ(result.message, message);
        EXPECT_TRUE(result.rules.empty());
    }
    const auto saved = saveArrangePatterns({{"*-sk", "/home/me/Scans/"}}, existing, t0);
    ASSERT_FALSE(saved.message);
    ASSERT_EQ(saved.rules.size(), 1u);
    const SortRule& rule = saved.rules[0];
    EXPECT_EQ(rule.name, "*-sk \u2192 Scans");
    EXPECT_EQ(rule.conditions, (std::vector<SortCondition>{SortCondition::nameEndsWith("-sk"),
                                                           SortCondition::location(SortPlace::downloads)}));
    EXPECT_EQ(arrangeGlob(rule), "*-sk");
    EXPECT_EQ(removePatternExplanation(rule), "\u201C*-sk\u201D stops moving files. Files it already moved stay where they are.");
    EXPECT_EQ(arrangeWatchedPlaces(saved.rules), std::set<SortPlace>{SortPlace::downloads});
    EXPECT_TRUE(arrangeWatchedPlaces(withoutRule(saved.rules, rule.id)).empty());
}

TEST(ArrangeTexts, NotificationsAndStatusFollowTheMoves) {
    SortRule rule = test::arrangeRule("vk-", "/home/me/Invoices", t0);
    auto moved = [&](const std::string& name) { return ArrangeMoved{rule.id, name, ActionLogEntry{}}; };
    EXPECT_EQ(arrange_text::notificationBody({moved("vk-1.pdf")}, {rule}), "Moved vk-1.pdf to Invoices.");
    EXPECT_EQ(arrange_text::notificationBody({moved("a"), moved("b")}, {rule}), "Moved 2 files. Details are in History.");
    EXPECT_FALSE(arrange_text::notificationBody({}, {rule}));

    EXPECT_EQ(arrange_text::statusLine(rule), "Watching Downloads. Nothing moved yet.");
    std::vector<SortRule> rules = {rule};
    ArrangeMoved later = moved("vk-2.pdf");
    later.entry.date = t0 + 5s;
    EXPECT_TRUE(recordArrangeMoves(rules, {later, moved("vk-1.pdf")}));
    EXPECT_EQ(rules[0].arrangedCount, 2);
    EXPECT_EQ(rules[0].lastArranged, (ArrangeMove{"vk-2.pdf", t0 + 5s}));
    EXPECT_EQ(arrange_text::statusLine(rules[0]), "Watching Downloads. 2 files moved, the last \u201Cvk-2.pdf\u201D.");
    rules[0].isEnabled = false;
    EXPECT_EQ(arrange_text::statusLine(rules[0]), "Off. New files stay in Downloads.");
}
