#pragma once
#include <string>

#include "space/DiskMap.h"

namespace bv {

// A disk map for a terminal: a heading with the totals, then every listed folder, indented by
// depth, largest first, with its size and file count; then the partial-map and unreadable notes.
[[nodiscard]] std::string diskMapText(const DiskMap& map);

// 1234567 -> "1,234,567".
[[nodiscard]] std::string groupedCount(std::int64_t n);

} // namespace bv
