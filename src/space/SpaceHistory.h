#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/CalendarContext.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

// One reading of the volume that holds the home folder.
struct VolumeSnapshot {
    TimePoint capturedAt = TimePoint::min(); // the distant past before the first reading
    std::string volumeName = "Volume";
    std::int64_t totalBytes = 0;
    std::int64_t freeBytes = 0;

    friend bool operator==(const VolumeSnapshot&, const VolumeSnapshot&) = default;
    [[nodiscard]] bool isUsable() const { return totalBytes >= 1; }
    [[nodiscard]] Json toJson() const;
    [[nodiscard]] static VolumeSnapshot fromJson(const Json& json); // throws DecodeError
};

enum class SpaceBasis { sinceMidnight, sinceFirstCheckToday, sinceLastOpen, unavailable };
[[nodiscard]] const char* spaceBasisName(SpaceBasis b);

// How free space moved: now minus the baseline, positive when space grew.
struct SpaceDelta {
    std::int64_t bytes = 0;
    SpaceBasis basis = SpaceBasis::unavailable;
    std::optional<TimePoint> baseline;

    friend bool operator==(const SpaceDelta&, const SpaceDelta&) = default;
    [[nodiscard]] static SpaceDelta unavailable() { return {}; }
};

// "space-history.json": a bounded record of readings, oldest first.
struct SpaceHistory {
    static constexpr int currentMetricVersion = 2;
    static constexpr size_t defaultLimit = 120;

    std::optional<VolumeSnapshot> lastQuit;
    std::vector<VolumeSnapshot> observations;
    std::optional<std::int64_t> metricVersion = currentMetricVersion;

    friend bool operator==(const SpaceHistory&, const SpaceHistory&) = default;
    [[nodiscard]] static constexpr const char* fileName() { return "space-history.json"; }
    [[nodiscard]] Json toJson() const;
    [[nodiscard]] static SpaceHistory fromJson(const Json& json); // throws DecodeError

    // A decoded file is kept only when it was written by the current way of measuring;
    // anything else (absent, undecodable, another version) gives the empty current history.
    // `replaced` tells the caller to save the fresh default at once.
    [[nodiscard]] static SpaceHistory accepting(const std::optional<SpaceHistory>& loaded, bool& replaced);

    // Appends a usable snapshot, dropping the oldest past `limit`. A snapshot with a total
    // below 1 byte is ignored and false returned.
    bool record(const VolumeSnapshot& snapshot, size_t limit = defaultLimit);

    // What today's figure compares with: the last reading before midnight, else the first
    // of today, else nothing moved yet.
    [[nodiscard]] SpaceDelta midnightDelta(const VolumeSnapshot& current, TimePoint now,
                                           const CalendarContext& calendar) const;
};

// Change since the last visit: against the reading stored when the window last went away.
[[nodiscard]] SpaceDelta lastOpenDelta(const VolumeSnapshot& current, const std::optional<VolumeSnapshot>& baseline);

} // namespace bv
