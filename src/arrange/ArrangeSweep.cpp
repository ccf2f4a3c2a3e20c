#include "arrange/ArrangeSweep.h"

#include <sys/stat.h>

#include <algorithm>
#include <unordered_set>

#include "arrange/ArrangeMover.h"
#include "foundation/PhraseText.h"

namespace bv {
namespace {

constexpr const char* kPartialExtensions[] = {"crdownload", "part", "partial", "download", "tmp", "opdownload"};

// The rules a sweep works for, in document order.
std::vector<const SortRule*> liveArrangeRules(const std::vector<SortRule>& rules) {
    std::vector<const SortRule*> live;
    for (const SortRule& rule : rules)
        if (rule.kind == SortRuleKind::arrange && rule.isEnabled) live.push_back(&rule);
    return live;
}

const SortRule* firstTaker(const std::vector<const SortRule*>& rules, const FileSample& sample, TimePoint now,
                           const ArrangeMatcher& matches) {
    for (const SortRule* rule : rules)
        if (matches(*rule, sample, now)) return rule;
    return nullptr;
}

// The file as it is on disk now still is the one that settled: same size, same content date.
bool unchangedSince(const FileSample& sample) {
    struct stat st{};
    if (::lstat(sample.path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
    if (static_cast<std::int64_t>(st.st_size) != sample.size) return false;
    const TimePoint modified{std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(st.st_mtim.tv_sec) +
                                                                        std::chrono::nanoseconds(st.st_mtim.tv_nsec))};
    return sample.modified == modified;
}

void moveOne(const SortRule& rule, const FileSample& sample, TimePoint now, const ArrangeMover& mover,
             ArrangeSweepOutcome& out) {
    try {
        out.moved.push_back({rule.id, sample.name, mover.move(rule, sample, now)});
    } catch (const std::exception& failure) {
        out.errors.emplace_back(failure.what());
        out.leftAlone.insert(sample.path);
        out.waiting[rule.id].push_back(sample);
    }
}

} // namespace

bool isPartialDownloadName(const std::string& name) {
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return false;
    const std::string extension = lowercased(name.substr(dot + 1));
    return std::any_of(std::begin(kPartialExtensions), std::end(kPartialExtensions),
                       [&](const char* e) { return extension == e; });
}

std::vector<FileSample> finishedDownloads(const std::vector<FileSample>& samples) {
    std::unordered_set<std::string> names;
    for (const FileSample& s : samples) names.insert(s.name);
    std::vector<FileSample> finished;
    for (const FileSample& s : samples) {
        if (isPartialDownloadName(s.name)) continue;
        const bool partialBeside = std::any_of(std::begin(kPartialExtensions), std::end(kPartialExtensions),
                                               [&](const char* e) { return names.count(s.name + "." + e) > 0; });
        if (!partialBeside) finished.push_back(s);
    }
    return finished;
}

ArrangeSweepPlan planArrangeSweep(const std::vector<FileSample>& listing, const std::vector<SortRule>& rules,
                                  ArrangeSettleTracker& tracker, const std::set<std::string>& leftAlone, TimePoint now,
                                  const ArrangeMatcher& matches) {
    ArrangeSweepPlan plan;
    const auto live = liveArrangeRules(rules);
    const std::vector<FileSample> candidates = finishedDownloads(listing);
    const std::vector<FileSample> settled = tracker.update(candidates, now);
    if (live.empty()) return plan;

    std::unordered_set<std::string> settledPaths;
    for (const FileSample& s : settled) settledPaths.insert(s.path);
    for (const FileSample& sample : candidates) {
        const SortRule* rule = firstTaker(live, sample, now, matches);
        if (!rule) continue;
        if (!settledPaths.count(sample.path)) {
            plan.stillSettling = true;
            continue;
        }
        const TimePoint added = sample.added.value_or(sample.modified.value_or(TimePoint{}));
        const bool isNew = rule->liveSince && added >= *rule->liveSince;
        if (isNew && !leftAlone.count(sample.path))
            plan.steps.push_back({rule->id, sample});
        else
            plan.waiting[rule->id].push_back(sample);
    }
    return plan;
}

ArrangeSweepOutcome runArrangeSweep(const std::string& downloads, const std::vector<SortRule>& rules,
                                    ArrangeSettleTracker tracker, std::set<std::string> leftAlone, TimePoint now,
                                    const ArrangeMatcher& matches, const ArrangeMover& mover) {
    const std::vector<FileSample> listing = gatherSamples(downloads, SortPlace::downloads, true, now);
    ArrangeSweepPlan plan = planArrangeSweep(listing, rules, tracker, leftAlone, now, matches);

    ArrangeSweepOutcome out;
    std::unordered_set<std::string> present;
    for (const FileSample& s : listing) present.insert(s.path);
    for (const std::string& path : leftAlone)
        if (present.count(path)) out.leftAlone.insert(path);
    out.waiting = std::move(plan.waiting);
    out.stillSettling = plan.stillSettling;

    for (const ArrangeStep& step : plan.steps) {
        const auto rule = std::find_if(rules.begin(), rules.end(), [&](const SortRule& r) { return r.id == step.ruleID; });
        if (!unchangedSince(step.sample)) {
            out.stillSettling = true; // written to again since it settled: look again soon
            continue;
        }
        moveOne(*rule, step.sample, now, mover, out);
    }
    out.tracker = std::move(tracker);
    return out;
}

ArrangeSweepOutcome arrangeNow(const std::string& downloads, const SortRule& rule,
                               const std::set<std::string>& chosenPaths, TimePoint now, const ArrangeMatcher& matches,
                               const ArrangeMover& mover) {
    ArrangeSweepOutcome out;
    const auto listing = finishedDownloads(gatherSamples(downloads, SortPlace::downloads, true, now));
    for (const FileSample& sample : listing) {
        if (!chosenPaths.count(sample.path) || sample.isDirectory || !matches(rule, sample, now)) continue;
        moveOne(rule, sample, now, mover, out);
    }
    return out;
}

bool recordArrangeMoves(std::vector<SortRule>& rules, const std::vector<ArrangeMoved>& moved) {
    bool changed = false;
    for (const ArrangeMoved& m : moved) {
        for (SortRule& rule : rules) {
            if (rule.id != m.ruleID) continue;
            rule.arrangedCount += 1;
            if (!rule.lastArranged || rule.lastArranged->date <= m.entry.date)
                rule.lastArranged = ArrangeMove{m.fileName, m.entry.date};
            changed = true;
        }
    }
    return changed;
}

} // namespace bv
