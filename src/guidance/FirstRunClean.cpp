#include "guidance/FirstRunClean.h"

#include <climits>
#include <cstdlib>

#include "clean/AppLeftovers.h"
#include "clean/Cleaner.h"
#include "clean/CleanupManifest.h"
#include "clean/DevCacheCatalog.h"
#include "clean/KeptVersions.h"
#include "foundation/ByteText.h"
#include "platform/Trash.h"

namespace bv {

namespace {

std::string resolved(const std::string& path) {
    char buffer[PATH_MAX];
    if (::realpath(path.c_str(), buffer)) return buffer;
    return DevCacheCatalog::standardizedPath(path);
}

bool isBelowSystemRoot(const std::string& path) {
    if (DevCacheCatalog::isSystemPath(path)) return true;
    const std::string p = DevCacheCatalog::standardizedPath(path);
    for (const auto& root : DevCacheCatalog::systemRoots())
        if (root != "/" && (p == root || p.rfind(root + "/", 0) == 0)) return true;
    return false;
}

} // namespace

bool FirstRunClean::passesLaw(const FirstRunItem& item, const std::string& home) {
    const std::string real = resolved(item.path);
    if (!DevCacheCatalog::isInsideRoot(item.path, real, item.allowRoot)) return false;
    if (isBelowSystemRoot(item.path) || isBelowSystemRoot(real)) return false;
    if (item.categoryID == "developer")
        return DevCacheCatalog::canCleanCachePath(item.path, home, keptNodeVersions(home));
    if (item.categoryID == "leftovers") return AppLeftovers::canCleanLeftoverPath(item.path, home);
    return true;
}

std::string FirstRunClean::failureLine(const std::string& title) {
    return "Couldn\u2019t move \u201c" + title + "\u201d to the Trash";
}

FirstRunClean::Result FirstRunClean::run(const std::vector<FirstRunItem>& items, const std::string& home,
                                         const std::string& manifestFolder, const std::string& appVersion,
                                         TimePoint now) {
    Result result;
    for (const auto& item : items) {
        if (!passesLaw(item, home)) {
            result.failures.push_back(failureLine(item.title));
            continue;
        }
        std::string trashedPath;
        try {
            trashedPath = Trash::moveToTrash(item.path, now).trashedPath;
        } catch (const std::exception&) {
            result.failures.push_back(failureLine(item.title));
            continue;
        }
        const std::string size = byteText(item.bytes);
        ActionLogEntry log;
        log.id = Uuid::generate();
        log.date = now;
        log.title = "Trashed " + item.title + " \u00b7 " + size;
        log.subtitle = pathForPeople(item.path, home) + " \u00b7 " + size + " \u00b7 " + item.safety;
        log.symbolName = "trash";
        log.bytesReclaimed = item.bytes;
        log.sourcePath = item.path;
        log.trashedPath = trashedPath;
        result.logs.push_back(std::move(log));
        result.freed += item.bytes;
    }
    result.manifestPath = CleanupManifest::write(kTrigger, result.logs, result.failures, now, manifestFolder, appVersion);
    return result;
}

} // namespace bv
