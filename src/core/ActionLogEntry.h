#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"

namespace bv {

// One line of History: something that moved or removed a file. The writer of an entry
// (the cleaner, a sort or arrange move, a Build Watch run) chooses its texts.
struct ActionLogEntry {
    Uuid id;
    TimePoint date;
    std::string title;      // what was done, in words for the list
    std::string subtitle;   // the detail line
    std::string symbolName; // icon name, mapped to the desktop's icon theme by the screens
    std::int64_t bytesReclaimed = 0; // space given back; 0 for a move that frees nothing
    std::string sourcePath;
    std::optional<std::string> destinationPath; // where it went, if anywhere
    // Where a move to the Trash landed (<trash>/files/<name>), so History can put it back
    // while the Trash still holds it. Absent for everything else.
    std::optional<std::string> trashedPath;
    // The clean this entry belongs to, when one clean moved several items to the Trash: what
    // "Put back all" puts back together.
    std::optional<Uuid> runID;
    // On a put-back, the entry whose Trash move it undid.
    std::optional<Uuid> putBackOf;

    friend bool operator==(const ActionLogEntry&, const ActionLogEntry&) = default;

    [[nodiscard]] Json toJson() const;
    // Every key but destinationPath, trashedPath, runID and putBackOf is required; a missing key or a wrong type throws
    // DecodeError (an id that is no UUID too).
    [[nodiscard]] static ActionLogEntry fromJson(const Json& json);
};

// "log.json": the list of entries, newest first.
inline constexpr const char* kLogFileName = "log.json";

[[nodiscard]] Json encodeLog(const std::vector<ActionLogEntry>& entries);
// One bad entry fails the whole list (throws DecodeError); the caller then starts empty.
[[nodiscard]] std::vector<ActionLogEntry> decodeLog(const Json& json);

} // namespace bv
