#include "arrange/ArrangeTimers.h"

#include <algorithm>

namespace bv {

void ArrangeTimers::noteEvent(TimePoint now) { debounce_ = now + kDebounce; }

void ArrangeTimers::noteEntryEvent(TimePoint now, const std::string& name, bool left) {
    if (left) {
        if (const auto own = ownMoves_.find(name); own != ownMoves_.end()) {
            ownMoves_.erase(own);
            return;
        }
    }
    noteEvent(now);
}

void ArrangeTimers::noteTick(TimePoint now) { recheck_ = recheck_ ? std::min(*recheck_, now) : now; }

bool ArrangeTimers::takeDue(TimePoint now) {
    const bool due = (debounce_ && *debounce_ <= now) || (recheck_ && *recheck_ <= now);
    if (!due) return false;
    if (debounce_ && *debounce_ <= now) debounce_.reset();
    if (recheck_ && *recheck_ <= now) recheck_.reset();
    if (inFlight_) {
        heldWhileRunning_ = true;
        return false;
    }
    inFlight_ = true;
    return true;
}

bool ArrangeTimers::begin() {
    if (inFlight_) {
        heldWhileRunning_ = true;
        return false;
    }
    inFlight_ = true;
    return true;
}

void ArrangeTimers::finish(TimePoint now, bool stillSettling, const std::vector<std::string>& movedNames) {
    inFlight_ = false;
    // Echoes not seen by now were lost (an overflow); only this sweep's moves are expected.
    ownMoves_ = std::multiset<std::string>(movedNames.begin(), movedNames.end());
    if (stillSettling || heldWhileRunning_) {
        const TimePoint at = now + kRecheck;
        recheck_ = recheck_ ? std::min(*recheck_, at) : at;
    }
    heldWhileRunning_ = false;
}

std::optional<TimePoint> ArrangeTimers::nextDeadline() const {
    if (debounce_ && recheck_) return std::min(*debounce_, *recheck_);
    return debounce_ ? debounce_ : recheck_;
}

void ArrangeTimers::clear() {
    ownMoves_.clear();
    debounce_.reset();
    recheck_.reset();
    heldWhileRunning_ = false;
}

} // namespace bv
