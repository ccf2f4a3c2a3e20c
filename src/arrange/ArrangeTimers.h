#pragma once
#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/Dates.h"

namespace bv {

// When Auto-Arrange sweeps Downloads. A folder event (re)starts a 3-second debounce, so a
// burst of events makes one sweep 3 seconds after the last; a sweep that leaves a matching
// file still settling asks for another 2.5 seconds later, because a file that merely stops
// changing sends no event; each clock tick sweeps at once to catch up. Only one sweep runs
// at a time: one asked for while another runs is held and comes 2.5 seconds after it ends.
// Time is passed in, so the caller's timer only has to wake at `nextDeadline()`.
class ArrangeTimers {
public:
    static constexpr std::chrono::milliseconds kDebounce{3000};
    static constexpr std::chrono::milliseconds kRecheck{2500};
    // After reading a batch of folder events the reader rests this long before reading
    // again. Events only push the debounce back, so reading them late costs a sweep at most
    // this much delay, while a folder filling with thousands of files wakes the program ten
    // times a second instead of once per file.
    static constexpr std::chrono::milliseconds kReadPause{100};

    // A folder event: any pending debounce is replaced by one ending 3 seconds from now.
    void noteEvent(TimePoint now);
    // An entry event. The echo of a move the last sweep made itself (that name leaving the
    // folder) is used up and starts nothing, so a sweep that moves files is not followed
    // by another one for its own moves.
    void noteEntryEvent(TimePoint now, const std::string& name, bool left);
    // A clock tick: a sweep is due now.
    void noteTick(TimePoint now);

    // True when a sweep should start now: a deadline has passed and none is running. The
    // deadlines that passed are used up. While a sweep runs the request is held instead.
    [[nodiscard]] bool takeDue(TimePoint now);
    // Starts a sweep outside the deadlines (Arrange now, saving a pattern); false while one runs.
    [[nodiscard]] bool begin();
    // The running sweep ended; with files still settling (or a held request) a recheck
    // follows. `movedNames` are the files it moved out of the folder.
    void finish(TimePoint now, bool stillSettling, const std::vector<std::string>& movedNames = {});

    [[nodiscard]] bool inFlight() const { return inFlight_; }
    // The earliest pending deadline, for the caller's single-shot timer.
    [[nodiscard]] std::optional<TimePoint> nextDeadline() const;
    // Forget every pending sweep (the watcher stopped).
    void clear();

private:
    std::optional<TimePoint> debounce_;
    std::optional<TimePoint> recheck_;
    bool inFlight_ = false;
    bool heldWhileRunning_ = false;
    std::multiset<std::string> ownMoves_;
};

} // namespace bv
