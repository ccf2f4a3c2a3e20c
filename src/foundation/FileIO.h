#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// Writes the whole content to a temporary file beside `path`, syncs it, renames it over
// `path` and syncs the folder, so a crash leaves the old file or the new one, never a torn
// one. Returns false on any failure, leaving `path` untouched.
[[nodiscard]] bool writeFileAtomically(const std::string& path, std::string_view content);

// The whole file, or nothing when it cannot be read.
[[nodiscard]] std::optional<std::string> readWholeFile(const std::string& path);

// Makes the folder and its parents; true when it exists afterwards.
bool makeDirectories(const std::string& path, unsigned mode = 0755);

} // namespace bv
