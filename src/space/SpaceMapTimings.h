#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/UserDefaults.h"
#include "foundation/Json.h"
#include "space/DiskMap.h"

namespace bv {

// What earlier maps took, by root path, and what that says about the next one.
struct SpaceMapTimings {
    using Table = std::map<std::string, ScanTiming>;
    static constexpr const char* kDefaultsKey = "spaceMapTimings.v1";
    static constexpr double kDefaultRate = 1'500'000'000.0; // bytes a second, before any timing

    // {"<root>": {"bytes": .., "files": .., "seconds": ..}}. decode throws DecodeError.
    [[nodiscard]] static Json encode(const Table& table);
    [[nodiscard]] static Table decode(const Json& json);
    // The table in the user defaults; absent or unreadable gives an empty table.
    [[nodiscard]] static Table load(const UserDefaults& defaults);
    static void save(const UserDefaults& defaults, const Table& table);

    // Remembers a finished map; a truncated one changes nothing (answers false).
    static bool record(Table& table, const DiskMap& map, double seconds);

    // The median of bytes/second over timings of at least 0.5 s and above 0 bytes (the element
    // at index count/2 of the sorted rates, so of two the higher); kDefaultRate with none.
    [[nodiscard]] static double throughput(const Table& table);

    enum class EstimateSource { lastTime, volume };
    struct Estimate {
        std::int64_t bytes = 0;
        double seconds = 0;
        EstimateSource source = EstimateSource::lastTime;
    };
    // From the root's own timing, else (a mounted volume's root) the bytes in use; else none.
    [[nodiscard]] static std::optional<Estimate> estimate(const std::string& root, const Table& table,
                                                          const std::vector<MountedVolume>& volumes);
    // The sentence before a scan, in its three wordings.
    [[nodiscard]] static std::string estimateText(const std::optional<Estimate>& estimate);

    // Seconds still to go while scanning; none until there is something to go on.
    [[nodiscard]] static std::optional<double> timeLeft(const std::optional<Estimate>& estimate,
                                                        std::int64_t countedBytes, double elapsedSeconds);

    // "a few seconds", "about 50 seconds", "about a minute", "about 12 minutes", "about an hour", "about 3 hours".
    [[nodiscard]] static std::string durationText(double seconds);
};

} // namespace bv
