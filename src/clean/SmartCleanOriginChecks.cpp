#include "clean/SmartCleanOriginChecks.h"

#include "clean/AppLeftovers.h"
#include "clean/OldProjectScanner.h"

namespace bv {

std::optional<bool> SmartCleanOriginChecks::isArtefactName(std::string_view lowerName) const {
    return OldProjectScanner::isArtefactName(lowerName);
}

std::optional<std::optional<TimePoint>> SmartCleanOriginChecks::projectLastTouched(const std::string& projectPath) const {
    return OldProjectScanner::lastTouched(projectPath);
}

std::optional<std::optional<TimePoint>> SmartCleanOriginChecks::newestActivity(const CleanupEntry& entry,
                                                                               const std::string& resolved) const {
    if (entry.origin == CleanupOrigin::orphan) return AppLeftovers::newestActivity(resolved, 2.0);
    return next_ ? next_->newestActivity(entry, resolved) : std::nullopt;
}

std::optional<bool> SmartCleanOriginChecks::leftoverPathAllowed(const std::string& resolved, const std::string& home) const {
    return AppLeftovers::canCleanLeftoverPath(resolved, home);
}

std::optional<bool> SmartCleanOriginChecks::buildTargetAllowed(const std::string& resolved, const std::string& allowRoot,
                                                               const std::string& projectFolder,
                                                               const std::vector<std::string>& projectNames,
                                                               const std::string& home) const {
    return next_ ? next_->buildTargetAllowed(resolved, allowRoot, projectFolder, projectNames, home) : std::nullopt;
}

} // namespace bv
