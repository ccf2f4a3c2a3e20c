#include "core/ActionLog.h"

#include <algorithm>
#include <limits>
#include <set>

#include "foundation/ByteText.h"
#include "foundation/Saturating.h"

namespace bv {

LogAddition addLogEntries(std::vector<ActionLogEntry>& log, BrimvaleSettings& settings,
                          const std::vector<ActionLogEntry>& added, TimePoint now, const CalendarContext& calendar) {
    LogAddition result;
    if (added.empty()) return result;
    const auto firstAdded = log.insert(log.begin(), added.begin(), added.end());
    // Several Trash moves added together are one clean, which History can put back as a whole.
    const auto trashed = std::count_if(added.begin(), added.end(), [](const ActionLogEntry& e) { return e.trashedPath.has_value(); });
    if (trashed >= 2) {
        const Uuid run = Uuid::generate();
        for (auto it = firstAdded; it != firstAdded + static_cast<std::ptrdiff_t>(added.size()); ++it)
            if (it->trashedPath) it->runID = run;
    }
    // Trim before anyone saves, so the file never holds more than the cap.
    if (log.size() > kLogCapacity) log.resize(kLogCapacity);
    result.logChanged = true;

    std::int64_t freed = 0;
    std::int64_t putBack = 0;
    for (const auto& e : added) {
        if (e.putBackOf) putBack = saturatingAdd(putBack, -e.bytesReclaimed);
        else freed = saturatingAdd(freed, e.bytesReclaimed);
    }
    result.settingsChanged = applyLifetimeUpdate(settings, freed, now, calendar, result.milestone);
    // Space put back from the Trash was never freed after all; the count of clean-ups stays.
    if (putBack >= 1 && settings.lifetimeBytesFreed >= 1) {
        settings.lifetimeBytesFreed = std::max<std::int64_t>(0, settings.lifetimeBytesFreed - putBack);
        result.settingsChanged = true;
    }
    return result;
}

std::optional<std::int64_t> crossedMilestone(std::int64_t oldTotal, std::int64_t newTotal, std::int64_t lastReported) {
    // From the largest down: a jump across several milestones reports only the largest.
    for (auto it = kMilestoneTable.rbegin(); it != kMilestoneTable.rend(); ++it) {
        const std::int64_t t = *it;
        if (oldTotal < t && t <= newTotal && lastReported < t) return t;
    }
    return std::nullopt;
}

MilestoneNotice milestoneNotice(std::int64_t milestone, const BrimvaleSettings& settings, const CalendarContext& calendar) {
    MilestoneNotice n;
    n.milestoneBytes = milestone;
    n.title = byteText(milestone) + " back with Brimvale";
    n.body = byteText(settings.lifetimeBytesFreed) + " freed across ";
    n.body += settings.lifetimeCleanups == 1 ? std::string("1 cleanup")
                                             : std::to_string(settings.lifetimeCleanups) + " cleanups";
    if (settings.firstCleanupAt) n.body += " since " + calendar.format(*settings.firstCleanupAt, "MMMd");
    n.body += ".";
    return n;
}

bool applyLifetimeUpdate(BrimvaleSettings& settings, std::int64_t freed, TimePoint now, const CalendarContext& calendar,
                         std::optional<MilestoneNotice>& milestone) {
    if (freed < 1) return false;
    const std::int64_t old = settings.lifetimeBytesFreed;
    settings.lifetimeBytesFreed = saturatingAdd(old, freed);
    settings.lifetimeCleanups += 1;
    if (!settings.firstCleanupAt) settings.firstCleanupAt = now;
    if (auto t = crossedMilestone(old, settings.lifetimeBytesFreed, settings.lastMilestoneBytes)) {
        settings.lastMilestoneBytes = *t;
        milestone = milestoneNotice(*t, settings, calendar);
    }
    return true;
}

bool backfillLifetimeCounters(const std::vector<ActionLogEntry>& log, BrimvaleSettings& settings) {
    if (settings.lifetimeCleanups != 0 || settings.lifetimeBytesFreed != 0) return false;
    // Minutes are counted from 2001-01-01 and truncated, so entries of one clean (which
    // share a wall-clock minute) count once whichever side of the epoch they fall.
    constexpr std::int64_t kReferenceEpoch = 978'307'200;
    std::int64_t bytes = 0;
    std::set<std::int64_t> minutes;
    std::optional<TimePoint> first;
    for (const auto& e : log) {
        if (e.bytesReclaimed < 1) continue;
        bytes = saturatingAdd(bytes, e.bytesReclaimed);
        const double seconds =
            std::chrono::duration<double>(e.date.time_since_epoch()).count() - static_cast<double>(kReferenceEpoch);
        minutes.insert(static_cast<std::int64_t>(seconds / 60.0));
        if (!first || e.date < *first) first = e.date;
    }
    if (!first) return false;
    settings.lifetimeBytesFreed = bytes;
    settings.lifetimeCleanups = static_cast<std::int64_t>(minutes.size());
    settings.firstCleanupAt = first;
    std::int64_t reached = 0;
    for (const std::int64_t t : kMilestoneTable)
        if (t <= bytes) reached = t;
    settings.lastMilestoneBytes = reached;
    return true;
}

std::vector<ActionLogEntry> loadLog(const AppPersistence& store) {
    auto log = store.load(kLogFileName, [](const Json& j) { return decodeLog(j); });
    if (!log) return {};
    // A hand-edited file longer than the cap is cut on the way in, like every addition.
    if (log->size() > kLogCapacity) log->resize(kLogCapacity);
    return std::move(*log);
}

void saveLog(const AppPersistence& store, const std::vector<ActionLogEntry>& log) {
    store.saveJson(kLogFileName, encodeLog(log));
}

bool clearLog(std::vector<ActionLogEntry>& log) {
    const bool had = !log.empty();
    log.clear();
    return had;
}

} // namespace bv
