#include "space/LowSpaceAlerts.h"
#include "foundation/Saturating.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace bv {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kGigabyte = 1'000'000'000;
constexpr std::int64_t kSizeMargin = 5 * kGigabyte;
constexpr auto kReminderGap = std::chrono::seconds(86400);

// a + b for non-negative a and b, stopping at the largest value instead of wrapping.

struct Candidate {
    std::int64_t limit = 0;
    std::int64_t rearm = 0;
};

std::optional<Candidate> bySize(std::int64_t total, std::int64_t gigabytes) {
    if (gigabytes < 1) return std::nullopt;
    const std::int64_t limit = gigabytes > kMax / kGigabyte ? kMax : gigabytes * kGigabyte;
    return Candidate{limit, std::min(saturatingAdd(limit, kSizeMargin), total)};
}

std::optional<Candidate> byShare(std::int64_t total, std::int64_t percent) {
    if (percent < 1 || percent > 99) return std::nullopt;
    // total * percent / 100 without the product: (100q + r) * p / 100 = q * p + r * p / 100.
    const std::int64_t limit = (total / 100) * percent + (total % 100) * percent / 100;
    const std::int64_t margin = total < 100 ? 1 : total / 50;
    return Candidate{limit, std::min(saturatingAdd(limit, margin), total)};
}

} // namespace

const char* lowSpaceSeverityName(LowSpaceSeverity severity) {
    switch (severity) {
    case LowSpaceSeverity::none: return "none";
    case LowSpaceSeverity::warning: return "warning";
    case LowSpaceSeverity::critical: return "critical";
    }
    return "none";
}

LowSpaceLimits lowSpaceLimits(std::int64_t totalBytes, bool alertsEnabled, LowSpaceUnit unit, std::int64_t gigabytes,
                              std::int64_t percent, bool belowEither) {
    if (!alertsEnabled || totalBytes < 1) return {};
    const std::optional<Candidate> size = bySize(totalBytes, gigabytes);
    const std::optional<Candidate> share = byShare(totalBytes, percent);
    std::optional<Candidate> chosen;
    if (belowEither) {
        if (size && share) chosen = share->limit > size->limit ? share : size;
        else chosen = size ? size : share;
    } else {
        chosen = unit == LowSpaceUnit::gigabytes ? size : share;
    }
    if (!chosen) return {};
    return {chosen->limit, chosen->rearm, false};
}

LowSpaceStatus evaluateLowSpace(std::int64_t freeBytes, std::int64_t totalBytes, const BrimvaleSettings& settings,
                                TimePoint now) {
    const LowSpaceLimits limits =
        lowSpaceLimits(totalBytes, settings.alertsEnabled, settings.lowSpaceUnit, settings.lowSpaceGigabytes,
                       settings.lowSpacePercent, settings.alertWhenBelowEither);
    LowSpaceStatus status;
    status.lastAlert = settings.lowSpaceLastAlert;
    if (limits.noLimit) return status; // nothing to watch: the latch stays open

    if (freeBytes >= limits.limitBytes) {
        // The latch closes on a crossing and re-opens only above the margin, so free space
        // that hovers around the limit alerts once.
        status.armed = settings.lowSpaceArmed || freeBytes >= limits.rearmBytes;
        return status;
    }

    // Half of the limit without rounding: free * 2 >= limit, written so it cannot overflow.
    const bool atLeastHalf = freeBytes >= 0 && freeBytes >= limits.limitBytes - freeBytes;
    status.severity = atLeastHalf ? LowSpaceSeverity::warning : LowSpaceSeverity::critical;
    status.showBanner = true;
    status.armed = false;
    if (settings.lowSpaceArmed) {
        status.shouldNotify = true;
        status.lastAlert = now;
    } else if (settings.lowSpaceRemindDaily &&
               (!settings.lowSpaceLastAlert || now - *settings.lowSpaceLastAlert >= kReminderGap)) {
        status.shouldNotify = true;
        status.lastAlert = now;
    }
    return status;
}

} // namespace bv
