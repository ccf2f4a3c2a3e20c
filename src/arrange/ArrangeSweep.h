#pragma once
#include <map>
#include <set>
#include <string>
#include <vector>

#include "arrange/ArrangeSettleTracker.h"
#include "core/ActionLogEntry.h"
#include "foundation/Dates.h"
#include "foundation/Uuid.h"
#include "sort/FileSample.h"
#include "sort/SortRule.h"

namespace bv {

class RuleRunEngine;

// Extensions that download tools give a file until it is complete.
[[nodiscard]] bool isPartialDownloadName(const std::string& name);
// The samples that are not downloads in progress: no partial extension, and no partial
// file beside them named after them ("a.zip" waits while "a.zip.crdownload" exists).
[[nodiscard]] std::vector<FileSample> finishedDownloads(const std::vector<FileSample>& samples);

// One file a pattern takes now.
struct ArrangeStep {
    Uuid ruleID;
    FileSample sample;
};

// What one pass over Downloads decided.
struct ArrangeSweepPlan {
    std::vector<ArrangeStep> steps;                  // settled, new, matching: move now
    std::map<Uuid, std::vector<FileSample>> waiting; // matching but there before the pattern
    bool stillSettling = false;                      // a matching file is still changing
    // Names a pattern will take once they are finished: files still changing, and partial
    // downloads by their final name ("a.pdf" while "a.pdf.crdownload" grows).
    std::vector<std::string> unfinished;
};

// Steps 2 to 4 of a sweep over a fresh listing (unsettled files included). Enabled arrange
// rules are tried in document order and the first that matches (as Auto-Sort matches) takes a file. A file added
// at or after the rule's liveSince moves; an older one, or one a sweep already failed to
// move (`leftAlone`), waits for Arrange now. `tracker` learns the listing. `stillSettling`
// counts only files some rule would take, so an unrelated file being written never keeps
// the sweeps coming.
[[nodiscard]] ArrangeSweepPlan planArrangeSweep(const std::vector<FileSample>& listing,
                                                const std::vector<SortRule>& rules, ArrangeSettleTracker& tracker,
                                                const std::set<std::string>& leftAlone, TimePoint now);

// One file moved by a sweep or by Arrange now.
struct ArrangeMoved {
    Uuid ruleID;
    std::string fileName;
    ActionLogEntry entry;
};

// Everything a sweep hands back to the main thread. The tracker and the left-alone set
// travel as copies, so a sweep can run off the main thread without sharing state.
struct ArrangeSweepOutcome {
    ArrangeSettleTracker tracker;
    std::set<std::string> leftAlone;
    std::map<Uuid, std::vector<FileSample>> waiting;
    std::vector<ArrangeMoved> moved;
    std::vector<std::string> errors;
    bool stillSettling = false;
    std::vector<std::string> unfinished;

    [[nodiscard]] std::vector<std::string> movedNames() const {
        std::vector<std::string> out;
        for (const ArrangeMoved& m : moved) out.push_back(m.fileName);
        return out;
    }
};

// A whole sweep, blocking: lists `downloads`, plans, looks at each file to move once more
// (one that changed since it settled stays for the next sweep) and moves the rest through
// Auto-Sort's apply path, which matches each file again and never overwrites. A file that
// could not move joins `leftAlone` with its reason in `errors`; paths gone from the listing
// leave `leftAlone`.
[[nodiscard]] ArrangeSweepOutcome runArrangeSweep(const std::string& downloads, const std::vector<SortRule>& rules,
                                                  ArrangeSettleTracker tracker, std::set<std::string> leftAlone,
                                                  TimePoint now, const RuleRunEngine& engine);

// Moves the chosen files of one rule now (Arrange now) through the same apply path. Files
// gone or no longer matching are skipped without a word; `moved` and `errors` both empty
// means none of them was found.
[[nodiscard]] ArrangeSweepOutcome arrangeNow(const std::string& downloads, const SortRule& rule,
                                             const std::set<std::string>& chosenPaths, TimePoint now,
                                             const RuleRunEngine& engine);

// Counts the moves into their rules and sets each rule's lastArranged to its latest move.
// True when some rule changed.
bool recordArrangeMoves(std::vector<SortRule>& rules, const std::vector<ArrangeMoved>& moved);

} // namespace bv
