#include "space/VolumeReader.h"

#include <sys/statvfs.h>

#include "platform/MountTable.h"

namespace bv {

VolumeSnapshot readVolume(const std::string& path, TimePoint now) {
    VolumeSnapshot s;
    s.capturedAt = now;
    struct statvfs vfs{};
    if (::statvfs(path.c_str(), &vfs) != 0) return s;
    const auto unit = static_cast<std::int64_t>(vfs.f_frsize ? vfs.f_frsize : vfs.f_bsize);
    s.totalBytes = static_cast<std::int64_t>(vfs.f_blocks) * unit;
    s.freeBytes = static_cast<std::int64_t>(vfs.f_bavail) * unit;
    const auto table = MountTable::read();
    if (auto entry = MountTable::containing(table, path)) s.volumeName = MountTable::displayName(*entry);
    return s;
}

} // namespace bv
