#include "clean/AppLeftovers.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>

#include "clean/Cleaner.h"
#include "clean/DevCacheCatalog.h"
#include "foundation/AsciiCase.h"
#include "foundation/ByteText.h"
#include "foundation/FileIO.h"
#include "space/FolderMeasure.h"

namespace bv {
namespace {

using Law = DevCacheCatalog;
using Steady = std::chrono::steady_clock;

constexpr std::int64_t kGoneFloor = 1'000'000;
constexpr std::int64_t kUnknownFloor = 50'000'000;
constexpr auto kRecentWindow = std::chrono::seconds(1'209'600); // 14 days

TimePoint mtimeOf(const struct stat& st) {
    return TimePoint{std::chrono::duration_cast<TimePoint::duration>(std::chrono::seconds(st.st_mtim.tv_sec) +
                                                                     std::chrono::nanoseconds(st.st_mtim.tv_nsec))};
}

bool isLockName(std::string_view name) {
    for (const std::string_view suffix : {".lock", ".sock", ".pid"})
        if (name.size() >= suffix.size() && name.substr(name.size() - suffix.size()) == suffix) return true;
    return false;
}

struct Summary {
    std::int64_t logicalBytes = 0;
    std::optional<TimePoint> newest;
};

// One walk for the logical size and the newest activity, never through a link, ending with
// what it has at the deadline.
Summary summarize(const std::string& path, Steady::time_point deadline) {
    Summary s;
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) return s;
    s.newest = mtimeOf(st);
    if (!S_ISDIR(st.st_mode)) {
        s.logicalBytes = S_ISREG(st.st_mode) ? st.st_size : 0;
        return s;
    }
    std::vector<std::string> stack{path};
    int counter = 0;
    while (!stack.empty()) {
        const std::string dirPath = std::move(stack.back());
        stack.pop_back();
        const int fd = ::open(dirPath.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0) continue;
        DIR* dir = ::fdopendir(fd);
        if (!dir) {
            ::close(fd);
            continue;
        }
        while (dirent* e = ::readdir(dir)) {
            const std::string_view name = e->d_name;
            if (name == "." || name == "..") continue;
            if ((++counter & 31) == 0 && Steady::now() > deadline) {
                ::closedir(dir);
                return s;
            }
            struct stat cs {};
            if (::fstatat(fd, e->d_name, &cs, AT_SYMLINK_NOFOLLOW) != 0 || S_ISLNK(cs.st_mode)) continue;
            if (S_ISDIR(cs.st_mode)) stack.push_back(dirPath + "/" + std::string(name));
            else if (S_ISREG(cs.st_mode)) s.logicalBytes += cs.st_size;
            if (isLockName(name)) continue;
            const TimePoint m = mtimeOf(cs);
            if (!s.newest || m > *s.newest) s.newest = m;
        }
        ::closedir(dir);
    }
    return s;
}

// The identifier a container's manager wrote into its metadata (an XML property list);
// nothing when it is missing or not readable as XML.
std::optional<std::string> containerIdentifier(const std::string& folder) {
    const auto text = readWholeFile(folder + "/.com.apple.containermanagerd.metadata.plist");
    if (!text) return std::nullopt;
    const auto key = text->find("<key>MCMMetadataIdentifier</key>");
    if (key == std::string::npos) return std::nullopt;
    const auto open = text->find("<string>", key);
    const auto close = text->find("</string>", open);
    if (open == std::string::npos || close == std::string::npos) return std::nullopt;
    std::string id = text->substr(open + 8, close - open - 8);
    if (id.empty()) return std::nullopt;
    return id;
}

std::string lastComponent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

struct Owner {
    const LeftoverOwners::KnownApp* row = nullptr;
    std::set<std::string> identifiers; // names that read as app ids, as found
    std::set<std::string> names;       // every name as found
    std::vector<OrphanPath> paths;
};

std::string wholeDays(std::int64_t seconds) {
    const std::int64_t days = seconds / 86'400;
    return std::to_string(days) + (days == 1 ? " day" : " days");
}

} // namespace

