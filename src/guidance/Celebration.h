#pragma once
#include <cstdint>
#include <vector>

namespace bv {

struct ActionLogEntry;

// The brief animation after a clean: a spark for a good clean, confetti for a very large one
// or a new record.
enum class CelebrationTier { none, spark, confetti };

[[nodiscard]] const char* celebrationTierName(CelebrationTier tier);

// The tier for a clean that freed `bytes`, given the best single clean before it (0 when the
// log was empty): over 9999999999 bytes or beating an earlier best is confetti, over
// 999999999 a spark, anything else nothing.
[[nodiscard]] CelebrationTier celebrationTier(std::int64_t bytes, std::int64_t previousBest);

// The largest bytesReclaimed among `log`'s entries, or 0 for an empty log. Read before the
// clean's own entries are added.
[[nodiscard]] std::int64_t previousBest(const std::vector<ActionLogEntry>& log);

// How long a celebration stays on screen.
inline constexpr int kCelebrationMilliseconds = 1600;

// The shown tier and its generation. Each start bumps the generation and hands it back; the
// timer of that start later calls expire with it, which only clears the tier when no newer
// celebration began in between, so a second celebration keeps its own full time.
class CelebrationState {
public:
    [[nodiscard]] CelebrationTier tier() const { return tier_; }
    [[nodiscard]] std::uint64_t id() const { return id_; }

    // Shows `tier` and returns the id its timer must hand to expire.
    [[nodiscard]] std::uint64_t start(CelebrationTier tier);
    // True when this ended the shown celebration (the id was still the newest).
    bool expire(std::uint64_t id);

private:
    CelebrationTier tier_ = CelebrationTier::none;
    std::uint64_t id_ = 0;
};

} // namespace bv
