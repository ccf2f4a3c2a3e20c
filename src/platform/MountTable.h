#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace bv {

// One line of /proc/self/mountinfo, with the escapes (\040 and friends) decoded.
struct MountEntry {
    std::uint64_t device = 0;  // makedev(major, minor)
    std::string root;          // the mounted subtree of the source file system
    std::string mountPoint;
    std::string fsType;
    std::string source;
};

struct MountTable {
    [[nodiscard]] static std::vector<MountEntry> parse(const std::string& mountinfoText);
    [[nodiscard]] static std::vector<MountEntry> read(); // /proc/self/mountinfo; empty on failure
    // The entry whose mount point is the longest prefix of `path` (path must be absolute).
    [[nodiscard]] static std::optional<MountEntry> containing(const std::vector<MountEntry>& table, const std::string& path);
    // Pseudo and virtual file systems that hold no user data (proc, sysfs, tmpfs, ...).
    [[nodiscard]] static bool isPseudoFileSystem(const std::string& fsType);
    // A name for people: the file system label when there is one, else the last part
    // of the mount point, else the source device's name.
    [[nodiscard]] static std::string displayName(const MountEntry& entry);
};

} // namespace bv
