#pragma once
#include <optional>
#include <string>

#include "core/ActionLogEntry.h"
#include "platform/SafeFileSystem.h"

namespace bv {

// An item that a History entry sent to the Trash, found again: still in files/ under the
// name the entry recorded, with its .trashinfo in info/ naming where it came from. The
// trash folder, files/ and info/ are held open, so everything done with the record after
// finding it happens relative to these handles and never through a link swapped in later.
struct TrashRecord {
    std::string trashFolder;  // <trash>
    std::string trashName;    // the item's name in <trash>/files
    std::string infoName;     // trashName + ".trashinfo"
    std::string originalPath; // the .trashinfo's Path, made absolute for a drive's own Trash
    ItemStat stat;            // the item in files/, as found
    UniqueFd folder;
    UniqueFd files;
    UniqueFd info;

    // Where the entry's item landed in the Trash: its trashedPath, or a destination that lies
    // in a Trash's files/ folder (Auto-Sort records its Trash moves that way). Empty for an
    // entry that sent nothing to the Trash.
    [[nodiscard]] static std::optional<std::string> landingOf(const ActionLogEntry& entry);

    // Finds the entry's item. Empty when the entry sent nothing to the Trash or when the
    // item is no longer there as recorded: emptied, restored by another program, its record
    // gone or naming another item than the entry's (its last name differs from the entry's
    // source, or, for a landing that was not recorded as such, its whole path does).
    // Blocking; never changes anything.
    [[nodiscard]] static std::optional<TrashRecord> find(const ActionLogEntry& entry);

    // The Path value of a .trashinfo's text, decoded; empty when the text has none or is not
    // a Trash record. Relative values stay relative.
    [[nodiscard]] static std::optional<std::string> pathInInfo(const std::string& infoText);
};

} // namespace bv
