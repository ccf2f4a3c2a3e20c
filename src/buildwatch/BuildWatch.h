#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "buildwatch/BuildWatchScanner.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"

namespace bv {

// How often a watch measures its project. Raw values "twiceDaily", "daily", "weekly".
enum class BuildWatchCadence { twiceDaily, daily, weekly };
[[nodiscard]] std::string_view rawValue(BuildWatchCadence cadence);
[[nodiscard]] std::optional<BuildWatchCadence> buildWatchCadenceFromRaw(std::string_view raw);
[[nodiscard]] std::chrono::seconds interval(BuildWatchCadence cadence); // 43200, 86400, 604800
[[nodiscard]] std::string_view label(BuildWatchCadence cadence);        // "Twice a day", ...

struct BuildWatchSample {
    TimePoint date;
    std::int64_t bytes = 0;
    friend bool operator==(const BuildWatchSample&, const BuildWatchSample&) = default;
};

// One watched project.
struct BuildWatch {
    Uuid id;
    std::string path; // standardised project folder
    std::optional<std::string> bookmark; // the folder's stored access grant, carried as its text
    std::string name;
    std::vector<BuildStack> stacks;
    BuildWatchCadence cadence = BuildWatchCadence::twiceDaily;
    std::int64_t limitBytes = 5000000000;
    bool autoClean = true;
    bool removesPermanently = true;
    bool isEnabled = true;
    TimePoint createdAt;
    std::optional<TimePoint> nextCheck;
    std::optional<TimePoint> lastChecked;
    std::optional<TimePoint> lastCleaned;
    std::optional<std::string> lastNote;
    std::optional<TimePoint> lastAlert;
    std::optional<std::int64_t> lastAlertBytes;
    std::int64_t totalFreed = 0;
    std::vector<BuildWatchSample> samples; // newest last, at most 120

    friend bool operator==(const BuildWatch&, const BuildWatch&) = default;
};

// The content of "build-watch.json".
struct BuildWatchState {
    std::vector<BuildWatch> watches;
    std::vector<std::string> dismissedPaths;
    std::map<std::string, TimePoint> notifiedAt;
    std::optional<TimePoint> lastSuggestionScan;

    friend bool operator==(const BuildWatchState&, const BuildWatchState&) = default;

    [[nodiscard]] BuildWatch* find(const Uuid& id);
    [[nodiscard]] const BuildWatch* find(const Uuid& id) const;
};

inline constexpr const char* kBuildWatchFileName = "build-watch.json";

// A required key missing (or of the wrong type) anywhere fails the whole file with
// DecodeError; the caller then starts from an empty state.
[[nodiscard]] Json encodeBuildWatchState(const BuildWatchState& state);
[[nodiscard]] BuildWatchState decodeBuildWatchState(const Json& json);
[[nodiscard]] Json encodeBuildWatch(const BuildWatch& watch);
[[nodiscard]] BuildWatch decodeBuildWatch(const Json& json);

// The watch being set up; never saved.
struct BuildWatchDraft {
    std::string path;
    std::optional<std::string> bookmark;
    std::string name;
    std::optional<BuildWatchScanner::ProjectScan> scan;
    std::optional<std::string> problem;
    BuildWatchCadence cadence = BuildWatchCadence::twiceDaily;
    std::int64_t limitBytes = 5000000000;
    bool autoClean = true;
    bool removesPermanently = true;
    bool openAtLogin = true;
    bool fromLink = false;

    friend bool operator==(const BuildWatchDraft&, const BuildWatchDraft&) = default;
};

} // namespace bv
