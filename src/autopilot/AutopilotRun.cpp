#include "autopilot/AutopilotRun.h"

#include "autopilot/ScheduleDates.h"
#include "clean/CleanupManifest.h"
#include "foundation/ByteText.h"

namespace bv {

std::vector<size_t> AutopilotRun::dueRules(const std::vector<FolderWatchRule>& rules, TimePoint now) {
    std::vector<size_t> due;
    for (size_t i = 0; i < rules.size(); ++i) {
        const auto& r = rules[i];
        if (r.isEnabled && r.schedule != CleanSchedule::off && r.nextRun && *r.nextRun <= now) due.push_back(i);
    }
    return due;
}

void AutopilotRun::advanceDue(std::vector<FolderWatchRule>& rules, const std::vector<size_t>& due, TimePoint now,
                              const CalendarContext& calendar) {
    for (size_t i : due)
        if (i < rules.size()) rules[i].nextRun = nextDate(rules[i].schedule, now, calendar);
}

AutopilotRun::Result AutopilotRun::run(const std::vector<FolderWatchRule>& rules, TimePoint now, const Environment& env) {
    Result result;
    for (const auto& rule : rules) {
        const auto plan = FolderRuleRunner::plan(rule, now, env.home);
        if (!plan) {
            result.turnedOff.push_back(rule.id);
            result.skips.push_back(skipNote(rule, kFolderMissingReason, now));
            continue;
        }
        std::int64_t bytes = 0;
        for (const auto& e : plan->entries) bytes += e.bytes;
        const auto count = static_cast<std::int64_t>(plan->entries.size());
        if (auto over = confirmedBoundMessage(count, bytes, rule.confirmedCount, rule.confirmedBytes)) {
            result.skips.push_back(skipNote(rule, *over + kPreviewAgainSuffix, now));
            continue;
        }
        result.entries.insert(result.entries.end(), plan->entries.begin(), plan->entries.end());
    }
    if (result.entries.empty()) return result;

    result.cleaned = Cleaner(env.cleaner).applyList(result.entries, env.home);
    result.manifestPath = CleanupManifest::write("autopilot", result.cleaned.logs, result.cleaned.failures, now,
                                                 env.logsFolder, env.appVersion);
    bool trashed = false;
    for (const auto& log : result.cleaned.logs) {
        result.freedBytes += log.bytesReclaimed;
        trashed = trashed || log.symbolName != "trash.slash";
    }
    if (result.freedBytes > 0) {
        const auto n = static_cast<std::int64_t>(result.cleaned.logs.size());
        result.freedMessage = "Autopilot freed " + byteText(result.freedBytes) + " from " + std::to_string(n) +
                              (n == 1 ? " item." : " items.") + (trashed ? " Empty the Trash to get the space back." : "");
    }
    return result;
}

} // namespace bv
