#pragma once
#include <chrono>

namespace bv {

// The repeating clock's arithmetic on a clock that keeps counting through suspend.
// After firing at `deadline` with the current time `now`, the next deadline is one interval
// on; when that is already behind `now` (the machine slept through several intervals), it
// is one interval after `now`, so a long sleep gives exactly one tick, not one per interval.
template <class Duration>
[[nodiscard]] constexpr Duration nextClockDeadline(Duration deadline, Duration now, Duration interval) {
    Duration next = deadline + interval;
    if (next < now) next = now + interval;
    return next;
}

} // namespace bv
