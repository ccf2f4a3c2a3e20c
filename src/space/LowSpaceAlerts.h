#pragma once
#include <cstdint>
#include <optional>

#include "core/BrimvaleSettings.h"
#include "foundation/Dates.h"

namespace bv {

// How low the disk is: below the limit is a warning, below half of it critical.
enum class LowSpaceSeverity { none, warning, critical };

// "none", "warning" or "critical".
[[nodiscard]] const char* lowSpaceSeverityName(LowSpaceSeverity severity);

// The limit free space is measured against and the level it must climb back to before the
// next crossing alerts again. With `noLimit` set the two byte counts mean nothing.
struct LowSpaceLimits {
    std::int64_t limitBytes = 0;
    std::int64_t rearmBytes = 0;
    bool noLimit = true;

    friend bool operator==(const LowSpaceLimits&, const LowSpaceLimits&) = default;
};

// The limit for a volume of `totalBytes`. No limit applies with alerts off or a total below 1.
// A size limit needs at least 1 gigabyte (decimal) and re-arms 5 GB above itself; a share
// limit needs a percent from 1 to 99 and re-arms 2 % of the disk above itself (1 byte on a
// disk below 100 bytes). Re-arm levels never exceed the total. With `belowEither` the larger
// of the two limits is taken (the size limit on a tie); otherwise the one of `unit`, if it
// exists. Stored values are never clamped here, and huge ones saturate instead of wrapping.
[[nodiscard]] LowSpaceLimits lowSpaceLimits(std::int64_t totalBytes, bool alertsEnabled, LowSpaceUnit unit,
                                            std::int64_t gigabytes, std::int64_t percent, bool belowEither);

// The result of one evaluation: what to show, whether to notify, and the latch's new state
// (`armed` true means the next crossing notifies). `lastAlert` is the stored one unless this
// evaluation notifies, when it is `now`.
struct LowSpaceStatus {
    LowSpaceSeverity severity = LowSpaceSeverity::none;
    bool shouldNotify = false;
    bool showBanner = false;
    bool armed = true;
    std::optional<TimePoint> lastAlert;

    friend bool operator==(const LowSpaceStatus&, const LowSpaceStatus&) = default;
};

// Free space against the limit of `settings`, with the latch and the last alert read from
// `settings` too. Free space equal to the limit is not low. Below the limit the banner shows;
// an armed latch notifies and closes; a closed latch notifies again only with daily reminders
// on and the last alert at least 86400 s before `now` (or never sent). At or above the limit
// the latch re-opens once free space reaches the re-arm level, and otherwise keeps its state.
[[nodiscard]] LowSpaceStatus evaluateLowSpace(std::int64_t freeBytes, std::int64_t totalBytes,
                                              const BrimvaleSettings& settings, TimePoint now);

} // namespace bv
