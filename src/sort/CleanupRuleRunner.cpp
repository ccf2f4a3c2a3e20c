#include "sort/CleanupRuleRunner.h"

#include <sys/stat.h>

#include "clean/DevCacheCatalog.h"
#include "sort/RulePerformer.h"

namespace bv {

CleanupRuleRunner::CleanupRuleRunner(std::string downloads, CalendarContext calendar)
    : downloads_(std::move(downloads)), calendar_(std::move(calendar)) {}

std::optional<RunnerError> CleanupRuleRunner::check(const PlannedAction& step, const CleanupRule& rule,
                                                    TimePoint now) const {
    const RuleRunEngine inside(downloads_, {}, calendar_);
    if (!inside.isInsideRoots(step.sourcePath)) return RunnerError::outsideDownloads;
    struct stat st{};
    const bool known = ::lstat(step.sourcePath.c_str(), &st) == 0;
    if (known && S_ISDIR(st.st_mode)) return RunnerError::refusingDirectory;
    if (rule.action == RuleAction::trash) {
        if (!rule.minimumAgeDays || *rule.minimumAgeDays < 1) return RunnerError::deleteRequiresAge;
        if (!known) return RunnerError::ageUnverified;
        // The date the file came into the folder, as gathering reads it.
        const TimePoint added{std::chrono::seconds(st.st_ctim.tv_sec)};
        if (now - added < std::chrono::seconds(*rule.minimumAgeDays * 86400)) return RunnerError::tooYoung;
    } else {
        struct stat folder{};
        if (!rule.destinationPath || ::stat(rule.destinationPath->c_str(), &folder) != 0 || !S_ISDIR(folder.st_mode))
            return RunnerError::missingDestination;
    }
    if (DevCacheCatalog::isSystemPath(step.sourcePath) || DevCacheCatalog::hasGitComponent(step.sourcePath))
        return RunnerError::protectedPath;
    return std::nullopt;
}

ApplyOutcome CleanupRuleRunner::apply(const SimulationResult& simulation, const std::set<Uuid>& excluded,
                                      const CleanupRule& rule, TimePoint now) const {
    const SortRule converted = sortRuleFromCleanupRule(rule);
    ApplyOutcome outcome;
    for (const auto& step : simulation.actions) {
        if (excluded.count(step.id)) continue;
        const std::string failed = "Couldn\u2019t update " + step.fileName + ": ";
        if (const auto problem = check(step, rule, now)) {
            outcome.errors.push_back(failed + runnerErrorMessage(*problem));
            continue;
        }
        try {
            outcome.entries.push_back(RulePerformer::perform(step, converted, now, calendar_));
        } catch (const std::exception& e) {
            outcome.errors.push_back(failed + e.what());
        }
    }
    return outcome;
}

} // namespace bv
