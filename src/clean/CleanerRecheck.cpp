// The recheck step of the cleaner: what the plan saw, compared with the disk now.
#include <algorithm>

#include "clean/Cleaner.h"
#include "clean/DevCacheCatalog.h"
#include "platform/SafeFileSystem.h"

namespace bv {
namespace {

// The item's content modification date now, not following a link; nothing if unreadable.
std::optional<TimePoint> modifiedNow(const std::string& path) {
    try {
        if (const auto st = statNoFollow(path)) return st->modified;
    } catch (const FileSystemError&) {
    }
    return std::nullopt;
}

void staleUnless(bool ok) {
    if (!ok) throw CleanerError::stale();
}

} // namespace

void Cleaner::recheck(const CleanupEntry& entry, const std::string& path, const std::string& resolved) const {
    if (!entry.recheck) return;
    const RecheckCriteria& r = *entry.recheck;
    const CleanerOriginChecks* checks = env_.originChecks.get();

    switch (entry.origin) {
    case CleanupOrigin::devCache: return;

    case CleanupOrigin::nodeModules: {
        if (!r.touchedAtPlan) return;
        staleUnless(entry.parentPath.has_value());
        const auto touched = checks ? checks->projectLastTouched(*entry.parentPath) : std::nullopt;
        staleUnless(touched.has_value() && touched->has_value() && sameMoment(**touched, *r.touchedAtPlan));
        return;
    }

    case CleanupOrigin::folderRule: {
        if (r.touchedAtPlan) {
            const auto m = modifiedNow(path);
            staleUnless(m && sameMoment(*m, *r.touchedAtPlan));
        }
        if (r.keepNewest && entry.parentPath) {
            const KeepNewestItems::Scope scope{r.names, r.directoriesOnly, r.includeSubfolders};
            const auto newest = checks ? checks->newestKept(*entry.parentPath, scope, *r.keepNewest) : std::nullopt;
            staleUnless(newest.has_value());
            // Neither one of the newest itself nor a folder that holds one.
            const std::string me = DevCacheCatalog::standardizedPath(path);
            staleUnless(std::none_of(newest->begin(), newest->end(), [&](const std::string& kept) {
                return kept == me || (kept.size() > me.size() && kept.compare(0, me.size(), me) == 0 && kept[me.size()] == '/');
            }));
        }
        return;
    }

    case CleanupOrigin::duplicate: {
        std::optional<ItemStat> st;
        try {
            st = statNoFollow(path);
        } catch (const FileSystemError&) {
        }
        staleUnless(st && st->isRegular());
        if (r.expectedBytes) staleUnless(st->size == *r.expectedBytes);
        if (r.touchedAtPlan) staleUnless(st->modified && sameMoment(*st->modified, *r.touchedAtPlan));
        if (r.keeperPath) {
            std::optional<ItemStat> keeper;
            try {
                keeper = statNoFollow(*r.keeperPath);
            } catch (const FileSystemError&) {
            }
            // The keeper must still be a real file: a copy is only redundant while it stands.
            staleUnless(keeper && keeper->isRegular());
            staleUnless(keeper->identity != st->identity);
            if (r.keeperBytes) staleUnless(keeper->size == *r.keeperBytes);
            if (r.keeperModified) staleUnless(keeper->modified && sameMoment(*keeper->modified, *r.keeperModified));
        }
        return;
    }

    case CleanupOrigin::orphan: {
        if (!r.touchedAtPlan) return;
        const auto newest = checks ? checks->newestActivity(entry, resolved) : std::nullopt;
        staleUnless(newest.has_value());
        if (*newest && **newest - *r.touchedAtPlan > std::chrono::seconds(60)) throw CleanerError::stale();
        return;
    }

    case CleanupOrigin::buildWatch: {
        const auto newest = checks ? checks->newestActivity(entry, resolved) : std::nullopt;
        staleUnless(newest.has_value());
        if (*newest && env_.now() - **newest < std::chrono::seconds(900)) throw CleanerError::buildRunning();
        return;
    }
    }
}

} // namespace bv
