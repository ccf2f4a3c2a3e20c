// Feeds arbitrary bytes to the "rules-v2.json" decoder: it must decode or throw, never crash,
// hang or leak, and a decoded document must survive its own encoding.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "sort/SortRuleJson.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    const auto now = bv::Clock::now();
    try {
        const auto document = bv::SortRuleDocument::fromJson(*json, now);
        const auto again = bv::SortRuleDocument::fromJson(document.toJson(), now);
        if (again.rules.size() != document.rules.size()) std::abort();
    } catch (const std::exception&) {
    }
    return 0;
}
