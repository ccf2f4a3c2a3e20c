#pragma once
#include <memory>

#include "clean/CleanerOriginChecks.h"

namespace bv {

// The apply-time checks of old project files and app leftovers. Questions about other
// origins go to `next` (when given), so each feature's checks can be stacked on another's.
class SmartCleanOriginChecks : public CleanerOriginChecks {
public:
    explicit SmartCleanOriginChecks(std::shared_ptr<const CleanerOriginChecks> next = nullptr) : next_(std::move(next)) {}

    // The artefact table's names.
    [[nodiscard]] std::optional<bool> isArtefactName(std::string_view lowerName) const override;
    // The project's last-touched date as the scan computed it.
    [[nodiscard]] std::optional<std::optional<TimePoint>> projectLastTouched(const std::string& projectPath) const override;
    // orphan: the newest activity under the leftover within 2 seconds; other origins: `next`.
    [[nodiscard]] std::optional<std::optional<TimePoint>> newestActivity(const CleanupEntry& entry,
                                                                         const std::string& resolved) const override;
    // A direct child of Linux's per-app places that is not the system's own.
    [[nodiscard]] std::optional<bool> leftoverPathAllowed(const std::string& resolved, const std::string& home) const override;

    [[nodiscard]] std::optional<bool> buildTargetAllowed(const std::string& resolved, const std::string& allowRoot,
                                                         const std::string& projectFolder,
                                                         const std::vector<std::string>& projectNames,
                                                         const std::string& home) const override;

private:
    std::shared_ptr<const CleanerOriginChecks> next_;
};

} // namespace bv
