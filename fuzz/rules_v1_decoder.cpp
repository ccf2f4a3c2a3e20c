// Feeds arbitrary bytes to the "rules.json" decoder and the conversions both ways.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "sort/CleanupRule.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    try {
        const auto rules = bv::cleanupRulesFromJson(*json);
        if (bv::cleanupRulesFromJson(bv::cleanupRulesToJson(rules)) != rules) std::abort();
        for (const auto& rule : rules)
            (void)bv::cleanupRuleFromSortRule(bv::sortRuleFromCleanupRule(rule), rule.destinationBookmark);
    } catch (const std::exception&) {
    }
    return 0;
}
