// Feeds arbitrary text to the name pattern reader; an accepted pattern is never empty and
// reads back the same from its own canonical spelling.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "arrange/NamePattern.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto pattern = bv::NamePattern::parse(text);
    if (!pattern) return 0;
    if (pattern->value.empty()) std::abort();
    if (pattern->type == bv::NamePattern::Type::prefix) {
        const auto again = bv::NamePattern::parse(pattern->value + "*");
        if (!again || *again != *pattern) std::abort();
    }
    (void)pattern->condition();
    return 0;
}
