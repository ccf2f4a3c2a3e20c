#include "buildwatch/BuildWatchCleanerChecks.h"

#include "buildwatch/BuildWatchCatalog.h"
#include "buildwatch/BuildWatchScanner.h"

namespace bv {

std::optional<bool> BuildWatchCleanerChecks::isArtefactName(std::string_view lowerName) const {
    return next_ ? next_->isArtefactName(lowerName) : std::nullopt;
}

std::optional<std::optional<TimePoint>> BuildWatchCleanerChecks::projectLastTouched(const std::string& projectPath) const {
    return next_ ? next_->projectLastTouched(projectPath) : std::nullopt;
}

std::optional<std::optional<TimePoint>> BuildWatchCleanerChecks::newestActivity(const CleanupEntry& entry,
                                                                                const std::string& resolved) const {
    if (entry.origin == CleanupOrigin::buildWatch) return BuildWatchScanner::newestChange(resolved);
    return next_ ? next_->newestActivity(entry, resolved) : std::nullopt;
}

std::optional<bool> BuildWatchCleanerChecks::buildTargetAllowed(const std::string& resolved, const std::string& allowRoot,
                                                                const std::string& projectFolder,
                                                                const std::vector<std::string>& projectNames,
                                                                const std::string& home) const {
    return BuildWatchCatalog::isAllowedTarget(resolved, allowRoot, projectFolder, projectNames, home);
}

} // namespace bv
