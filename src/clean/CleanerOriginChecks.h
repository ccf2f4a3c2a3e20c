#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "clean/CleanupEntry.h"
#include "clean/KeepNewestItems.h"
#include "foundation/Dates.h"

namespace bv {

// The apply-time checks that belong to the features which make entries of an origin (old
// project files, folder rules, app leftovers, Build Watch). The cleaner runs its own path
// law and checks first, then asks these. Each answer that is not given (the default: the
// feature has not supplied it) makes the cleaner leave the entry alone: without its check,
// nothing of that origin is touched.
class CleanerOriginChecks {
public:
    virtual ~CleanerOriginChecks() = default;

    // nodeModules: whether the lower-cased last name is one of the rebuildable folder names.
    [[nodiscard]] virtual std::optional<bool> isArtefactName(std::string_view lowerName) const {
        (void)lowerName;
        return std::nullopt;
    }
    // nodeModules: the project's last-touched date now. The outer optional is empty when the
    // check is not supplied; the inner one when the project has no such date now.
    [[nodiscard]] virtual std::optional<std::optional<TimePoint>> projectLastTouched(const std::string& projectPath) const {
        (void)projectPath;
        return std::nullopt;
    }
    // folderRule: the standardized paths of the newest items of the rule's folder that must
    // survive, recomputed now over what the rule counts (KeepNewestItems). Supplied here:
    // nothing when the folder can't be read.
    [[nodiscard]] virtual std::optional<std::vector<std::string>> newestKept(const std::string& ruleFolder,
                                                                             const KeepNewestItems::Scope& scope,
                                                                             std::int64_t keepNewest) const {
        return KeepNewestItems::newestInFolder(ruleFolder, scope, keepNewest);
    }
    // orphan and buildWatch: the newest activity under a path (orphan with a 2-second time
    // limit). Outer optional as above; inner empty when nothing was found.
    [[nodiscard]] virtual std::optional<std::optional<TimePoint>> newestActivity(const CleanupEntry& entry,
                                                                                 const std::string& resolved) const {
        (void)entry, (void)resolved;
        return std::nullopt;
    }
    // orphan: whether a leftover in one of Linux's per-app places (beyond the library folders
    // the path law knows) may go.
    [[nodiscard]] virtual std::optional<bool> leftoverPathAllowed(const std::string& resolved, const std::string& home) const {
        (void)resolved, (void)home;
        return std::nullopt;
    }
    // buildWatch: the target test for `resolved` with the project folder's names.
    [[nodiscard]] virtual std::optional<bool> buildTargetAllowed(const std::string& resolved, const std::string& allowRoot,
                                                                 const std::string& projectFolder,
                                                                 const std::vector<std::string>& projectNames,
                                                                 const std::string& home) const {
        (void)resolved, (void)allowRoot, (void)projectFolder, (void)projectNames, (void)home;
        return std::nullopt;
    }
};

} // namespace bv
