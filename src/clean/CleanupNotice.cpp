#include "clean/CleanupNotice.h"

#include "foundation/ByteText.h"
#include "platform/PlatformWording.h"

namespace bv {

std::optional<CleanupNotice> stoppedNotice(const CleanupRunCounts& run) {
    if (run.notStartedCount <= 0) return std::nullopt;
    std::string message;
    if (run.cleanedCount > 0) {
        const bool one = run.cleanedCount == 1;
        message = std::to_string(run.cleanedCount) + " " + (one ? "item" : "items") + " (" + byteText(run.cleanedBytes) +
                  ") " + (one ? "was" : "were") + " already cleaned.";
    } else {
        message = "Nothing was removed.";
    }
    if (run.notStartedCount == 1)
        message += " 1 item was left exactly as it was.";
    else
        message += " " + std::to_string(run.notStartedCount) + " items were left exactly as they were.";
    if (run.failureCount > 0)
        message += " " + std::to_string(run.failureCount) + " " + (run.failureCount == 1 ? "item" : "items") +
                   " couldn’t be cleaned.";
    return CleanupNotice{"Cleaning stopped", message};
}

std::optional<CleanupNotice> firstTrashNotice(const CleanupRunCounts& run, bool didExplainTrashUndo) {
    if (run.notStartedCount > 0 || run.trashedCount < 1 || didExplainTrashUndo) return std::nullopt;
    const bool one = run.trashedCount == 1;
    CleanupNotice n;
    n.title = std::string(one ? "It’s" : "They’re") + " in the Trash";
    n.message = platformWording(
        "Brimvale moved " + (one ? std::string("that item") : "those " + std::to_string(run.trashedCount) + " items") +
        " to the Trash. To undo, open the Trash in the Dock and choose Put Back. A list of every item cleaned is saved "
        "as a JSON file in ~/Library/Logs/Brimvale. The space comes back when you empty the Trash.");
    return n;
}

void CleanupNoticeSlots::post(CleanupNotice notice, bool sheetInTheWay) {
    if (sheetInTheWay) deferred = std::move(notice);
    else current = std::move(notice);
}

bool CleanupNoticeSlots::sheetClosed() {
    if (!deferred) return false;
    current = std::move(deferred);
    deferred.reset();
    return true;
}

} // namespace bv
