#include "space/SnapshotDiffer.h"

#include <algorithm>
#include <map>

namespace bv {

std::vector<SnapshotDiffer::Delta> SnapshotDiffer::diff(const SpaceSnapshot& older, const SpaceSnapshot& newer,
                                                        std::size_t limit) {
    if (older.rootPath != newer.rootPath) return {};
    // A later entry for the same path replaces the former.
    std::map<std::string, std::pair<std::int64_t, std::int64_t>> both;
    for (const auto& e : older.entries) both[e.path].first = e.bytes;
    for (const auto& e : newer.entries) both[e.path].second = e.bytes;
    std::vector<Delta> out;
    for (const auto& [path, figures] : both)
        if (figures.first != figures.second) out.push_back({path, figures.first, figures.second});
    const auto change = [](const Delta& d) {
        const std::int64_t c = d.newBytes - d.oldBytes;
        return c < 0 ? -c : c;
    };
    std::stable_sort(out.begin(), out.end(), [&](const Delta& a, const Delta& b) { return change(a) > change(b); });
    if (out.size() > limit) out.resize(limit);
    return out;
}

} // namespace bv
