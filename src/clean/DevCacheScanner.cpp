#include "clean/DevCacheScanner.h"
#include "foundation/AsciiCase.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>

#include <dirent.h>

#include "clean/KeptVersions.h"
#include "space/FolderMeasure.h"

namespace bv {
namespace {

using Recipe = DevCacheCatalog::Recipe;
using Case = DevCacheCatalog::Behavior::Case;

struct Child {
    std::string name;
    bool isLink = false;
};

// The direct children of a folder, "." and ".." left out; a folder that can't be listed has none.
std::vector<Child> childrenOf(const std::string& folder) {
    std::vector<Child> out;
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) return out;
    while (const dirent* e = ::readdir(dir)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        bool link = e->d_type == DT_LNK;
        if (e->d_type == DT_UNKNOWN) {
            struct stat st{};
            link = ::lstat((folder + "/" + name).c_str(), &st) == 0 && S_ISLNK(st.st_mode);
        }
        out.push_back({name, link});
    }
    ::closedir(dir);
    std::sort(out.begin(), out.end(), [](const Child& a, const Child& b) { return a.name < b.name; });
    return out;
}

bool exists(const std::string& path) {
    struct stat st{};
    return ::stat(path.c_str(), &st) == 0;
}

std::optional<TimePoint> modifiedOf(const std::string& path) {
    struct stat st{};
    if (::stat(path.c_str(), &st) != 0 && ::lstat(path.c_str(), &st) != 0) return std::nullopt;
    return TimePoint(std::chrono::seconds(st.st_mtim.tv_sec)) +
           std::chrono::duration_cast<TimePoint::duration>(std::chrono::nanoseconds(st.st_mtim.tv_nsec));
}

// Links resolved, then standardized; a path that can't be resolved is only standardized.
std::string resolvedPathOf(const std::string& path) {
    char buffer[PATH_MAX];
    if (::realpath(path.c_str(), buffer)) return DevCacheCatalog::standardizedPath(buffer);
    return DevCacheCatalog::standardizedPath(path);
}

bool containsPrivateWord(std::string_view name) {
    const std::string lower = asciiLowercased(name);
    for (const auto& word : DevCacheCatalog::privateWords())
        if (lower.find(word) != std::string::npos) return true;
    return false;
}

class Walk {
public:
    Walk(const std::string& home, const DevCacheScanner::Options& options)
        : home_(DevCacheCatalog::standardizedPath(home)), options_(options) {}

    DevCacheScanner::Result run() {
        for (const auto& recipe : DevCacheCatalog::recipes()) {
            if (cancelled()) {
                result_.cancelled = true;
                break;
            }
            scanRecipe(recipe);
        }
        measureRows();
        const auto bySize = [](const DevScanRow& a, const DevScanRow& b) { return a.bytes > b.bytes; };
        std::stable_sort(result_.rows.begin(), result_.rows.end(), bySize);
        std::stable_sort(result_.reviewRows.begin(), result_.reviewRows.end(), bySize);
        return std::move(result_);
    }

private:
    bool cancelled() const { return options_.cancel && options_.cancel->isCancelled(); }

    // Every cleanable row is measured at its own path, all together on one pool of threads:
    // most cache folders are small, and walking them one after another would spend more
    // time starting and stopping walks than reading folders. The rows measured elsewhere
    // (the simulator devices) already hold their size.
    void measureRows() {
        std::vector<std::size_t> which;
        std::vector<std::string> paths;
        for (std::size_t i = 0; i < result_.rows.size(); ++i) {
            if (result_.rows[i].id == "sim-unavailable") continue;
            which.push_back(i);
            paths.push_back(result_.rows[i].path);
        }
        FolderMeasure::Options options;
        options.cancel = options_.cancel;
        const auto sizes = FolderMeasure::measureMany(paths, options);
        for (std::size_t k = 0; k < which.size(); ++k) result_.rows[which[k]].bytes = sizes[k].bytes;
    }

    std::int64_t measure(const std::string& path, std::optional<double> seconds = std::nullopt) const {
        return FolderMeasure::bytes(path, seconds, options_.cancel);
    }

