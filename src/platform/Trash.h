#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/Dates.h"
#include "platform/SafeFileSystem.h"

namespace bv {

// The desktop Trash shared with file managers and other tools (the freedesktop.org Trash
// layout, version 1.0). Items on the home folder's file system go to $XDG_DATA_HOME/Trash;
// items on another file system go to $topdir/.Trash/$uid when $topdir/.Trash is a real
// sticky folder, else to $topdir/.Trash-$uid. Names are bytes throughout.
//
// A move never copies and never deletes: when the item can't be renamed into the Trash
// (another file system, no usable Trash folder) it stays where it is and an error says why.
class Trash {
public:
    // Where a trashed item now lies.
    struct Landing {
        std::string trashedPath;  // <trash>/files/<name>
        std::string infoPath;     // <trash>/info/<name>.trashinfo
        std::string trashFolder;  // <trash>
    };

    // Moves the pinned item (see pinItem) to the Trash that serves its file system. The
    // .trashinfo is made first (O_EXCL, another name on collision, a shorter one when the
    // name is too long), written whole and synced; then the item is renamed into files/
    // with RENAME_NOREPLACE, relative to the pinned parent, so no link on the way is ever
    // followed. What landed is checked to be the pinned object; a stranger goes back and
    // ItemChangedError is thrown. `now` is the deletion date, written in local time.
    // Throws FileSystemError (EXDEV for a move across file systems) or ItemChangedError;
    // no info file is left behind, with one exception: a stranger swapped in at the last
    // instant whose old name is taken again before it can go back stays in the Trash with
    // its record (the message says so), so it can be put back like any trashed item.
    [[nodiscard]] static Landing moveToTrash(PinnedItem& item, TimePoint now);

    // Convenience for callers that have only a path: pins the item as it is now, then moves it.
    [[nodiscard]] static Landing moveToTrash(const std::string& absolutePath, TimePoint now);

    // The home trash folder ($XDG_DATA_HOME/Trash), created 0700 with info/ and files/ when
    // missing. Throws FileSystemError when it can't be made.
    [[nodiscard]] static std::string homeTrashFolder();

    // Drops the folder size cache's line for `trashName` (an item that left files/, put
    // back or emptied) and any other line whose item is gone. Advisory: failures are ignored.
    static void forgetDirectorySize(int trashFolderFd, int filesFd, const std::string& trashName);

    // The Path value of an info file: every byte but unreserved ASCII and "/" as %XX.
    [[nodiscard]] static std::string percentEncode(std::string_view bytes);
    // The reverse; malformed escapes are kept as they stand.
    [[nodiscard]] static std::string percentDecode(std::string_view text);
    // The local time as YYYY-MM-DDThh:mm:ss.
    [[nodiscard]] static std::string deletionDateText(TimePoint t);
    // The whole info file for an item.
    [[nodiscard]] static std::string infoText(std::string_view pathValue, TimePoint deletedAt);
    // The name used in files/ for attempt `n` (1 is the name itself), at most `maxBytes`
    // long: "report.pdf", "report.2.pdf", ...; a long stem is cut at a character boundary.
    [[nodiscard]] static std::string candidateName(const std::string& name, int n, std::size_t maxBytes);
};

} // namespace bv
