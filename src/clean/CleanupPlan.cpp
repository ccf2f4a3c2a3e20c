#include "clean/CleanupPlan.h"

namespace bv::preview {

std::optional<std::string> previewError(const CleanupPlan& plan) {
    if (plan.isEmpty()) return std::string(kNothingToPreview);
    return std::nullopt;
}

std::vector<CleanupEntry> entriesToClean(const CleanupPlan& plan, const std::set<std::string>& excluded) {
    std::vector<CleanupEntry> out;
    for (const auto& entry : plan.entries)
        if (!excluded.contains(entry.id)) out.push_back(entry);
    return out;
}

std::optional<std::string> cleanError(const std::optional<CleanupPlan>& plan, const std::set<std::string>& excluded) {
    if (!plan) return std::string(kNothingSelectedToClean);
    for (const auto& entry : plan->entries)
        if (!excluded.contains(entry.id)) return std::nullopt;
    return std::string(kNothingSelectedToClean);
}

} // namespace bv::preview
