#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "space/SpaceSnapshot.h"

namespace bv {

// Which folders changed size between two snapshots of the same root.
struct SnapshotDiffer {
    struct Delta {
        std::string path;
        std::int64_t oldBytes = 0;
        std::int64_t newBytes = 0;
        [[nodiscard]] bool grew() const { return newBytes > oldBytes; }
        friend bool operator==(const Delta&, const Delta&) = default;
    };

    // Empty when the roots differ. A path on one side only counts as grown from, or shrunk
    // to, nothing (a top slice of 200 entries makes that happen by design). Unchanged paths
    // drop out; the rest go largest change first (equal changes by path), at most `limit`.
    [[nodiscard]] static std::vector<Delta> diff(const SpaceSnapshot& older, const SpaceSnapshot& newer,
                                                 std::size_t limit);
};

} // namespace bv
