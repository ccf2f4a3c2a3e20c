#include "space/StorageSurvey.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <dirent.h>
#include <limits>
#include <system_error>
#include <thread>

#include "clean/DevCacheCatalog.h"
#include "clean/DevCacheScanner.h"
#include "platform/XdgPaths.h"

namespace bv {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

// Both sides are 0 or more; a sum past the largest value stays there instead of wrapping.
std::int64_t addHeld(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? kMax : sum;
}

std::int64_t atLeastZero(std::int64_t v) { return v < 0 ? 0 : v; }

bool exists(const std::string& path) {
    struct stat st{};
    return !path.empty() && ::stat(path.c_str(), &st) == 0;
}

// A folder whose own listing is refused can't be measured at all; one that lists but hides
// some of its subfolders measures what it shows.
bool canList(const std::string& path) {
    struct stat st{};
    if (::stat(path.c_str(), &st) != 0) return false;
    if (!S_ISDIR(st.st_mode)) return true;
    DIR* dir = ::opendir(path.c_str());
    if (!dir) return false;
    ::closedir(dir);
    return true;
}

// Each path measured on its own thread, each with the folder deadline from its own start.
// The measures are small walkers of two threads each: several run side by side and the
// whole survey should not take the machine over. Empty paths count 0.
std::vector<std::int64_t> measureAll(const std::vector<std::string>& paths, SurveyProgress* progress,
                                     const CancellationFlag* cancel) {
    std::vector<std::int64_t> sizes(paths.size(), 0);
    std::vector<std::thread> threads;
    threads.reserve(paths.size());
    const auto measureOne = [&](std::size_t i) {
        FolderMeasure::Options options;
        options.deadline = std::chrono::steady_clock::now() +
                           std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                               std::chrono::duration<double>(StorageSurvey::kFolderSeconds));
        options.cancel = cancel;
        options.progress = progress ? progress->forMeasure() : nullptr;
        options.threads = 2;
        sizes[i] = FolderMeasure::measure(paths[i], options).bytes;
    };
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (paths[i].empty()) continue;
        try {
            threads.emplace_back(measureOne, i);
        } catch (const std::system_error&) {
            measureOne(i); // no thread to be had: measure here rather than lose the figure
        }
    }
    for (auto& t : threads) t.join();
    return sizes;
}

bool isBelowOrSame(const std::string& path, const std::string& root) {
    return path == root || (path.size() > root.size() && path.starts_with(root) && path[root.size()] == '/');
}

} // namespace

SurveyPlaces SurveyPlaces::current() {
    SurveyPlaces places;
    places.home = XdgPaths::home();
    const std::string data = XdgPaths::dataHome();
    places.apps = {"/opt", "/var/lib/flatpak", data + "/flatpak", "/var/lib/snapd/snaps", places.home + "/Applications"};
    places.downloads = XdgPaths::downloads();
    places.documents = XdgPaths::userDir("DOCUMENTS", "Documents");
    places.desktop = XdgPaths::desktop();
    places.extras = {{"pictures", "Pictures", XdgPaths::userDir("PICTURES", "Pictures")},
                     {"videos", "Videos", XdgPaths::userDir("VIDEOS", "Videos")},
                     {"music", "Music", XdgPaths::userDir("MUSIC", "Music")}};
    places.trash = data + "/Trash";
    places.coverage = StorageSurvey::coveragePlaces(places.trash);
    return places;
}

