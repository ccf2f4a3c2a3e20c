// Feeds arbitrary text to the Auto-Sort sentence grammars as the editor does on every
// keystroke: every line must get a verdict, and no word may be marked outside its line.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "sort/SortRuleParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto now = bv::Clock::now();
    for (const auto& line : bv::SortRuleParser::reviewLines(text, now)) {
        const auto& review = line.review;
        if (review.parsed.has_value() == review.message.has_value()) std::abort();
        for (const auto& span : review.unrecognized)
            if (span.start < 0 || span.length <= 0) std::abort();
        if (review.parsed) {
            (void)bv::chipLine(review.parsed->rule);
            for (const auto& chip : review.parsed->chips)
                (void)bv::SortRuleParser::removingChip(chip.id, review.parsed->rule);
            (void)bv::encodeJson(bv::toJson(line));
        }
    }
    return 0;
}
