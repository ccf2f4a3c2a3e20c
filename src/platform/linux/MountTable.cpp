#include "platform/MountTable.h"

#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <set>
#include <sstream>

#include "foundation/FileIO.h"

namespace bv {
namespace {

std::string unescape(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\' && i + 3 < s.size()) {
            const char a = s[i + 1], b = s[i + 2], c = s[i + 3];
            if (a >= '0' && a <= '7' && b >= '0' && b <= '7' && c >= '0' && c <= '7') {
                out.push_back(static_cast<char>((a - '0') * 64 + (b - '0') * 8 + (c - '0')));
                i += 3;
                continue;
            }
        }
        out.push_back(s[i]);
    }
    return out;
}

} // namespace

std::vector<MountEntry> MountTable::parse(const std::string& text) {
    std::vector<MountEntry> out;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string id, parent, majmin, root, mountPoint;
        if (!(fields >> id >> parent >> majmin >> root >> mountPoint)) continue;
        std::string f;
        while (fields >> f && f != "-") {}
        std::string fsType, source;
        fields >> fsType >> source;
        MountEntry e;
        unsigned maj = 0, min = 0;
        if (std::sscanf(majmin.c_str(), "%u:%u", &maj, &min) == 2) e.device = makedev(maj, min);
        e.root = unescape(root);
        e.mountPoint = unescape(mountPoint);
        e.fsType = fsType;
        e.source = unescape(source);
        out.push_back(std::move(e));
    }
    return out;
}

std::vector<MountEntry> MountTable::read() {
    auto text = readWholeFile("/proc/self/mountinfo");
    return text ? parse(*text) : std::vector<MountEntry>{};
}

std::optional<MountEntry> MountTable::containing(const std::vector<MountEntry>& table, const std::string& path) {
    std::optional<MountEntry> best;
    for (const auto& e : table) {
        const std::string& mp = e.mountPoint;
        const bool inside = mp == "/" || path == mp || (path.size() > mp.size() && path.compare(0, mp.size(), mp) == 0 &&
                                                       path[mp.size()] == '/');
        // Later lines mount over earlier ones at the same place.
        if (inside && (!best || mp.size() >= best->mountPoint.size())) best = e;
    }
    return best;
}

bool MountTable::isPseudoFileSystem(const std::string& t) {
    static const std::set<std::string> pseudo{
        "proc", "sysfs", "devtmpfs", "devpts", "tmpfs", "securityfs", "cgroup", "cgroup2", "pstore", "bpf",
        "debugfs", "tracefs", "configfs", "fusectl", "mqueue", "hugetlbfs", "autofs", "binfmt_misc", "rpc_pipefs",
        "nsfs", "efivarfs", "ramfs", "overlay", "squashfs", "fuse.gvfsd-fuse", "fuse.portal", "nfsd", "selinuxfs"};
    return pseudo.count(t) > 0;
}

std::string MountTable::displayName(const MountEntry& entry) {
    // Labels live as links in /dev/disk/by-label pointing at the device node.
    if (!entry.source.empty() && entry.source.front() == '/') {
        char real[PATH_MAX];
        if (::realpath(entry.source.c_str(), real)) {
            if (DIR* d = ::opendir("/dev/disk/by-label")) {
                std::string found;
                while (dirent* de = ::readdir(d)) {
                    if (de->d_name[0] == '.') continue;
                    char target[PATH_MAX];
                    std::string link = "/dev/disk/by-label/";
                    link += de->d_name;
                    if (::realpath(link.c_str(), target) && std::string(target) == real) {
                        found = unescape(std::string(de->d_name));
                        // by-label escapes spaces as \x20.
                        std::string spaced;
                        for (std::size_t i = 0; i < found.size(); ++i) {
                            if (found.compare(i, 4, "\\x20") == 0) {
                                spaced += ' ';
                                i += 3;
                            } else {
                                spaced += found[i];
                            }
                        }
                        found = std::move(spaced);
                        break;
                    }
                }
                ::closedir(d);
                if (!found.empty()) return found;
            }
        }
    }
    if (entry.mountPoint != "/") {
        const auto slash = entry.mountPoint.rfind('/');
        return entry.mountPoint.substr(slash + 1);
    }
    const auto slash = entry.source.rfind('/');
    std::string dev = slash == std::string::npos ? entry.source : entry.source.substr(slash + 1);
    return dev.empty() ? std::string("Disk") : dev;
}

} // namespace bv