std::string_view textValue(OwnerStatus status) {
    switch (status) {
    case OwnerStatus::installed: return "installed";
    case OwnerStatus::gone: return "gone";
    case OwnerStatus::unknown: return "unknown";
    }
    return "unknown";
}

std::int64_t OrphanFinding::totalBytes() const {
    std::int64_t total = 0;
    for (const auto& p : paths) total += p.bytes;
    return total;
}

Json encodeOrphanFinding(const OrphanFinding& f) {
    Json paths = Json::array();
    for (const auto& p : f.paths) {
        Json j = Json::object();
        j["path"] = p.path;
        j["location"] = std::string(textValue(p.location));
        j["bytes"] = p.bytes;
        j["logicalBytes"] = p.logicalBytes;
        putDate(j, "lastActivity", p.lastActivity);
        paths.push_back(std::move(j));
    }
    Json json = Json::object();
    json["id"] = f.id;
    json["title"] = f.title;
    json["ownerName"] = f.ownerName;
    json["bundleIDs"] = f.bundleIDs;
    json["status"] = std::string(textValue(f.status));
    json["paths"] = std::move(paths);
    json["evidence"] = f.evidence;
    return json;
}

bool AppLeftovers::passesSizeFilter(OwnerStatus status, std::int64_t totalBytes) {
    switch (status) {
    case OwnerStatus::gone: return totalBytes >= kGoneFloor;
    case OwnerStatus::unknown: return totalBytes >= kUnknownFloor;
    case OwnerStatus::installed: return false;
    }
    return false;
}

std::optional<TimePoint> AppLeftovers::newestActivity(const std::string& path, double secondsAllowed) {
    const auto deadline = Steady::now() + std::chrono::duration_cast<Steady::duration>(std::chrono::duration<double>(secondsAllowed));
    return summarize(path, deadline).newest;
}

bool AppLeftovers::canCleanLeftoverPath(std::string_view path, std::string_view home) {
    if (Law::canCleanOrphanPath(path, home)) return true;
    const std::string p = Law::standardizedPath(path);
    const std::string h = Law::standardizedPath(home);
    if (Law::hasGitComponent(p) || h.empty() || h == "/") return false;
    const std::string name = lastComponent(p);
    if (name.empty() || name.front() == '.' || LeftoverOwners::isSystemOwnedName(name) ||
        asciiLowercased(name).find("com.apple") != std::string::npos)
        return false;
    for (const auto location : LeftoverOwners::locations()) {
        if (!LeftoverOwners::isLinuxPlace(location)) continue;
        const std::string folder = h + "/" + std::string(LeftoverOwners::relativeFolder(location));
        if (p.size() > folder.size() + 1 && p.compare(0, folder.size() + 1, folder + "/") == 0 &&
            p.find('/', folder.size() + 1) == std::string::npos)
            return location != OrphanLocation::loginItem || name.ends_with(".desktop");
    }
    return false;
}

