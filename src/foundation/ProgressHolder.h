#pragma once
#include <mutex>

namespace bv {

// A lock around a plain progress record: a scan writes through update(), a main-thread
// timer polls snapshot() ten to sixteen times a second. Nothing is signalled per file.
template <class Fields>
class ProgressHolder {
public:
    template <class Change>
    void update(Change&& change) {
        std::lock_guard lock(mutex_);
        change(fields_);
    }
    [[nodiscard]] Fields snapshot() const {
        std::lock_guard lock(mutex_);
        return fields_;
    }
    void reset() {
        std::lock_guard lock(mutex_);
        fields_ = Fields{};
    }

private:
    mutable std::mutex mutex_;
    Fields fields_{};
};

} // namespace bv