    // The common row of every cleanable recipe, selectable only when it stays inside its
    // folder and the path law admits it.
    DevScanRow commonRow(const Recipe& recipe, const std::string& root, const std::string& path, std::string id,
                         std::string title) const {
        DevScanRow row;
        row.id = std::move(id);
        row.title = std::move(title);
        row.path = path;
        row.resolvedPath = resolvedPathOf(path);
        row.allowRoot = root;
        row.modified = modifiedOf(path);
        row.note = recipe.note;
        row.group = recipe.group;
        row.kind = DevRowKind::cleanable;
        row.optIn = recipe.optIn;
        row.toolCommand = recipe.toolCommand;
        if (!DevCacheCatalog::isInsideRoot(row.path, row.resolvedPath, root)) {
            row.blockedReason = DevCacheScanner::kPointsElsewhere;
        } else if (!DevCacheCatalog::canCleanCachePath(row.resolvedPath, home_, {})) {
            row.blockedReason = DevCacheScanner::kStaysPut;
        }
        row.selectable = !row.blockedReason;
        return row;
    }

    void keep(DevScanRow& row, const char* reason) const {
        row.selectable = false;
        row.blockedReason = reason;
    }

    void scanRecipe(const Recipe& recipe) {
        const std::string root = DevCacheScanner::recipeFolder(home_, recipe);
        if (!exists(root)) return;
        auto& rows = result_.rows;
        switch (recipe.behavior.kind) {
        case Case::directory: {
            DevScanRow row = commonRow(recipe, root, root, recipe.id, recipe.title);
            rows.push_back(std::move(row));
            break;
        }
        case Case::children:
            for (const auto& child : childrenOf(root)) {
                if (child.isLink || child.name.starts_with(".") || containsPrivateWord(child.name)) continue;
                const std::string path = root + "/" + child.name;
                const std::string resolved = resolvedPathOf(path);
                if (resolved == home_ || DevCacheCatalog::isSystemArea(resolved, home_) ||
                    DevCacheCatalog::hasGitComponent(resolved) ||
                    (DevCacheCatalog::isProtectedPath(resolved, home_) &&
                     !DevCacheCatalog::isKnownCachePath(resolved, home_)) ||
                    !DevCacheCatalog::catalogAllows(resolved, home_, {}) ||
                    !DevCacheCatalog::isInsideRoot(path, resolved, root))
                    continue;
                DevScanRow row = commonRow(recipe, root, path, "cache-" + child.name, child.name);
                row.selectable = true;
                row.blockedReason.reset();
                rows.push_back(std::move(row));
            }
            break;
        case Case::gradleDistributions: {
            std::vector<DevScanRow> found;
            for (const auto& child : childrenOf(root)) {
                const std::string path = root + "/" + child.name;
                DevScanRow row = commonRow(recipe, root, path, "gradle-" + child.name, child.name);
                found.push_back(std::move(row));
            }
            std::stable_sort(found.begin(), found.end(), [](const DevScanRow& a, const DevScanRow& b) {
                return a.modified.value_or(TimePoint{}) > b.modified.value_or(TimePoint{});
            });
            if (!found.empty()) keep(found.front(), DevCacheScanner::kNewestStays);
            rows.insert(rows.end(), found.begin(), found.end());
            break;
        }
        case Case::expoCaches:
            for (const auto& child : childrenOf(root)) {
                if (asciiLowercased(child.name).find("cache") == std::string::npos) continue;
                const std::string path = root + "/" + child.name;
                DevScanRow row = commonRow(recipe, root, path, "expo-" + child.name, child.name);
                rows.push_back(std::move(row));
            }
            break;
        case Case::nodeVersions: {
            const auto kept = keptNodeVersions(home_);
            for (const auto& child : childrenOf(root)) {
                const std::string path = root + "/" + child.name;
                DevScanRow row = commonRow(recipe, root, path, "node-" + child.name, "Node " + child.name);
                row.optIn = true;
                if (kept.contains(versionKey(child.name))) keep(row, DevCacheScanner::kDailyVersionStays);
                rows.push_back(std::move(row));
            }
            break;
        }
        case Case::rustToolchains: {
            const auto kept = keptToolchains(home_);
            for (const auto& child : childrenOf(root)) {
                const std::string path = root + "/" + child.name;
                DevScanRow row = commonRow(recipe, root, path, "rustup-" + child.name, "Rust " + child.name);
                if (kept.contains(child.name)) keep(row, DevCacheScanner::kToolchainStays);
                rows.push_back(std::move(row));
            }
            break;
        }
        case Case::suffixedChildren: {
            const std::string suffix = asciiLowercased(recipe.behavior.suffix);
            for (const auto& child : childrenOf(root)) {
                const std::string lower = asciiLowercased(child.name);
                if (lower.size() <= suffix.size() || !lower.ends_with(suffix)) continue;
                const std::string path = root + "/" + child.name;
                DevScanRow row = commonRow(recipe, root, path, "updater-" + child.name,
                                           DevCacheScanner::updateDownloadTitle(child.name, recipe.behavior.suffix));
                rows.push_back(std::move(row));
            }
            break;
        }
        case Case::reviewOnly: {
            DevScanRow row;
            row.id = recipe.id;
            row.title = recipe.title;
            row.path = root;
            row.resolvedPath = resolvedPathOf(root);
            row.allowRoot = root;
            row.modified = modifiedOf(root);
            row.note = recipe.note.empty() ? DevCacheScanner::kReviewFallbackNote : recipe.note;
            row.group = recipe.group == "Virtual machines" ? recipe.group : "Large folders";
            row.kind = DevRowKind::reviewOnly;
            row.optIn = recipe.optIn;
            row.toolCommand = recipe.toolCommand;
            row.blockedReason = DevCacheScanner::kShownForSizeOnly;
            // A huge folder may show a partial size rather than hold the scan up.
            row.bytes = measure(root, options_.reviewDeadlineSeconds);
            result_.reviewRows.push_back(std::move(row));
            break;
        }
        case Case::unavailableSimulators: {
            const auto devices = options_.unavailableSimulators ? options_.unavailableSimulators(home_)
                                                                : std::vector<std::string>{};
            if (devices.empty()) break;
            DevScanRow row = commonRow(recipe, root, root, recipe.id, recipe.title);
            for (const auto& device : devices) row.bytes += measure(device);
            rows.push_back(std::move(row));
            break;
        }
        }
    }

