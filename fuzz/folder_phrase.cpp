// Feeds arbitrary text to the Autopilot sentence grammar: a reading or nothing, never a
// crash, and a reading always says what to remove.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "autopilot/FolderRuleParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto parsed = bv::FolderRuleParser::parse(text);
    if (!parsed) return 0;
    if (parsed->names.empty() && parsed->extensions.empty() && !parsed->minimumAgeDays && !parsed->keepNewest)
        std::abort();
    if (parsed->interpretation.empty()) std::abort();
    (void)parsed->toJson().dump();
    return 0;
}
