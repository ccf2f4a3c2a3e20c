#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Dates.h"
#include "sort/SortRule.h"

namespace bv {

struct FileSample;

// A file name taken apart once, lower-cased, so that many rules can test it cheaply.
struct SampleNames {
    std::string name;      // the whole name, lower case
    std::string extension; // after the last dot; empty without one (or for ".name")
    std::string stem;      // the name without "." and the extension

    [[nodiscard]] static SampleNames of(std::string_view fileName);
};

// Lower case for comparisons of names: ASCII directly, anything else through ICU.
[[nodiscard]] std::string foldedCase(std::string_view text);

// Whether a file is of a kind word ("image", "video", "pdf", "disk image", "installer",
// "archive", "screenshot", a type identifier or an extension). `value` is lower case.
[[nodiscard]] bool sampleIsOfKind(const FileSample& sample, const SampleNames& names, const std::string& value);

// One rule prepared for matching many samples: its texts lower-cased and its conditions
// sorted into extensions, places, gates and alternatives once. Holds a copy of the rule.
class RuleMatcher {
public:
    explicit RuleMatcher(const SortRule& rule);

    [[nodiscard]] bool matches(const FileSample& sample, const SampleNames& names, TimePoint now) const;
    [[nodiscard]] bool matches(const FileSample& sample, TimePoint now) const;
    [[nodiscard]] const SortRule& rule() const { return rule_; }

    // One condition with its text already lower-cased.
    [[nodiscard]] static bool conditionHolds(const SortCondition& folded, const FileSample& sample,
                                             const SampleNames& names, TimePoint now);

private:
    SortRule rule_;
    std::vector<std::string> extensions_;
    std::vector<SortPlace> places_;
    std::vector<SortCondition> gates_;        // olderThanDays, minimumBytes
    std::vector<SortCondition> alternatives_; // the other conditions, text lower-cased
};

} // namespace bv
