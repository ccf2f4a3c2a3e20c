#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "sort/FileSample.h"
#include "sort/SortRule.h"

namespace bv {

// A rule offered from what lies in Downloads, with what led to it.
struct RuleSuggestion {
    std::string id;       // the detector's id; what a dismissal remembers
    std::string title;
    std::string evidence; // one line on what was found
    SortRule rule;        // a draft: a move still needs its folder
    std::int64_t fileCount = 0;
    std::int64_t bytes = 0;
    friend bool operator==(const RuleSuggestion&, const RuleSuggestion&) = default;
};

// One detector: an id and a look at the samples.
struct SuggestionDetector {
    std::string id;
    std::function<std::optional<RuleSuggestion>(const std::vector<FileSample>&, TimePoint)> detect;
};

struct RuleSuggestions {
    // The nine detectors in their fixed order, built once and shared.
    [[nodiscard]] static const std::vector<SuggestionDetector>& detectors();

    // What to show: each detector not dismissed, in order, keeping a finding of at least one
    // file whose own rule matches some sample now.
    [[nodiscard]] static std::vector<RuleSuggestion> refresh(const std::vector<FileSample>& samples, TimePoint now,
                                                             const std::vector<std::string>& dismissed);

    // The dismissed ids with `id` added unless it is there already.
    [[nodiscard]] static std::vector<std::string> dismissing(std::vector<std::string> dismissed, const std::string& id);

    // For each rule (by id text), the files among the samples it matches now.
    [[nodiscard]] static std::map<std::string, std::int64_t> matchCounts(const std::vector<SortRule>& rules,
                                                                         const std::vector<FileSample>& samples,
                                                                         TimePoint now);

    // "Old installers, screenshots, receipts, files from one site. Until then, describe a
    // rule yourself.", shown when there is nothing to suggest.
    static constexpr const char* kNoSuggestions =
        "Old installers, screenshots, receipts, files from one site. Until then, describe a rule yourself.";
};

} // namespace bv
