#pragma once
#include <cstdint>
#include <string>

namespace bv {

// The one way sizes are written for people: decimal units (1 KB = 1000 bytes).
// Below 1 byte the answer is "0 GB"; "1 byte", "512 bytes"; KB without decimals,
// MB with one, GB and above with two, trailing zeros dropped ("1.5 MB", "184 GB").
[[nodiscard]] std::string byteText(std::int64_t bytes);

} // namespace bv
