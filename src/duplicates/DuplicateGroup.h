#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

// One copy in a group of identical files, as the file system described it when the group
// was made.
struct DuplicateFile {
    std::string path;                  // standard form
    std::int64_t bytes = 0;            // the file's size
    std::optional<TimePoint> modified; // content modification date, when it could be read
    bool sharesStorage = false;        // the file has two or more hard links

    friend bool operator==(const DuplicateFile&, const DuplicateFile&) = default;
};

// A set of files whose whole contents hash to the same SHA-256.
struct DuplicateGroup {
    std::string id;           // "<decimal size>-<lower-case hex SHA-256>"
    std::int64_t fileSize = 0;
    std::vector<DuplicateFile> files; // ascending by path (byte order)
    // fileSize times one less than the number of distinct storage objects among the files:
    // what trashing every copy but one would give back. Hard links of one file free nothing.
    std::int64_t reclaimableBytes = 0;

    friend bool operator==(const DuplicateGroup&, const DuplicateGroup&) = default;
};

// The form the terminal's --json prints: the field names as keys, dates as ISO 8601.
[[nodiscard]] Json encodeDuplicateGroup(const DuplicateGroup& group);
[[nodiscard]] Json encodeDuplicateGroups(const std::vector<DuplicateGroup>& groups);

} // namespace bv
