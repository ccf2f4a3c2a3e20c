#include "arrange/ArrangeSweep.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <unordered_set>

#include "foundation/PhraseText.h"
#include "sort/PlannedAction.h"
#include "sort/RuleMatcher.h"
#include "sort/RuleRunEngine.h"

namespace bv {
namespace {

constexpr const char* kPartialExtensions[] = {"crdownload", "part", "partial", "download", "tmp", "opdownload"};

// The rules a sweep works for, in document order, each prepared for many names.
std::vector<RuleMatcher> liveArrangeRules(const std::vector<SortRule>& rules) {
    std::vector<RuleMatcher> live;
    for (const SortRule& rule : rules)
        if (rule.kind == SortRuleKind::arrange && rule.isEnabled) live.emplace_back(rule);
    return live;
}

const SortRule* firstTaker(const std::vector<RuleMatcher>& rules, const FileSample& sample, TimePoint now) {
    const SampleNames names = SampleNames::of(sample.name);
    for (const RuleMatcher& matcher : rules)
        if (matcher.matches(sample, names, now)) return &matcher.rule();
    return nullptr;
}

TimePoint timeOf(const struct timespec& ts) {
    return TimePoint{std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(ts.tv_sec) +
                                                                 std::chrono::nanoseconds(ts.tv_nsec))};
}

// The file as it is on disk now still is the one that settled: same size, same content date.
bool unchangedSince(const FileSample& sample) {
    struct stat st{};
    if (::lstat(sample.path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
    return static_cast<std::int64_t>(st.st_size) == sample.size && sample.modified == timeOf(st.st_mtim);
}

// Downloads as a sweep needs it, filled in the way gatherSamples fills a sample: the files
// some pattern may take, plus the names of partial downloads (so "a.zip" can see its
// "a.zip.crdownload"). Every other name costs only its directory entry, never a stat or an
// attribute read, which keeps a folder of thousands of unrelated files cheap to sweep.
std::vector<FileSample> listForSweep(const std::string& folder, const std::vector<RuleMatcher>& live, TimePoint now) {
    std::vector<FileSample> out;
    std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder.c_str()), ::closedir);
    if (!dir || live.empty()) return out;
    const std::string base = folder.back() == '/' ? folder : folder + "/";
    while (const dirent* entry = ::readdir(dir.get())) {
        FileSample s;
        s.name = entry->d_name;
        if (s.name.empty() || s.name.front() == '.') continue;
        s.path = base + s.name;
        s.location = SortPlace::downloads;
        if (isPartialDownloadName(s.name)) {
            out.push_back(std::move(s));
            continue;
        }
        if (!firstTaker(live, s, now)) continue; // the name alone rules it out
        struct stat st{};
        if (::lstat(s.path.c_str(), &st) != 0 || S_ISLNK(st.st_mode)) continue;
        const auto dot = s.name.rfind('.');
        s.isDirectory = S_ISDIR(st.st_mode) && !(dot != std::string::npos && lowercased(s.name.substr(dot + 1)) == "app");
        s.modified = timeOf(st.st_mtim);
        s.added = timeOf(st.st_ctim); // a rename into the folder sets it
        if (!S_ISDIR(st.st_mode)) {
            s.size = static_cast<std::int64_t>(st.st_size);
            s.whereFroms = readWhereFroms(s.path);
        }
        out.push_back(std::move(s));
    }
    return out;
}

// Moves the steps through Auto-Sort's apply path, with `listing` as the fresh samples it
// checks each step against, and sorts what happened into `out`.
void applySteps(const std::vector<ArrangeStep>& steps, const std::vector<SortRule>& rules,
                const std::vector<FileSample>& listing, TimePoint now, const RuleRunEngine& engine,
                ArrangeSweepOutcome& out) {
    if (steps.empty()) return;
    SimulationResult simulation;
    simulation.id = Uuid::generate();
    simulation.scopeName = "Downloads";
    simulation.createdAt = now;
    for (const ArrangeStep& step : steps) {
        const auto rule = std::find_if(rules.begin(), rules.end(), [&](const SortRule& r) { return r.id == step.ruleID; });
        simulation.actions.push_back(plannedAction(step.sample, *rule, "Downloads"));
    }
    ApplyOutcome applied = engine.apply(simulation, {}, rules, listing, now);
    std::map<std::string, ActionLogEntry> entryBySource;
    for (ActionLogEntry& entry : applied.entries) entryBySource.emplace(entry.sourcePath, std::move(entry));
    for (const ArrangeStep& step : steps) {
        auto entry = entryBySource.find(step.sample.path);
        if (entry != entryBySource.end()) {
            out.moved.push_back({step.ruleID, step.sample.name, std::move(entry->second)});
        } else {
            out.leftAlone.insert(step.sample.path);
            out.waiting[step.ruleID].push_back(step.sample);
        }
    }
    out.errors.insert(out.errors.end(), applied.errors.begin(), applied.errors.end());
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
                                  ArrangeSettleTracker& tracker, const std::set<std::string>& leftAlone, TimePoint now) {
    ArrangeSweepPlan plan;
    const auto live = liveArrangeRules(rules);
    // Only files some pattern takes are tracked: a folder of thousands of unrelated files
    // costs one name test each.
    std::vector<FileSample> candidates;
    std::vector<const SortRule*> takers;
    for (FileSample& sample : finishedDownloads(listing))
        if (const SortRule* rule = firstTaker(live, sample, now)) {
            candidates.push_back(std::move(sample));
            takers.push_back(rule);
        }
    std::unordered_set<std::string> settledPaths;
    for (const FileSample& s : tracker.update(candidates, now)) settledPaths.insert(s.path);
    for (const FileSample& partial : listing) {
        if (!isPartialDownloadName(partial.name)) continue;
        FileSample finished = partial;
        finished.name = partial.name.substr(0, partial.name.rfind('.'));
        finished.isDirectory = false;
        if (firstTaker(live, finished, now)) plan.unfinished.push_back(finished.name);
    }

    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const FileSample& sample = candidates[i];
        const SortRule* rule = takers[i];
        if (!settledPaths.count(sample.path)) {
            plan.stillSettling = true;
            plan.unfinished.push_back(sample.name);
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
                                    const RuleRunEngine& engine) {
    const std::vector<FileSample> listing = listForSweep(downloads, liveArrangeRules(rules), now);
    ArrangeSweepPlan plan = planArrangeSweep(listing, rules, tracker, leftAlone, now);

    ArrangeSweepOutcome out;
    std::unordered_set<std::string> present;
    for (const FileSample& s : listing) present.insert(s.path);
    for (const std::string& path : leftAlone)
        if (present.count(path)) out.leftAlone.insert(path);
    out.waiting = std::move(plan.waiting);
    out.stillSettling = plan.stillSettling;
    out.unfinished = std::move(plan.unfinished);

    std::vector<ArrangeStep> steps;
    for (ArrangeStep& step : plan.steps) {
        if (unchangedSince(step.sample))
            steps.push_back(std::move(step));
        else
            out.stillSettling = true; // written to again since it settled: look again soon
    }
    applySteps(steps, rules, listing, now, engine, out);
    out.tracker = std::move(tracker);
    return out;
}

ArrangeSweepOutcome arrangeNow(const std::string& downloads, const SortRule& rule,
                               const std::set<std::string>& chosenPaths, TimePoint now, const RuleRunEngine& engine) {
    ArrangeSweepOutcome out;
    const auto listing = finishedDownloads(gatherSamples(downloads, SortPlace::downloads, true, now));
    std::vector<ArrangeStep> steps;
    for (const FileSample& sample : listing)
        if (chosenPaths.count(sample.path) && rule.matches(sample, now)) steps.push_back({rule.id, sample});
    applySteps(steps, {rule}, listing, now, engine, out);
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
