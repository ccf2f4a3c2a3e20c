// Feeds arbitrary bytes to the "log.json" decoder and, when they decode, through the
// statistics the History screen computes on every draw.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/ActionLog.h"
#include "core/LogStatistics.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    std::vector<bv::ActionLogEntry> log;
    try {
        log = bv::decodeLog(*json);
    } catch (const std::exception&) {
        return 0;
    }
    if (log.size() > bv::kLogCapacity) log.resize(bv::kLogCapacity);
    // Encoding what was decoded must be stable: decoding it again gives the same text.
    const bv::Json once = bv::encodeLog(log);
    if (bv::encodeLog(bv::decodeLog(once)) != once) __builtin_trap();

    static const bv::CalendarContext calendar("en_US", "Europe/Berlin");
    const auto now = bv::fromEpochSeconds(1'795'000'000);
    (void)bv::bytesFreedThisWeek(log, now, calendar);
    (void)bv::activityDays(log, log.empty() ? std::string() : log.front().title, now, calendar);
    bv::BrimvaleSettings settings;
    (void)bv::backfillLifetimeCounters(log, settings);
    return 0;
}
