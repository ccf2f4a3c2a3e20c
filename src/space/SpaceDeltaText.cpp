#include "space/SpaceDeltaText.h"

#include "foundation/ByteText.h"

namespace bv {

std::string signedByteText(std::int64_t bytes) {
    if (bytes == 0) return "No change";
    if (bytes > 0) return "+" + byteText(bytes);
    return "\u2212" + byteText(-bytes);
}

namespace {

std::string whenText(TimePoint baseline, TimePoint now, const CalendarContext& calendar) {
    const int days = calendar.daysBetween(baseline, now);
    const std::string time = calendar.shortTime(baseline);
    if (days == 0) return "today at " + time;
    if (days == 1) return time + " yesterday";
    return calendar.format(baseline, "MMMd") + ", " + time;
}

} // namespace

std::string deltaSentence(const SpaceDelta& delta, TimePoint now, const CalendarContext& calendar) {
    const std::string amount = delta.bytes == 0 ? std::string("No change in free space")
                                                : signedByteText(delta.bytes) + " free";
    switch (delta.basis) {
    case SpaceBasis::unavailable: return {};
    case SpaceBasis::sinceMidnight:
        return amount + " since midnight (compared with " + whenText(*delta.baseline, now, calendar) + ")";
    case SpaceBasis::sinceFirstCheckToday:
        if (!delta.baseline) return amount + " today";
        return amount + " since your first check today at " + calendar.shortTime(*delta.baseline);
    case SpaceBasis::sinceLastOpen:
        return amount + " since your last visit (" + whenText(*delta.baseline, now, calendar) + ")";
    }
    return {};
}

} // namespace bv
