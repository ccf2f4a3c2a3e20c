#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "autopilot/FolderRuleDraft.h"
#include "autopilot/FolderWatchRule.h"
#include "core/AppPersistence.h"
#include "foundation/CalendarContext.h"

namespace bv {

// Saving the builder's draft as a folder rule once its preview was confirmed.
class FolderRuleSaving {
public:
    // The rule the draft describes, as a new rule made `now`: its folder, sentence and
    // conditions (an age or a keep-newest count only when ticked), scope, disposition and
    // schedule. Not yet enabled or scheduled: see `save`.
    [[nodiscard]] static FolderWatchRule ruleFromDraft(const FolderRuleDraft& draft, TimePoint now);

    struct Saved {
        std::vector<FolderWatchRule> rules;
        FolderRuleDraft draft;     // fresh, with the default schedule
        std::string message;       // kFolderRuleSaved
        FolderWatchRule rule;      // as saved
    };

    // Builds the rule with the confirmed preview's figures, its next run by its schedule from
    // `now`, enabled; when `editing` names a rule of the list the new one takes its place (and
    // keeps its id and creation date), otherwise it is appended; writes "folder-rules.json";
    // and gives back a fresh draft with `defaultSchedule`.
    [[nodiscard]] static Saved save(const std::vector<FolderWatchRule>& rules, const FolderRuleDraft& draft,
                                    const std::optional<Uuid>& editing, std::int64_t confirmedCount,
                                    std::int64_t confirmedBytes, TimePoint now, const CalendarContext& calendar,
                                    CleanSchedule defaultSchedule, const AppPersistence& persistence);
};

} // namespace bv
