#pragma once
#include <memory>

#include "clean/CleanerOriginChecks.h"

namespace bv {

// Build Watch's answers to the cleaner's apply-time questions, laid over the checks of the
// other features: for an entry of origin buildWatch the target must still pass the catalogue's
// allowed-target test, and its newest change (one level deep) decides whether a build may be
// running. Every other question goes to `next` unchanged.
class BuildWatchCleanerChecks final : public CleanerOriginChecks {
public:
    explicit BuildWatchCleanerChecks(std::shared_ptr<const CleanerOriginChecks> next = nullptr) : next_(std::move(next)) {}

    [[nodiscard]] std::optional<bool> isArtefactName(std::string_view lowerName) const override;
    [[nodiscard]] std::optional<std::optional<TimePoint>> projectLastTouched(const std::string& projectPath) const override;
    [[nodiscard]] std::optional<std::optional<TimePoint>> newestActivity(const CleanupEntry& entry,
                                                                         const std::string& resolved) const override;
    [[nodiscard]] std::optional<bool> buildTargetAllowed(const std::string& resolved, const std::string& allowRoot,
                                                         const std::string& projectFolder,
                                                         const std::vector<std::string>& projectNames,
                                                         const std::string& home) const override;

private:
    std::shared_ptr<const CleanerOriginChecks> next_;
};

} // namespace bv
