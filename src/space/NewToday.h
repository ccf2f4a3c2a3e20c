#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/CalendarContext.h"
#include "foundation/Dates.h"

namespace bv {

enum class WatchedLocation { desktop, downloads };

// A top-level entry of a folder.
struct ScannedFile {
    std::string path;
    std::string name;
    std::int64_t size = 0;
    std::optional<TimePoint> added;
    std::string kind;
    friend bool operator==(const ScannedFile&, const ScannedFile&) = default;
};

struct TrackedFile {
    std::string path;
    std::string name;
    std::int64_t size = 0;
    std::string kind;
    TimePoint added;
    WatchedLocation location = WatchedLocation::downloads;
    friend bool operator==(const TrackedFile&, const TrackedFile&) = default;
};

// When an entry arrived in its folder, from what statx says of it. The birth time counts where
// the file system gives one; the status-change time counts only where it marks an arrival,
// that is where the content's modification time is older (a rename into the folder moves
// the status change and leaves the content alone). The later of the two wins. A file written
// or a folder whose contents changed has equal times and no birth to go by: no date.
[[nodiscard]] std::optional<TimePoint> addedDate(std::optional<TimePoint> birth, TimePoint statusChange,
                                                 TimePoint modified);

// The direct contents of a folder, hidden names left out. A folder's size is the sum of the
// allocated sizes below it (links not followed); an ".app" folder counts as one entry. The
// added date is addedDate's. When `addedSince` is given, entries added before it (or with no
// date) are left out before anything is measured. A folder that cannot be read gives an
// empty list.
[[nodiscard]] std::vector<ScannedFile> scanFolder(const std::string& folder,
                                                  std::optional<TimePoint> addedSince = std::nullopt);

// Entries added at or after the start of today, newest first.
[[nodiscard]] std::vector<TrackedFile> newToday(const std::string& folder, WatchedLocation location, TimePoint now,
                                               const CalendarContext& calendar);

// A kind for people from the name's extension: "PDF document", "ZIP archive", "Folder".
[[nodiscard]] std::string kindDescription(const std::string& name, bool isDirectory);

} // namespace bv
