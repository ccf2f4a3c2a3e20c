#include "clean/KeepNewestItems.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "clean/DevCacheCatalog.h"
#include "foundation/AsciiCase.h"

namespace bv {

bool KeepNewestItems::counts(std::string_view name, bool isDirectory, const Scope& scope) {
    if (scope.directoriesOnly && !isDirectory) return false;
    if (scope.names.empty()) return true;
    const std::string lowered = asciiLowercased(name);
    return std::any_of(scope.names.begin(), scope.names.end(),
                       [&](const std::string& n) { return asciiLowercased(n) == lowered; });
}

std::vector<std::string> KeepNewestItems::newest(std::vector<Item> items, std::int64_t keep) {
    std::sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
        if (a.modified.has_value() != b.modified.has_value()) return a.modified.has_value();
        if (a.modified && *a.modified != *b.modified) return *a.modified > *b.modified;
        return a.path < b.path;
    });
    std::vector<std::string> out;
    for (std::int64_t i = 0; i < keep && i < static_cast<std::int64_t>(items.size()); ++i)
        out.push_back(items[static_cast<size_t>(i)].path);
    return out;
}

namespace {

struct Lister {
    const KeepNewestItems::Scope& scope;
    dev_t device;
    std::vector<KeepNewestItems::Item> items;

    // Lists one folder through its open handle; false when the handle can't be listed.
    bool list(int fd, const std::string& path) {
        DIR* d = ::fdopendir(fd);
        if (!d) {
            ::close(fd);
            return false;
        }
        while (dirent* e = ::readdir(d)) {
            const std::string_view name = e->d_name;
            if (name == "." || name == "..") continue;
            struct stat st {};
            if (::fstatat(::dirfd(d), e->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0 || S_ISLNK(st.st_mode)) continue;
            const bool isDir = S_ISDIR(st.st_mode);
            if (isDir && st.st_dev != device) continue;
            const std::string child = path + "/" + e->d_name;
            if (KeepNewestItems::counts(name, isDir, scope))
                items.push_back({child, isDir, fromEpochSeconds(st.st_mtim.tv_sec) +
                                                  std::chrono::duration_cast<TimePoint::duration>(
                                                      std::chrono::nanoseconds(st.st_mtim.tv_nsec))});
            if (isDir && scope.includeSubfolders && KeepNewestItems::entersFolderNamed(name)) {
                const int sub = ::openat(::dirfd(d), e->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
                if (sub >= 0) (void)list(sub, child); // an unreadable subfolder adds nothing
            }
        }
        ::closedir(d);
        return true;
    }
};

} // namespace

std::optional<std::vector<std::string>> KeepNewestItems::newestInFolder(const std::string& folder, const Scope& scope,
                                                                        std::int64_t keep) {
    const std::string root = DevCacheCatalog::standardizedPath(folder);
    const int fd = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        ::close(fd);
        return std::nullopt;
    }
    Lister lister{scope, st.st_dev, {}};
    if (!lister.list(fd, root)) return std::nullopt;
    return newest(std::move(lister.items), keep);
}

} // namespace bv
