// Feeds arbitrary bytes to the "folder-rules.json" decoder: decode or throw, and a decoded
// list survives its own encoding unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "autopilot/FolderWatchRule.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    try {
        const auto rules = bv::folderRulesFromJson(*json);
        const auto again = bv::folderRulesFromJson(bv::folderRulesToJson(rules));
        if (again.size() != rules.size()) std::abort();
        for (const auto& rule : rules) (void)rule.detailLines();
    } catch (const std::exception&) {
    }
    return 0;
}
