#pragma once
#include <atomic>

namespace bv {

// Set once by the model, read by a background scan. The only thing besides progress
// holders that a scan shares with the model.
class CancellationFlag {
public:
    void cancel() noexcept { cancelled_.store(true, std::memory_order_relaxed); }
    [[nodiscard]] bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> cancelled_{false};
};

} // namespace bv