AppLeftovers::Result AppLeftovers::scan(const std::string& homeIn, const Options& options) {
    Result result;
    const std::string home = Law::standardizedPath(homeIn);
    const TimePoint now = options.now.value_or(Clock::now());
    const InstalledAppIndex index =
        InstalledApps::build(options.installedRoots ? *options.installedRoots : InstalledApps::forThisSystem(home));
    const auto cancelled = [&] { return options.cancel && options.cancel->isCancelled(); };

    // 2-4: the children of each location, collected by owner key.
    std::map<std::string, Owner> owners;
    for (const auto location : LeftoverOwners::locations()) {
        const std::string folder = home + "/" + std::string(LeftoverOwners::relativeFolder(location));
        DIR* dir = ::opendir(folder.c_str());
        if (!dir) continue;
        std::vector<std::pair<std::string, bool>> children; // name, is a folder
        while (dirent* e = ::readdir(dir)) {
            const std::string name = e->d_name;
            if (name == "." || name == "..") continue;
            struct stat st {};
            if (::lstat((folder + "/" + name).c_str(), &st) != 0 || S_ISLNK(st.st_mode)) continue;
            children.emplace_back(name, S_ISDIR(st.st_mode));
        }
        ::closedir(dir);
        for (const auto& [child, isFolder] : children) {
            if (LeftoverOwners::isSystemOwnedName(child) || asciiLowercased(child).find("com.apple") != std::string::npos)
                continue;
            std::optional<std::string> name;
            if (LeftoverOwners::isUuidName(child) && !LeftoverOwners::isLinuxPlace(location)) {
                name = isFolder ? containerIdentifier(folder + "/" + child) : std::nullopt;
                if (name && (LeftoverOwners::isSystemOwnedName(*name) ||
                             asciiLowercased(*name).find("com.apple") != std::string::npos))
                    name.reset();
            } else {
                name = LeftoverOwners::ownerName(child, location);
            }
            if (!name) continue;
            const auto* row = LeftoverOwners::knownApp(*name);
            const bool appId = LeftoverOwners::namesAnApp(*name, location);
            // Library folders admit only app ids and known names; Linux's places admit every
            // other name too, as an owner nobody can be matched to.
            if (!row && !appId && !LeftoverOwners::isLinuxPlace(location)) continue;
            Owner& owner = owners[row ? asciiLowercased(row->name) : asciiLowercased(*name)];
            owner.row = row;
            owner.names.insert(*name);
            if (appId) owner.identifiers.insert(*name);
            owner.paths.push_back({folder + "/" + child, location, 0, 0, std::nullopt});
        }
    }

    for (auto& [key, owner] : owners) {
        if (cancelled()) {
            result.cancelled = true;
            break;
        }
        // 5: status.
        bool installed = false;
        for (const auto& n : owner.names) installed = installed || index.knows(n);
        if (owner.row) {
            for (const auto& id : owner.row->identifiers) installed = installed || index.knows(id);
            for (const auto& n : owner.row->folderNames) installed = installed || index.knows(n);
        }
        if (installed) continue;
        OwnerStatus status = owner.identifiers.empty() ? OwnerStatus::unknown : OwnerStatus::gone;

        // 6: sizes and activity.
        std::optional<TimePoint> newest;
        for (auto& p : owner.paths) {
            struct stat st {};
            const bool plainFile = ::lstat(p.path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
            if (plainFile) {
                p.bytes = st.st_size;
            } else {
                FolderMeasure::Options measure;
                measure.deadline = Steady::now() + std::chrono::seconds(3);
                measure.cancel = options.cancel;
                p.bytes = FolderMeasure::measure(p.path, measure).bytes;
            }
            const Summary s = summarize(p.path, Steady::now() + std::chrono::seconds(1));
            p.logicalBytes = s.logicalBytes;
            p.lastActivity = s.newest;
            if (p.lastActivity && (!newest || *p.lastActivity > *newest)) newest = p.lastActivity;
        }

        // 7-8: recent writes lower the certainty; the size filter.
        const bool recentlyWritten = status == OwnerStatus::gone && newest && now - *newest < kRecentWindow;
        if (recentlyWritten) status = OwnerStatus::unknown;
        OrphanFinding f;
        f.paths = std::move(owner.paths);
        if (!passesSizeFilter(status, f.totalBytes())) continue;

        // 9: the finding.
        f.id = "orphan." + key;
        f.status = status;
        if (owner.row) {
            f.bundleIDs = owner.row->identifiers;
            for (const auto& id : owner.identifiers)
                if (std::find(f.bundleIDs.begin(), f.bundleIDs.end(), id) == f.bundleIDs.end()) f.bundleIDs.push_back(id);
        } else {
            f.bundleIDs.assign(owner.identifiers.begin(), owner.identifiers.end());
        }
        std::sort(f.bundleIDs.begin(), f.bundleIDs.end());
        f.ownerName = owner.row ? owner.row->name
                                : f.bundleIDs.empty() ? LeftoverOwners::displayName(*owner.names.begin(), false)
                                                      : LeftoverOwners::displayName(f.bundleIDs.front(), true);
        f.title = f.ownerName + (status == OwnerStatus::gone ? " leftovers (app not installed)" : " (possibly left behind)");

        // 10: the evidence, in order.
        if (recentlyWritten) f.evidence.push_back("Written in the last two weeks, so something still uses it.");
        else if (status == OwnerStatus::gone) f.evidence.push_back("No app registered for " + f.bundleIDs.front() + ".");
        else f.evidence.push_back("No app could be matched to this name, so it may belong to a tool rather than an app.");
        if (newest) {
            const auto age = std::chrono::duration_cast<std::chrono::seconds>(now - *newest).count();
            f.evidence.push_back(age < 86'400 ? std::string("Written today.") : "Newest file written " + wholeDays(age) + " ago.");
        }
        for (const auto& p : f.paths)
            if (p.logicalBytes > 2 * p.bytes && p.logicalBytes >= 1'000'000'000) {
                f.evidence.push_back("Contains a disk image listed as " + byteText(p.logicalBytes) + " that occupies " +
                                     byteText(p.bytes) + ".");
                break;
            }
        result.findings.push_back(std::move(f));
    }

    // 11.
    std::stable_sort(result.findings.begin(), result.findings.end(),
                     [](const OrphanFinding& a, const OrphanFinding& b) { return a.totalBytes() > b.totalBytes(); });
    return result;
}

CleanupPlan AppLeftovers::build(const std::vector<OrphanFinding>& findings, const std::set<std::string>& selectedIDs,
                                const std::string& homeIn) {
    CleanupPlan plan;
    const std::string home = Law::standardizedPath(homeIn);
    for (const auto& f : findings) {
        if (!selectedIDs.count(f.id)) continue;
        if (f.status == OwnerStatus::installed) {
            plan.refusals.push_back(f.ownerName + " is installed, so its data stays.");
            continue;
        }
        for (const auto& p : f.paths) {
            const std::string path = Law::standardizedPath(p.path);
            if (!canCleanLeftoverPath(path, home)) {
                plan.refusals.push_back(pathForPeople(path, home) + " is protected and was skipped.");
                continue;
            }
            CleanupEntry e;
            e.id = "orphan|" + path;
            e.title = f.ownerName + " · " + std::string(LeftoverOwners::label(p.location));
            e.path = path;
            e.bytes = p.bytes;
            e.note = f.status == OwnerStatus::gone
                         ? "Left behind by " + f.ownerName + ", which is not installed. Moves to the Trash."
                         : "Possibly left behind by " + f.ownerName + ". Moves to the Trash.";
            e.group = kGroup;
            e.disposition = CleanupDisposition::trash;
            e.symbolName = "app.dashed";
            e.allowRoot = home + "/" + std::string(LeftoverOwners::relativeFolder(p.location));
            e.origin = CleanupOrigin::orphan;
            e.recheck = RecheckCriteria{};
            e.recheck->touchedAtPlan = p.lastActivity;
            e.ownerBundleIDs = f.bundleIDs;
            e.ownerNames = {f.ownerName};
            if (p.logicalBytes > 2 * p.bytes) e.logicalBytes = p.logicalBytes;
            e.tier = f.status == OwnerStatus::gone ? CleanupTier::orphaned : CleanupTier::possiblyOrphaned;
            plan.entries.push_back(std::move(e));
        }
    }
    return plan;
}

std::set<std::string> AppLeftovers::recommendedIDs(const std::vector<OrphanFinding>& findings) {
    std::set<std::string> ids;
    for (const auto& f : findings)
        if (f.status == OwnerStatus::gone) ids.insert(f.id);
    return ids;
}

std::set<std::string> AppLeftovers::keepExisting(const std::set<std::string>& selectedIDs,
                                                 const std::vector<OrphanFinding>& findings) {
    std::set<std::string> kept;
    for (const auto& f : findings)
        if (selectedIDs.count(f.id)) kept.insert(f.id);
    return kept;
}

} // namespace bv
