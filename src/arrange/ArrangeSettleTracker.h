#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "sort/FileSample.h"

namespace bv {

// Remembers what each file of Downloads looked like, so a sweep can tell a finished
// download from one still being written: a file is settled once its size and modification
// date have stayed the same for `kSettleTime`.
class ArrangeSettleTracker {
public:
    // How long a file must stay unchanged before it may move.
    static constexpr std::chrono::milliseconds kSettleTime{2000};

    struct Look {
        std::int64_t size = 0;
        std::optional<TimePoint> modified;
        TimePoint since; // since when the file has looked like this
        friend bool operator==(const Look&, const Look&) = default;
    };

    // The samples that have settled, in their given order. A path seen for the first time,
    // or whose size or modification date changed, starts a new look that counts from its
    // modification date (never later than `now`); a sample is settled once its look is
    // `kSettleTime` old. A file still being written has a fresh modification date at every
    // listing, so it never settles. The map is rebuilt from `samples`, so paths gone from
    // the listing are forgotten.
    [[nodiscard]] std::vector<FileSample> update(const std::vector<FileSample>& samples, TimePoint now);

    [[nodiscard]] const std::map<std::string, Look>& looks() const { return looks_; }

private:
    std::map<std::string, Look> looks_;
};

} // namespace bv