StorageSurvey::Sizes StorageSurvey::measureFolders(const SurveyPlaces& places, SurveyProgress* progress,
                                                   const CancellationFlag* cancel) {
    // One list for one round of measures: the app folders first, then the user folders.
    std::vector<std::string> paths = places.apps;
    const std::size_t userStart = paths.size();
    paths.push_back(places.downloads);
    paths.push_back(places.documents);
    paths.push_back(places.desktop);
    for (const auto& extra : places.extras) paths.push_back(extra.path);
    // A folder the list names twice (a user dir pointed at another) is measured once.
    for (std::size_t i = 0; i < paths.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (!paths[i].empty() && paths[i] == paths[j]) paths[i].clear();

    const auto sizes = measureAll(paths, progress, cancel);
    Sizes out;
    for (std::size_t i = 0; i < userStart; ++i) out.apps = addHeld(out.apps, sizes[i]);
    out.downloads = sizes[userStart];
    out.documents = sizes[userStart + 1];
    out.desktop = sizes[userStart + 2];
    for (std::size_t k = 0; k < places.extras.size(); ++k)
        out.extras.push_back({places.extras[k].id, places.extras[k].name, sizes[userStart + 3 + k]});
    return out;
}

std::vector<std::string> StorageSurvey::developerFolders(const std::string& home) {
    std::vector<std::string> found;
    for (const auto& recipe : DevCacheCatalog::recipes()) {
        if (recipe.behavior.kind == DevCacheCatalog::Behavior::Case::reviewOnly) continue;
        const std::string folder = DevCacheScanner::recipeFolder(home, recipe);
        if (exists(folder) && std::find(found.begin(), found.end(), folder) == found.end()) found.push_back(folder);
    }
    // A folder inside another one on the list is already in that one's size.
    std::vector<std::string> out;
    for (const auto& folder : found) {
        const bool inside = std::any_of(found.begin(), found.end(), [&](const std::string& other) {
            return other != folder && isBelowOrSame(folder, other);
        });
        if (!inside) out.push_back(folder);
    }
    return out;
}

std::int64_t StorageSurvey::measureDeveloper(const std::string& home, SurveyProgress* progress,
                                             const CancellationFlag* cancel) {
    std::int64_t total = 0;
    for (const auto size : measureAll(developerFolders(home), progress, cancel)) total = addHeld(total, size);
    return total;
}

std::vector<CoverageItem> StorageSurvey::measureCoverage(const std::vector<CoveragePlace>& places,
                                                         const std::string& home, SurveyProgress* progress,
                                                         const CancellationFlag* cancel) {
    std::vector<std::string> readable(places.size());
    std::vector<bool> present(places.size(), false);
    for (std::size_t i = 0; i < places.size(); ++i) {
        present[i] = exists(places[i].path);
        if (present[i] && canList(places[i].path)) readable[i] = places[i].path;
    }
    const auto sizes = measureAll(readable, progress, cancel);
    std::vector<CoverageItem> out;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto bytes = readable[i].empty() ? std::nullopt : std::optional<std::int64_t>(sizes[i]);
        if (auto row = coverageRow(places[i], present[i], bytes, home)) out.push_back(std::move(*row));
    }
    return out;
}

std::vector<StorageSegment> StorageSurvey::segments(const Sizes& sizes, const VolumeSnapshot& volume) {
    const std::int64_t total = atLeastZero(volume.totalBytes);
    const std::int64_t free = std::clamp<std::int64_t>(volume.freeBytes, 0, total);
    const std::int64_t used = total - free;
    const std::int64_t apps = atLeastZero(sizes.apps);
    const std::int64_t developer = atLeastZero(sizes.developer);
    const std::int64_t downloads = atLeastZero(sizes.downloads);
    const std::int64_t documents = atLeastZero(sizes.documents);
    const std::int64_t known = addHeld(addHeld(apps, developer), addHeld(downloads, documents));
    const std::int64_t other = known >= used ? 0 : used - known;
    return {{"apps", "Apps", apps},
            {"developer", "Developer caches", developer},
            {"downloads", "Downloads", downloads},
            {"documents", "Documents", documents},
            {"other", "Other used space", other},
            {"free", "Free", free}};
}

std::vector<StorageSegment> StorageSurvey::topFolders(const Sizes& sizes) {
    std::vector<StorageSegment> all{{"downloads", "Downloads", sizes.downloads},
                                    {"documents", "Documents", sizes.documents},
                                    {"desktop", "Desktop", sizes.desktop}};
    all.insert(all.end(), sizes.extras.begin(), sizes.extras.end());
    all.push_back({"apps", "Apps", sizes.apps});
    // The first five, whatever their size: an empty Downloads is still a place worth naming.
    if (all.size() > 5) all.resize(5);
    return all;
}

std::vector<CoveragePlace> StorageSurvey::coveragePlaces(const std::string& trash) {
    return {
        {"trash", "Trash", trash,
         "Empty the Trash in your file manager. Space moved there is not free until you do."},
        {"journal", "System logs", "/var/log/journal",
         "The system trims these on its own. To keep less, run `sudo journalctl --vacuum-size=500M` in a terminal."},
        {"diagnostics", "Crash and diagnostic reports", "/var/lib/systemd/coredump",
         "The system deletes old ones on its own. Run `coredumpctl list` in a terminal to see them."},
        {"package-cache", "Downloaded system packages", "/var/cache/apt/archives",
         "Run `sudo apt clean` in a terminal. Installed software stays as it is."},
    };
}

std::optional<CoverageItem> StorageSurvey::coverageRow(const CoveragePlace& place, bool exists,
                                                       std::optional<std::int64_t> bytes, const std::string& home) {
    if (!exists) return std::nullopt;
    if (bytes && *bytes < kCoverageFloor) return std::nullopt;
    CoverageItem item;
    item.id = place.id;
    item.title = place.title;
    item.bytes = bytes;
    item.detail = bytes ? shortPath(place.path, home) : kUnreadableDetail;
    item.howTo = place.howTo;
    item.path = place.path;
    return item;
}

std::string StorageSurvey::shortPath(const std::string& path, const std::string& home) {
    if (home.empty() || home == "/") return path;
    if (path == home) return "~";
    if (path.size() > home.size() && path.starts_with(home) && path[home.size()] == '/')
        return "~" + path.substr(home.size());
    return path;
}

} // namespace bv