    std::string home_;
    const DevCacheScanner::Options& options_;
    DevCacheScanner::Result result_;
};

} // namespace

DevCacheScanner::Result DevCacheScanner::scan(const std::string& home, const Options& options) {
    return Walk(home, options).run();
}

std::string DevCacheScanner::recipeFolder(const std::string& home, const DevCacheCatalog::Recipe& recipe) {
    return DevCacheCatalog::standardizedPath(home + "/" + recipe.relativePath);
}

std::string DevCacheScanner::updateDownloadTitle(std::string_view folderName, std::string_view suffix) {
    std::string base = asciiLowercased(folderName);
    const std::string lowSuffix = asciiLowercased(suffix);
    if (base.size() >= lowSuffix.size() && base.ends_with(lowSuffix)) base.resize(base.size() - lowSuffix.size());

    static const std::pair<const char*, const char*> kKnownApps[] = {
        {"claude", "Claude"}, {"anysphere", "Cursor"}, {"todesktop", "ToDesktop app"}, {"notion", "Notion"},
        {"slack", "Slack"},   {"figma", "Figma"},      {"discord", "Discord"},         {"linear", "Linear"},
        {"github", "GitHub Desktop"}, {"cursor", "Cursor"}, {"lens", "Lens"}};
    for (const auto& [word, name] : kKnownApps)
        if (base.find(word) != std::string::npos) return std::string(name) + " update download";

    // Words are runs of letters and digits; reverse-domain parts and numbered parts say nothing.
    static const std::vector<std::string> kNoise{"com", "io", "app", "id", "org", "net", "co", "dev"};
    std::string last;
    std::string word;
    auto finish = [&] {
        const bool hasDigit = std::any_of(word.begin(), word.end(), [](unsigned char c) { return std::isdigit(c); });
        if (!word.empty() && !hasDigit && std::find(kNoise.begin(), kNoise.end(), word) == kNoise.end()) last = word;
        word.clear();
    };
    for (const char c : base) {
        if (std::isalnum(static_cast<unsigned char>(c)) || (static_cast<unsigned char>(c) & 0x80)) word += c;
        else finish();
    }
    finish();
    if (last.empty()) return "App update download";
    last[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(last[0])));
    return last + " update download";
}

} // namespace bv
