#pragma once
#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace bv {

using Clock = std::chrono::system_clock;
using TimePoint = std::chrono::system_clock::time_point;

// ISO 8601 in UTC to the second: "2026-11-15T22:16:00Z". Sub-second parts are dropped.
[[nodiscard]] std::string isoDateText(TimePoint t);

// Reads "YYYY-MM-DDThh:mm:ssZ", optionally with a fraction ".123" before the zone and a
// numeric offset ("+01:00") instead of "Z". Anything else gives nothing.
[[nodiscard]] std::optional<TimePoint> parseIsoDate(std::string_view text);

// Two dates are the same moment when they differ by at most one second.
[[nodiscard]] bool sameMoment(TimePoint a, TimePoint b);

// Whole seconds since the epoch and back.
[[nodiscard]] std::int64_t epochSeconds(TimePoint t);
[[nodiscard]] TimePoint fromEpochSeconds(std::int64_t s);

} // namespace bv
