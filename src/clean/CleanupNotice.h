#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace bv {

// An alert after a clean: a title and a message, both finished text.
struct CleanupNotice {
    std::string title;
    std::string message;
    friend bool operator==(const CleanupNotice&, const CleanupNotice&) = default;
};

// What a finished run tells the notices: counts of what happened.
struct CleanupRunCounts {
    std::int64_t cleanedCount = 0;     // log entries of the run
    std::int64_t cleanedBytes = 0;     // the sum of their bytes
    std::int64_t notStartedCount = 0;  // entries never started because of a stop
    std::int64_t failureCount = 0;     // failure lines, not counting the not-started ones
    std::int64_t trashedCount = 0;     // cleaned entries that are not permanent and not "npm"
};

// "Cleaning stopped", or nothing when nothing was left unstarted.
[[nodiscard]] std::optional<CleanupNotice> stoppedNotice(const CleanupRunCounts& run);

// The first-Trash notice, or nothing: only when nothing was left unstarted, at least one
// item went to the Trash and the notice was never shown (`didExplainTrashUndo`). The caller
// sets didExplainTrashUndo and saves the settings when this gives a notice.
[[nodiscard]] std::optional<CleanupNotice> firstTrashNotice(const CleanupRunCounts& run, bool didExplainTrashUndo);

// Where a notice goes: straight to `current`, or to `deferred` while another sheet stands
// in the way, from where it takes its place when that sheet has closed.
struct CleanupNoticeSlots {
    std::optional<CleanupNotice> current;  // cleanupNotice
    std::optional<CleanupNotice> deferred; // deferredCleanupNotice

    void post(CleanupNotice notice, bool sheetInTheWay);
    // The sheet in the way has closed: a deferred notice becomes current. True if it did.
    bool sheetClosed();
};

} // namespace bv
