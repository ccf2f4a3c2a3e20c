#pragma once
#include <string>

#include "foundation/CalendarContext.h"
#include "space/SpaceHistory.h"

namespace bv {

// "+1.2 GB", "−300 MB" or "No change": a signed byte text for a change in free space.
[[nodiscard]] std::string signedByteText(std::int64_t bytes);

// One line that says how free space moved and what it is compared with, so a baseline that
// is not a real midnight says so: "+1.2 GB free since midnight (compared with 23:58 yesterday)",
// "−300 MB free since your first check today at 08:10", "+4 GB free since your last visit
// (Nov 21, 18:02)". An unavailable delta gives the empty text: no figure at all.
[[nodiscard]] std::string deltaSentence(const SpaceDelta& delta, TimePoint now, const CalendarContext& calendar);

} // namespace bv
