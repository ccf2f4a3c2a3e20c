#pragma once
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "sort/CleanupRule.h"
#include "sort/FileSample.h"
#include "sort/PlannedAction.h"
#include "sort/SortRule.h"

namespace bv {

// Building a preview. Blocking (it lists folders); meant for a background task. A run is
// allowed only against a preview whose fingerprint equals that of what the screen shows.
struct SortPreview {
    // "draft|<phrase>|<folder>", "sort|<id>,<id>", "rule|<id>".
    [[nodiscard]] static std::string draftFingerprint(const std::string& draftPhrase, const std::string& destinationPath);
    [[nodiscard]] static std::string rulesFingerprint(const std::vector<SortRule>& rules);
    [[nodiscard]] static std::string cleanupRuleFingerprint(const Uuid& id);

    // The settled samples of Downloads, and of the Desktop when some rule names it. Origins
    // are read only when some rule asks where files came from.
    [[nodiscard]] static std::vector<FileSample> gather(const std::vector<SortRule>& rules, const std::string& downloads,
                                                        const std::string& desktop, TimePoint now);

    // Plans every enabled rule in order against the samples: one step for each match (a
    // file two rules match is planned twice), a warning instead for a move without a folder.
    [[nodiscard]] static SimulationResult simulate(const std::vector<SortRule>& rules,
                                                   const std::vector<FileSample>& samples, TimePoint now);

    // Gathers, then simulates.
    [[nodiscard]] static SimulationResult preview(const std::vector<SortRule>& rules, const std::string& downloads,
                                                  const std::string& desktop, TimePoint now);

    // The preview of one older Downloads rule, through its newer form. Warns when Downloads
    // can't be read and when the rule's folder no longer exists.
    [[nodiscard]] static SimulationResult previewCleanupRule(const CleanupRule& rule, const std::string& downloads,
                                                             TimePoint now);
};

// "Downloads isn’t readable. Allow access, then preview again."
inline constexpr const char* kDownloadsUnreadable = "Downloads isn\u2019t readable. Allow access, then preview again.";

} // namespace bv
