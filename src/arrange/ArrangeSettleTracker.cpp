#include "arrange/ArrangeSettleTracker.h"

#include <algorithm>

namespace bv {

std::vector<FileSample> ArrangeSettleTracker::update(const std::vector<FileSample>& samples, TimePoint now) {
    std::vector<FileSample> settled;
    std::map<std::string, Look> next;
    for (const FileSample& sample : samples) {
        // A file is unchanged since its content was last written, not merely since this
        // listing first saw it: a finished file met for the first time (it arrived while
        // nothing watched, or between two sweeps) counts from its modification date, so it
        // moves in the first sweep 2 seconds after its last write. A date in the future
        // counts from now.
        Look look{sample.size, sample.modified, sample.modified ? std::min(*sample.modified, now) : now};
        const auto known = looks_.find(sample.path);
        if (known != looks_.end() && known->second.size == look.size && known->second.modified == look.modified)
            look.since = std::min(known->second.since, now); // a clock set back holds nothing longer
        if (now - look.since >= kSettleTime) settled.push_back(sample);
        next.insert_or_assign(sample.path, look);
    }
    looks_ = std::move(next);
    return settled;
}

} // namespace bv
