#pragma once
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "clean/CleanupEntry.h"

namespace bv {

// What a preview shows: the entries that may be cleaned, in the order the builders appended
// them, and one finished sentence for each item a builder would not plan ("Left alone").
// Compared by content, refusals included. Never written to disk.
struct CleanupPlan {
    std::vector<CleanupEntry> entries;
    std::vector<std::string> refusals;

    bool operator==(const CleanupPlan&) const = default;

    [[nodiscard]] bool isEmpty() const { return entries.empty() && refusals.empty(); }
};

// The preview's two rules that need no model, kept here so every screen and test agrees.
namespace preview {

inline constexpr const char* kNothingToPreview = "Choose what to preview. Nothing is selected.";
inline constexpr const char* kNothingSelectedToClean = "Nothing is selected to clean.";

// The error line for a freshly built plan: nothing when it can be shown, the "nothing is
// selected" line when it has neither entries nor refusals (the model then stays as it is).
[[nodiscard]] std::optional<std::string> previewError(const CleanupPlan& plan);

// The entries that reach the cleaner: those not unchecked, in plan order.
[[nodiscard]] std::vector<CleanupEntry> entriesToClean(const CleanupPlan& plan, const std::set<std::string>& excluded);

// The error line for a clean request: "Nothing is selected to clean." when no entry is left
// after the unchecked ones are taken out (or there is no plan), else nothing.
[[nodiscard]] std::optional<std::string> cleanError(const std::optional<CleanupPlan>& plan,
                                                    const std::set<std::string>& excluded);

} // namespace preview
} // namespace bv
