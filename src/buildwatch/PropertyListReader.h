#pragma once
#include <optional>
#include <string>

namespace bv {

// Reads one string of an XML property list's top-level dictionary, as DerivedData folders
// carry them. A missing file, a binary list, malformed text, a nested key or a non-string
// value all give nothing.
struct PropertyListReader {
    [[nodiscard]] static std::optional<std::string> topLevelString(const std::string& path, const std::string& key);
};

} // namespace bv
