#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/Dates.h"

namespace bv {

// One thing found below a folder rule's folder.
struct FolderCandidate {
    std::string path;
    std::string name;
    bool isDirectory = false;
    // Allocated size on disk. A folder's is 0 as listed and measured once it is selected.
    std::int64_t bytes = 0;
    std::optional<TimePoint> modified;
    int depth = 1; // 1 for a direct child of the rule's folder

    friend bool operator==(const FolderCandidate&, const FolderCandidate&) = default;
};

} // namespace bv
