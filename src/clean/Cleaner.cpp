#include "clean/Cleaner.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <dirent.h>

#include "clean/DevCacheCatalog.h"
#include "clean/KeptVersions.h"
#include "foundation/ByteText.h"
#include "platform/SafeFileSystem.h"
#include "platform/Trash.h"

namespace bv {
namespace {

using Law = DevCacheCatalog;

std::string lowerText(std::string s) {
    for (auto& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return s;
}

CleanerError fromChange(const ItemChangedError& e) {
    switch (e.kind()) {
    case ItemChangedError::Kind::missing: return CleanerError::missing();
    case ItemChangedError::Kind::becameLink: return CleanerError::symlink();
    case ItemChangedError::Kind::replaced: break;
    }
    return CleanerError::stale();
}

// The resolved path: every link followed, then standardized. A vanished item is `missing`.
std::string resolvePath(const std::string& path) {
    char buf[PATH_MAX];
    if (!::realpath(path.c_str(), buf)) {
        if (errno == ENOENT || errno == ENOTDIR) throw CleanerError::missing();
        throw FileSystemError(errno, "Couldn’t look up “" + path + "”.");
    }
    return Law::standardizedPath(buf);
}

std::vector<std::string> directNames(const std::string& folder) {
    std::vector<std::string> names;
    DIR* d = ::opendir(folder.c_str());
    if (!d) return names; // an unreadable folder counts as empty
    while (dirent* e = ::readdir(d)) {
        const std::string n = e->d_name;
        if (n != "." && n != "..") names.push_back(n);
    }
    ::closedir(d);
    return names;
}

bool isBelow(const std::string& path, const std::string& root) {
    return path == root || (path.size() > root.size() && path.compare(0, root.size(), root) == 0 &&
                            (root == "/" || path[root.size()] == '/'));
}

std::string lastName(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

std::string pathForPeople(const std::string& path, const std::string& home) {
    const std::string h = Law::standardizedPath(home);
    if (h.empty() || h == "/") return path;
    if (path == h) return "~";
    if (path.size() > h.size() && path.compare(0, h.size(), h) == 0 && path[h.size()] == '/') return "~" + path.substr(h.size());
    return path;
}

std::string Cleaner::failureLine(const std::string& title, const std::string& reason) {
    return "Couldn’t clean " + title + ". " + reason;
}

bool Cleaner::hasLockFile(const std::vector<std::string>& names) {
    for (const auto& n : names)
        for (const std::string suffix : {".lock", ".sock", ".pid"})
            if (n.size() >= suffix.size() && n.compare(n.size() - suffix.size(), suffix.size(), suffix) == 0) return true;
    return false;
}

std::optional<std::string> Cleaner::inUseReason(const std::string& path, const std::vector<std::string>& bundleIDs,
                                                const std::vector<std::string>& names) const {
    if (!bundleIDs.empty() || !names.empty()) {
        if (auto owner = RunningApps::runningOwner(env_.runningProcesses(), bundleIDs, names))
            return *owner + " is running. Quit it first.";
    }
    const auto st = statNoFollow(path);
    if (st && st->isDirectory() && hasLockFile(directNames(path))) return "It is in use right now (a lock file is present).";
    return std::nullopt;
}

Cleaner::Action Cleaner::chooseAction(const CleanupEntry& entry, const std::string& path, const std::string& resolved,
                                      const std::string& home, const KeptVersions& kept) const {
    const std::string root = Law::standardizedPath(entry.effectiveAllowRoot());
    const auto byDisposition = [&] {
        return entry.disposition == CleanupDisposition::permanent ? Action::permanent : Action::trash;
    };
    const auto require = [](bool ok) {
        if (!ok) throw CleanerError::refused();
    };
    const CleanerOriginChecks* checks = env_.originChecks.get();
    switch (entry.origin) {
    case CleanupOrigin::devCache: {
        require(Law::isInsideRoot(path, resolved, root));
        if (entry.id == "sim-unavailable") {
            const std::string devices = home + "/Library/Developer/CoreSimulator/Devices";
            require(resolved == devices && root == devices);
            return Action::simulatorTool;
        }
        require(Law::canCleanCachePath(resolved, home, kept));
        return entry.id == "npm" ? Action::packageTool : Action::trash;
    }
    case CleanupOrigin::nodeModules: {
        const auto artefact = checks ? checks->isArtefactName(lowerText(lastName(path))) : std::nullopt;
        require(artefact.value_or(false));
        require(Law::isInsideRoot(path, resolved, root));
        require(!Law::isProtectedPath(resolved, home) && !Law::hasGitComponent(resolved));
        return byDisposition();
    }
    case CleanupOrigin::folderRule:
        require(entry.parentPath && !entry.parentPath->empty());
        require(Law::canCleanRulePath(resolved, *entry.parentPath, home));
        return byDisposition();
    case CleanupOrigin::duplicate:
        require(entry.disposition == CleanupDisposition::trash);
        require(Law::isInsideRoot(path, resolved, root));
        require(Law::canCleanDuplicatePath(resolved, home));
        return Action::trash;
    case CleanupOrigin::orphan:
        require(entry.disposition == CleanupDisposition::trash);
        require(Law::isInsideRoot(path, resolved, root));
        require(Law::canCleanOrphanPath(resolved, home) ||
                (checks && checks->leftoverPathAllowed(resolved, home).value_or(false)));
        return Action::trash;
    case CleanupOrigin::buildWatch: {
        require(entry.parentPath && !entry.parentPath->empty() && !entry.allowRoot.empty());
        require(isBelow(resolved, path));
        const auto allowed = checks ? checks->buildTargetAllowed(resolved, entry.allowRoot,
                                                                 Law::standardizedPath(*entry.parentPath),
                                                                 directNames(entry.allowRoot), home)
                                    : std::nullopt;
        require(allowed.value_or(false));
        return byDisposition();
    }
    }
    throw CleanerError::refused();
}

ActionLogEntry Cleaner::apply(const CleanupEntry& entry, const std::string& homeIn, const KeptVersions& kept) const {
    const std::string path = Law::standardizedPath(entry.path);
    if (path.empty() || path.front() != '/') throw CleanerError::missing();

    // 1-2: look the item up again, never through a link.
    const auto seen = statNoFollow(path);
    if (!seen) throw CleanerError::missing();
    if (seen->isLink()) throw CleanerError::symlink();

    // 3-4: the resolved path and the origin's law.
    const std::string resolved = resolvePath(path);
    const std::string home = Law::standardizedPath(homeIn);
    const Action action = chooseAction(entry, path, resolved, home, kept);

    // 5-6: what the plan saw must still hold, and nobody may be using it.
    recheck(entry, path, resolved);
    if (auto why = inUseReason(resolved, entry.ownerBundleIDs, entry.ownerNames)) throw CleanerError::inUse(*why);

    if (env_.beforeAction) env_.beforeAction(entry);

    // 7: act on the object that was checked, reached without links.
    const std::string size = byteText(entry.bytes);
    const auto pinned = [&] {
        try {
            return pinItem(resolved, seen->identity);
        } catch (const ItemChangedError& e) {
            throw fromChange(e);
        }
    };
    std::optional<std::string> trashedPath; // where a Trash move landed, for putting it back later
    const auto toTrash = [&] {
        PinnedItem item = pinned();
        try {
            trashedPath = Trash::moveToTrash(item, env_.now()).trashedPath;
        } catch (const ItemChangedError& e) {
            throw fromChange(e);
        }
    };

    std::string title;
    std::string symbol = entry.symbolName;
    const bool isBuildWatch = entry.origin == CleanupOrigin::buildWatch;
    const bool isProjectFiles = entry.origin == CleanupOrigin::nodeModules;
    const auto ordinaryTitle = [&](bool trashed) {
        if (isProjectFiles) return std::string(trashed ? "Trashed" : "Removed") + " old project files · " + size;
        if (isBuildWatch) return std::string(trashed ? "Build Watch trashed " : "Build Watch removed ") + entry.title + " · " + size;
        return std::string(trashed ? "Trashed " : "Removed ") + entry.title + " · " + size;
    };

    switch (action) {
    case Action::trash:
        toTrash();
        title = ordinaryTitle(true);
        break;
    case Action::permanent: {
        PinnedItem item = pinned();
        try {
            removePinnedItem(item);
        } catch (const ItemChangedError& e) {
            throw fromChange(e);
        }
        title = ordinaryTitle(false);
        break;
    }
    case Action::packageTool:
        if (const auto status = env_.runPackageTool(); status && *status == 0) {
            title = "Cleared package downloads · " + size;
            symbol = "terminal";
        } else {
            // npm may not be on our path: the folder goes to the Trash instead, never away for good.
            toTrash();
            title = ordinaryTitle(true);
        }
        break;
    case Action::simulatorTool:
        if (!env_.runSimulatorTool()) throw CleanerError::commandFailed();
        title = "Removed unavailable simulators · " + size;
        symbol = "terminal";
        break;
    }

    // 8: the log entry.
    ActionLogEntry log;
    log.id = Uuid::generate();
    log.date = env_.now();
    log.title = title;
    log.subtitle = pathForPeople(entry.path, home) + " · " + size + " · " + entry.note;
    log.symbolName = symbol;
    log.bytesReclaimed = entry.bytes;
    log.sourcePath = entry.path;
    log.trashedPath = trashedPath;
    return log;
}

Cleaner::ListResult Cleaner::applyList(const std::vector<CleanupEntry>& entries, const std::string& home) const {
    const KeptVersions kept = keptNodeVersions(home);
    ListResult result;
    for (const auto& entry : entries) {
        try {
            result.logs.push_back(apply(entry, home, kept));
        } catch (const CleanerError& e) {
            result.failures.push_back(failureLine(entry.title, e.text()));
        } catch (const std::exception& e) {
            result.failures.push_back(failureLine(entry.title, e.what()));
        }
    }
    return result;
}

} // namespace bv
