#include "guidance/Celebration.h"

#include <algorithm>

#include "core/ActionLogEntry.h"

namespace bv {

const char* celebrationTierName(CelebrationTier tier) {
    switch (tier) {
    case CelebrationTier::none: return "none";
    case CelebrationTier::spark: return "spark";
    case CelebrationTier::confetti: return "confetti";
    }
    return "none";
}

CelebrationTier celebrationTier(std::int64_t bytes, std::int64_t best) {
    if (bytes < 1) return CelebrationTier::none;
    if (bytes > 9'999'999'999) return CelebrationTier::confetti;
    if (best >= 1 && best < bytes) return CelebrationTier::confetti; // a new record
    if (bytes > 999'999'999) return CelebrationTier::spark;
    return CelebrationTier::none;
}

std::int64_t previousBest(const std::vector<ActionLogEntry>& log) {
    std::int64_t best = 0;
    for (const auto& entry : log) best = std::max(best, entry.bytesReclaimed);
    return best;
}

std::uint64_t CelebrationState::start(CelebrationTier tier) {
    tier_ = tier;
    return ++id_;
}

bool CelebrationState::expire(std::uint64_t id) {
    if (id != id_ || tier_ == CelebrationTier::none) return false;
    tier_ = CelebrationTier::none;
    return true;
}

} // namespace bv
