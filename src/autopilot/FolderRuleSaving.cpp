#include "autopilot/FolderRuleSaving.h"

#include "autopilot/ScheduleDates.h"

namespace bv {

FolderWatchRule FolderRuleSaving::ruleFromDraft(const FolderRuleDraft& draft, TimePoint now) {
    FolderWatchRule rule;
    rule.id = Uuid::generate();
    rule.parentPath = draft.parentPath.value_or("");
    rule.parentBookmark = draft.parentBookmark;
    rule.phrase = draft.phrase;
    rule.names = draft.names();
    rule.extensions = draft.extensions();
    rule.glob = draft.globPattern();
    rule.minimumAgeDays = draft.age();
    rule.keepNewest = draft.newestToKeep();
    rule.directoriesOnly = draft.directoriesOnly;
    rule.scope = draft.scope;
    rule.disposition = draft.disposition;
    rule.schedule = draft.schedule;
    rule.isEnabled = false;
    rule.createdAt = now;
    return rule;
}

FolderRuleSaving::Saved FolderRuleSaving::save(const std::vector<FolderWatchRule>& rules, const FolderRuleDraft& draft,
                                               const std::optional<Uuid>& editing, std::int64_t confirmedCount,
                                               std::int64_t confirmedBytes, TimePoint now, const CalendarContext& calendar,
                                               CleanSchedule defaultSchedule, const AppPersistence& persistence) {
    Saved saved;
    saved.rules = rules;
    FolderWatchRule rule = ruleFromDraft(draft, now);
    rule.confirmedCount = confirmedCount;
    rule.confirmedBytes = confirmedBytes;
    rule.nextRun = nextDate(rule.schedule, now, calendar);
    rule.isEnabled = true;

    bool replaced = false;
    if (editing) {
        for (auto& existing : saved.rules) {
            if (existing.id != *editing) continue;
            rule.id = existing.id;
            rule.createdAt = existing.createdAt;
            existing = rule;
            replaced = true;
            break;
        }
    }
    if (!replaced) saved.rules.push_back(rule);

    saveFolderRules(persistence, saved.rules);
    saved.draft = FolderRuleDraft::fresh(defaultSchedule);
    saved.message = kFolderRuleSaved;
    saved.rule = std::move(rule);
    return saved;
}

} // namespace bv
