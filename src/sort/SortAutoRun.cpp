#include "sort/SortAutoRun.h"

#include <algorithm>

#include "autopilot/ScheduleDates.h"
#include "sort/RuleMatcher.h"

namespace bv {

bool SortAutoRun::isDue(const SortRule& rule, TimePoint now) {
    if (rule.kind != SortRuleKind::sort || !rule.isEnabled) return false;
    const bool acts = rule.action.type == SortAction::Type::trash ||
                      (rule.action.type == SortAction::Type::moveToFolder && !rule.action.argument.empty());
    if (!acts) return false;
    switch (rule.trigger.type) {
    case SortTrigger::Type::whenAdded: return true;
    case SortTrigger::Type::manual: return false;
    case SortTrigger::Type::schedule:
        return rule.trigger.schedule != CleanSchedule::off && (!rule.nextRun || *rule.nextRun <= now);
    }
    return false;
}

bool SortAutoRun::anyDue(const std::vector<SortRule>& rules, TimePoint now) {
    return std::any_of(rules.begin(), rules.end(), [&](const SortRule& r) { return isDue(r, now); });
}

std::vector<FileSample> SortAutoRun::arrivedCandidates(const SortRule& rule, const std::vector<FileSample>& samples,
                                                      TimePoint now) {
    std::vector<FileSample> out;
    const TimePoint settledBefore = now - std::chrono::seconds(kSettleSeconds);
    for (const auto& s : samples) {
        const auto arrived = s.added ? s.added : s.modified;
        if (arrived && *arrived >= rule.createdAt && *arrived <= settledBefore) out.push_back(s);
    }
    return out;
}

SortAutoRun::Plan SortAutoRun::plan(std::vector<SortRule> rules, const std::vector<FileSample>& samples, TimePoint now,
                                    const CalendarContext& calendar) {
    Plan result;
    result.simulation.id = Uuid::generate();
    result.simulation.createdAt = now;
    for (auto& rule : rules) {
        if (!isDue(rule, now)) continue;
        const bool arrival = rule.trigger.type == SortTrigger::Type::whenAdded;
        if (!arrival) {
            rule.nextRun = nextDate(rule.trigger.schedule, now, calendar);
            result.rulesChanged = true;
        }
        const RuleMatcher matcher(rule);
        const std::string place = placeNameFor(rule);
        const auto planFor = [&](const std::vector<FileSample>& candidates) {
            for (const auto& s : candidates)
                if (matcher.matches(s, now)) result.simulation.actions.push_back(plannedAction(s, rule, place));
        };
        if (arrival) planFor(arrivedCandidates(rule, samples, now));
        else planFor(samples);
    }
    result.rules = std::move(rules);
    return result;
}

std::string SortAutoRun::notificationBody(std::size_t entryCount) {
    return "Sorted " + std::to_string(entryCount) + " " + (entryCount == 1 ? "file" : "files") +
           ". Details are in History.";
}

} // namespace bv
