#pragma once
// A plain event loop around the Auto-Arrange pieces for tests: the real inotify watcher on a
// real folder, the real timers, sweeps and Auto-Sort apply path, run on the test's own thread with poll()
// instead of the application's event loop.
#include <poll.h>

#include <functional>
#include <map>
#include <set>

#include "arrange/ArrangePatterns.h"
#include "arrange/ArrangeSweep.h"
#include "arrange/ArrangeTimers.h"
#include "arrange/NamePattern.h"
#include "foundation/CalendarContext.h"
#include "platform/DirectoryWatcher.h"
#include "sort/RuleRunEngine.h"

namespace bv::test {

inline SortRule arrangeRule(const std::string& glob, const std::string& folder, TimePoint liveSince) {
    return makeArrangeRule(glob, *NamePattern::parse(glob), folder, liveSince);
}

// Auto-Sort's apply path acting in `downloads` only.
inline RuleRunEngine engineFor(const std::string& downloads) {
    return RuleRunEngine(downloads, {}, CalendarContext("en_US", "Europe/Berlin"));
}

struct ArrangeRig {
    std::string downloads;
    std::vector<SortRule> rules;
    DirectoryWatcher watcher;
    ArrangeTimers timers;
    ArrangeSettleTracker tracker;
    std::set<std::string> leftAlone;
    std::map<Uuid, std::vector<FileSample>> waiting;
    std::vector<ArrangeMoved> moved;
    std::vector<std::string> errors;
    std::vector<TimePoint> sweepTimes;

    void align() {
        if (arrangeWatchedPlaces(rules).empty())
            watcher.stop();
        else
            (void)watcher.start(downloads);
    }

    void sweep(TimePoint now) {
        align();
        sweepTimes.push_back(now);
        auto out = runArrangeSweep(downloads, rules, tracker, leftAlone, now, engineFor(downloads));
        tracker = std::move(out.tracker);
        leftAlone = std::move(out.leftAlone);
        waiting = std::move(out.waiting);
        recordArrangeMoves(rules, out.moved);
        moved.insert(moved.end(), out.moved.begin(), out.moved.end());
        errors.insert(errors.end(), out.errors.begin(), out.errors.end());
        timers.finish(Clock::now(), out.stillSettling, out.movedNames());
    }

    // Runs for `limit` of real time or until `done()` holds after a sweep.
    void runFor(std::chrono::milliseconds limit, const std::function<bool()>& done = {}) {
        align();
        const TimePoint end = Clock::now() + limit;
        TimePoint readAgain{};
        for (;;) {
            TimePoint now = Clock::now();
            if (timers.takeDue(now)) {
                sweep(now);
                if (done && done()) return;
                continue;
            }
            if (now >= end) return;
            TimePoint wake = end;
            if (auto deadline = timers.nextDeadline()) wake = std::min(wake, *deadline);
            const bool resting = now < readAgain;
            if (resting) wake = std::min(wake, readAgain);
            const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(wake - now).count();
            pollfd p{watcher.fd(), POLLIN, 0};
            if (::poll(&p, resting ? 0 : 1, static_cast<int>(std::max<std::int64_t>(ms, 1))) > 0) {
                for (const DirectoryEvent& e : watcher.readEvents()) timers.noteEntryEvent(Clock::now(), e.name, e.left);
                readAgain = Clock::now() + ArrangeTimers::kReadPause;
            }
        }
    }
};

} // namespace bv::test
