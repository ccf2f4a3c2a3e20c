#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "autopilot/FolderRuleRunner.h"
#include "autopilot/FolderWatchRule.h"
#include "clean/Cleaner.h"
#include "foundation/CalendarContext.h"
#include "foundation/Uuid.h"

namespace bv {

// A run of Autopilot: the due rules, in list order, each listed and held to the bound of its
// confirmed preview, and what remains handed to the cleaner in one go.
//
// The caller moves the due rules' next run (advanceDue) and saves the list before any work,
// so a failing rule does not retry on every tick; then `run` does the blocking part off the
// main thread with a copy of the rules; then the caller applies `turnedOff` to its list,
// saves it, logs, and posts the notifications.
class AutopilotRun {
public:
    // The indices of the enabled rules with a schedule whose next run is at or before `now`.
    [[nodiscard]] static std::vector<size_t> dueRules(const std::vector<FolderWatchRule>& rules, TimePoint now);
    // Gives each of those rules its next run from `now` by its schedule.
    static void advanceDue(std::vector<FolderWatchRule>& rules, const std::vector<size_t>& due, TimePoint now,
                           const CalendarContext& calendar);

    struct Environment {
        std::string home;
        std::string logsFolder; // where the manifest goes
        std::string appVersion = "dev";
        Cleaner::Environment cleaner;
    };

    struct Result {
        std::vector<Uuid> turnedOff;           // rules whose folder is gone: now off
        std::vector<FolderRuleSkip> skips;     // one per rule passed over, in list order
        std::vector<CleanupEntry> entries;     // what was handed to the cleaner
        Cleaner::ListResult cleaned;
        std::optional<std::string> manifestPath;
        std::int64_t freedBytes = 0;
        // "Autopilot freed <size> from <n> items." and, when something went to the Trash,
        // " Empty the Trash to get the space back."; nothing when no bytes were freed.
        std::optional<std::string> freedMessage;
    };

    // Runs the given rules (all steps but the due test: "Run now" passes one rule). Blocking.
    [[nodiscard]] static Result run(const std::vector<FolderWatchRule>& rules, TimePoint now, const Environment& env);

    static constexpr const char* kRunningStatus = "Autopilot is running";
    static constexpr const char* kSkipTitle = "Autopilot";
    static constexpr const char* kFreedTitle = "Brimvale";
};

} // namespace bv
