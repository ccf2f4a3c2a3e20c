#pragma once
#include <cstdint>
#include <limits>

namespace bv {

// Sizes come from files people can edit and from file systems that can report anything; a
// sum clamps at the ends of the range rather than wrapping.
[[nodiscard]] inline std::int64_t saturatingAdd(std::int64_t a, std::int64_t b) {
    std::int64_t out = 0;
    if (!__builtin_add_overflow(a, b, &out)) return out;
    return b > 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

} // namespace bv
