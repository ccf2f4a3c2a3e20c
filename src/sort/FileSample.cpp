#include "sort/FileSample.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>
#include <chrono>
#include <string_view>
#include <memory>

#include "foundation/PhraseText.h"

namespace bv {
namespace {

TimePoint fromTimespec(const struct timespec& ts) {
    return TimePoint(std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(ts.tv_sec) +
                                                                 std::chrono::nanoseconds(ts.tv_nsec)));
}

std::string lowerExtension(const std::string& name) {
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return {};
    return lowercased(name.substr(dot + 1));
}

bool isUnsettledExtension(const std::string& extension) {
    for (const char* e : {"crdownload", "part", "partial", "download", "tmp", "opdownload"})
        if (extension == e) return true;
    return false;
}

std::optional<std::string> readAttribute(const std::string& path, const char* name) {
    const ssize_t size = ::getxattr(path.c_str(), name, nullptr, 0);
    if (size <= 0) return std::nullopt;
    std::string value(static_cast<size_t>(size), '\0');
    const ssize_t read = ::getxattr(path.c_str(), name, value.data(), value.size());
    if (read != size) return std::nullopt; // changed under us or a short read
    while (!value.empty() && value.back() == '\0') value.pop_back();
    if (value.empty()) return std::nullopt;
    return value;
}

// The origin of a file that has one; most files have no extended attributes at all, and one
// listing call tells so, where reading both attributes would take two.
std::vector<std::string> readWhereFromsIfAny(const std::string& path) {
    char names[512];
    const ssize_t length = ::llistxattr(path.c_str(), names, sizeof names);
    if (length == 0 || (length < 0 && errno != ERANGE)) return {};
    if (length > 0) {
        const std::string_view list(names, static_cast<size_t>(length));
        if (list.find("user.xdg.origin.url") == std::string_view::npos &&
            list.find("user.xdg.referrer.url") == std::string_view::npos)
            return {};
    }
    return readWhereFroms(path);
}

} // namespace

std::vector<std::string> readWhereFroms(const std::string& path) {
    std::vector<std::string> out;
    for (const char* name : {"user.xdg.origin.url", "user.xdg.referrer.url"})
        if (auto value = readAttribute(path, name)) out.push_back(std::move(*value));
    return out;
}

std::vector<FileSample> gatherSamples(const std::string& folder, SortPlace place, bool includeUnsettled, TimePoint now,
                                      bool readOrigins) {
    std::vector<FileSample> samples;
    std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder.c_str()), ::closedir);
    if (!dir) return samples;
    const std::string base = folder.empty() || folder.back() == '/' ? folder : folder + "/";
    // One quick pass to count, so the samples are laid out once: growing a large vector
    // step by step costs more in fresh pages than the listing itself.
    std::size_t count = 0;
    while (::readdir(dir.get())) ++count;
    ::rewinddir(dir.get());
    samples.reserve(count);
    while (const dirent* entry = ::readdir(dir.get())) {
        const std::string name = entry->d_name;
        if (name.empty() || name.front() == '.') continue; // hidden, and "." and ".."
        const std::string path = base + name;
        struct stat st{};
        // Relative to the open folder: no walk of the whole path for each child.
        const bool haveStat = ::fstatat(::dirfd(dir.get()), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0;
        if (haveStat && S_ISLNK(st.st_mode)) continue;

        FileSample s;
        s.path = path;
        s.name = name;
        s.location = place;
        const std::string extension = lowerExtension(name);
        const bool directory = haveStat && S_ISDIR(st.st_mode);
        s.isDirectory = directory && extension != "app";
        if (haveStat) {
            s.modified = fromTimespec(st.st_mtim);
            // The status-change time stands in for the date the file was added: a rename
            // into the folder sets it.
            s.added = fromTimespec(st.st_ctim);
        }
        if (!s.added) s.added = s.modified;

        if (!includeUnsettled && !s.isDirectory) {
            if (isUnsettledExtension(extension)) continue;
            if (s.modified && now - *s.modified < std::chrono::seconds(60)) continue;
        }
        s.size = haveStat && !s.isDirectory && !directory ? static_cast<std::int64_t>(st.st_size) : 0;
        if (!s.isDirectory && readOrigins) s.whereFroms = readWhereFromsIfAny(path);
        samples.push_back(std::move(s));
    }
    return samples;
}

} // namespace bv
