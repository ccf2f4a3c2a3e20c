#pragma once
#include <cstdint>
#include <string>

#include "foundation/ProgressHolder.h"

namespace bv {

// What a duplicate scan reports while it runs: files seen by the walk, files whose whole
// contents have been hashed, and the name of the file seen last.
struct DuplicateScanCounters {
    std::int64_t files = 0;
    std::int64_t hashed = 0;
    std::string current;
};

// Shared between the scan (writer) and the model's polling timer (reader).
using DuplicateScanProgress = ProgressHolder<DuplicateScanCounters>;

// The text shown before the first poll.
inline constexpr const char* kDuplicateScanStartText = "Looking at files…";

// The polled text: "<files> files checked" until the first file is fully hashed, then
// "Confirming matches… <hashed> hashed".
[[nodiscard]] std::string duplicateProgressText(const DuplicateScanCounters& counters);

} // namespace bv
