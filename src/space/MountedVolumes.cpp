#include "space/MountedVolumes.h"

#include <sys/statvfs.h>

#include <set>

namespace bv {

std::optional<MountedVolumes::Figures> MountedVolumes::statFigures(const std::string& path) {
    struct statvfs vfs {};
    if (::statvfs(path.c_str(), &vfs) != 0 || vfs.f_blocks == 0) return std::nullopt;
    const auto unit = static_cast<std::int64_t>(vfs.f_frsize ? vfs.f_frsize : vfs.f_bsize);
    return Figures{static_cast<std::int64_t>(vfs.f_blocks) * unit, static_cast<std::int64_t>(vfs.f_bavail) * unit};
}

std::vector<MountedVolume> MountedVolumes::fromTable(const std::vector<MountEntry>& table, ReadFigures readFigures,
                                                     std::string (*nameOf)(const MountEntry&)) {
    std::vector<MountedVolume> out;
    std::set<std::string> seenPaths;
    std::set<std::uint64_t> seenDevices;
    for (const auto& e : table) {
        if (MountTable::isPseudoFileSystem(e.fsType)) continue;
        if (!seenPaths.insert(e.mountPoint).second) continue;
        if (e.device != 0 && seenDevices.count(e.device)) continue;
        const auto figures = readFigures(e.mountPoint);
        if (!figures) continue;
        seenDevices.insert(e.device);
        std::string name = nameOf(e);
        if (name.empty()) {
            const auto slash = e.mountPoint.rfind('/');
            name = e.mountPoint.substr(slash + 1);
        }
        out.push_back({e.mountPoint, name, figures->totalBytes, figures->freeBytes});
    }
    return out;
}

std::vector<MountedVolume> MountedVolumes::list() { return fromTable(MountTable::read()); }

} // namespace bv
