#include "space/NewToday.h"
#include "foundation/AsciiCase.h"

#include <algorithm>
#include <cctype>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace bv {
namespace {

std::int64_t allocatedOrSize(const struct stat& st) {
    return st.st_blocks > 0 ? static_cast<std::int64_t>(st.st_blocks) * 512 : static_cast<std::int64_t>(st.st_size);
}

// Sum of a folder's contents, descending through directory handles, never following links.
std::int64_t measureTree(int dirFd) {
    DIR* dir = ::fdopendir(dirFd);
    if (!dir) {
        ::close(dirFd);
        return 0;
    }
    std::int64_t total = 0;
    while (dirent* e = ::readdir(dir)) {
        const char* n = e->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0))) continue;
        struct stat st{};
        if (::fstatat(::dirfd(dir), n, &st, AT_SYMLINK_NOFOLLOW) != 0) continue;
        if (S_ISLNK(st.st_mode)) continue;
        if (S_ISDIR(st.st_mode)) {
            const int child = ::openat(::dirfd(dir), n, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child >= 0) total += measureTree(child);
        } else {
            total += allocatedOrSize(st);
        }
    }
    ::closedir(dir);
    return total;
}

} // namespace

std::string kindDescription(const std::string& name, bool isDirectory) {
    const auto dot = name.rfind('.');
    const std::string ext = dot == std::string::npos || dot == 0 ? std::string() : asciiLowercased(name.substr(dot + 1));
    if (isDirectory) return ext == "app" ? "Application" : "Folder";
    static const std::map<std::string, std::string> known{
        {"pdf", "PDF document"},     {"zip", "ZIP archive"},      {"gz", "Gzip archive"},
        {"tgz", "Gzip archive"},     {"xz", "XZ archive"},        {"7z", "7-Zip archive"},
        {"rar", "RAR archive"},      {"tar", "Tar archive"},      {"dmg", "Disk image"},
        {"iso", "Disk image"},       {"img", "Disk image"},       {"deb", "Debian package"},
        {"rpm", "RPM package"},      {"appimage", "AppImage application"}, {"png", "PNG image"},
        {"jpg", "JPEG image"},       {"jpeg", "JPEG image"},      {"gif", "GIF image"},
        {"webp", "WebP image"},      {"heic", "HEIC image"},      {"svg", "SVG image"},
        {"mp4", "MPEG-4 movie"},     {"mov", "QuickTime movie"},  {"mkv", "Matroska video"},
        {"mp3", "MP3 audio"},        {"wav", "WAV audio"},        {"flac", "FLAC audio"},
        {"txt", "Plain text"},       {"md", "Markdown document"}, {"csv", "CSV document"},
        {"json", "JSON document"},   {"doc", "Word document"},    {"docx", "Word document"},
        {"xls", "Spreadsheet"},      {"xlsx", "Spreadsheet"},     {"odt", "Text document"},
        {"ods", "Spreadsheet"},      {"ppt", "Presentation"},     {"pptx", "Presentation"},
        {"html", "HTML document"},   {"sh", "Shell script"},      {"py", "Python script"}};
    if (ext.empty()) return "Document";
    if (auto it = known.find(ext); it != known.end()) return it->second;
    std::string upper = ext;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper + " file";
}

std::optional<TimePoint> addedDate(std::optional<TimePoint> birth, TimePoint statusChange, TimePoint modified) {
    const bool arrival = modified < statusChange;
    if (birth && arrival) return std::max(*birth, statusChange);
    if (birth) return birth;
    if (arrival) return statusChange;
    return std::nullopt;
}

std::vector<ScannedFile> scanFolder(const std::string& folder, std::optional<TimePoint> addedSince) {
    std::vector<ScannedFile> out;
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return out;
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        ::close(fd);
        return out;
    }
    while (dirent* e = ::readdir(dir)) {
        const std::string name = e->d_name;
        if (name.empty() || name[0] == '.') continue;
        struct statx sx{};
        if (::statx(::dirfd(dir), name.c_str(), AT_SYMLINK_NOFOLLOW,
                    STATX_TYPE | STATX_SIZE | STATX_BLOCKS | STATX_CTIME | STATX_MTIME | STATX_BTIME, &sx) != 0)
            continue;
        const auto time = [](const statx_timestamp& t) {
            return TimePoint(std::chrono::duration_cast<TimePoint::duration>(std::chrono::seconds(t.tv_sec) +
                                                                            std::chrono::nanoseconds(t.tv_nsec)));
        };
        const auto birth = (sx.stx_mask & STATX_BTIME) ? std::optional(time(sx.stx_btime)) : std::nullopt;
        const auto added = addedDate(birth, time(sx.stx_ctime), time(sx.stx_mtime));
        // Measuring a folder is the costly part: an entry that is not wanted is never measured.
        if (addedSince && (!added || *added < *addedSince)) continue;
        ScannedFile f;
        f.added = added;
        f.name = name;
        f.path = folder + (folder.ends_with('/') ? "" : "/") + name;
        const bool isDir = S_ISDIR(sx.stx_mode);
        if (isDir) {
            // An ".app" folder is one entry like any folder: measured whole, never listed inside.
            const int child = ::openat(::dirfd(dir), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            f.size = child >= 0 ? measureTree(child) : 0;
        } else {
            f.size = (sx.stx_mask & STATX_BLOCKS) && sx.stx_blocks > 0 ? static_cast<std::int64_t>(sx.stx_blocks) * 512
                                                                       : static_cast<std::int64_t>(sx.stx_size);
        }
        f.kind = kindDescription(name, isDir);
        out.push_back(std::move(f));
    }
    ::closedir(dir);
    return out;
}

std::vector<TrackedFile> newToday(const std::string& folder, WatchedLocation location, TimePoint now,
                                  const CalendarContext& calendar) {
    const TimePoint start = calendar.startOfDay(now);
    std::vector<TrackedFile> out;
    for (auto& f : scanFolder(folder, start)) {
        out.push_back({f.path, f.name, f.size, f.kind, *f.added, location});
    }
    std::stable_sort(out.begin(), out.end(), [](const TrackedFile& a, const TrackedFile& b) { return a.added > b.added; });
    return out;
}

} // namespace bv
