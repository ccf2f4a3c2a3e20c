#pragma once
#include <optional>
#include <string>
#include <vector>

#include "platform/MountTable.h"
#include "space/DiskMap.h"

namespace bv {

// The file systems a person keeps files on, read from the mount table.
struct MountedVolumes {
    // Size and free space of the file system holding `path` (free as an unprivileged user
    // may use it); nothing when it can't be read or reports no size.
    struct Figures {
        std::int64_t totalBytes = 0;
        std::int64_t freeBytes = 0;
    };
    using ReadFigures = std::optional<Figures> (*)(const std::string& path);
    [[nodiscard]] static std::optional<Figures> statFigures(const std::string& path);

    // From a parsed table, in table order: pseudo file systems are left out, a mount point or
    // a device seen already is not listed twice (bind mounts and mounts of a subtree
    // repeat a file system), and a volume whose figures can't be read is left out. Names
    // come from `nameOf` (labels, else the last component of the mount point).
    [[nodiscard]] static std::vector<MountedVolume> fromTable(const std::vector<MountEntry>& table,
                                                              ReadFigures readFigures = statFigures,
                                                              std::string (*nameOf)(const MountEntry&) = MountTable::displayName);

    // The live list.
    [[nodiscard]] static std::vector<MountedVolume> list();
};

} // namespace bv
