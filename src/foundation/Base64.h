#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// Binary data in JSON files (bookmarks) is written as standard Base64 with padding.
[[nodiscard]] std::string base64Encode(std::string_view bytes);
// Reads standard Base64, padding optional; anything else (bad characters, a stray
// length) gives nothing.
[[nodiscard]] std::optional<std::string> base64Decode(std::string_view text);

} // namespace bv
