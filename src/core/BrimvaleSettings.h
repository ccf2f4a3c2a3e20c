#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/CleanSchedule.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

enum class LowSpaceUnit { gigabytes, percent };

// The one settings record every feature reads ("settings.json"). Defaults here are the
// values of a new record, used when the file is absent or does not decode.
struct BrimvaleSettings {
    bool nodeModulesPermanent = false;
    std::int64_t nodeModulesUntouchedDays = 30;
    bool menuBarShowsFreeSpace = true;
    bool launchAtLogin = false;
    CleanSchedule defaultFolderSchedule = CleanSchedule::daily;
    bool didSkipFullDiskAccess = false;
    bool alertsEnabled = true;
    LowSpaceUnit lowSpaceUnit = LowSpaceUnit::gigabytes;
    std::int64_t lowSpaceGigabytes = 40;
    std::int64_t lowSpacePercent = 10;
    bool alertWhenBelowEither = false;
    bool lowSpaceRemindDaily = false;
    bool lowSpaceArmed = true;
    std::optional<TimePoint> lowSpaceLastAlert;
    bool playSounds = true;
    bool didCompleteFirstRun = false;
    std::string installationID;
    std::vector<std::string> dismissedSuggestions;
    std::optional<TimePoint> tourCompletedAt;
    std::vector<std::string> seenCues;
    bool didExplainTrashUndo = false;
    bool didSeedDefaultRules = false;
    std::int64_t lifetimeBytesFreed = 0;
    std::int64_t lifetimeCleanups = 0;
    std::optional<TimePoint> firstCleanupAt;
    std::int64_t lastMilestoneBytes = 0;

    friend bool operator==(const BrimvaleSettings&, const BrimvaleSettings&) = default;

    [[nodiscard]] static constexpr const char* fileName() { return "settings.json"; }

    // Encodes every field (empty optionals left out); the legacy keys are never written.
    [[nodiscard]] Json toJson() const;
    // Five keys are required; the two legacy keys fill in three successors when those are
    // absent. Never clamps: stored values stand until a setter changes them.
    [[nodiscard]] static BrimvaleSettings fromJson(const Json& json); // throws DecodeError

    // The setters' clamps.
    [[nodiscard]] static std::int64_t clampUntouchedDays(std::int64_t days) { return days < 1 ? 1 : days; }
    [[nodiscard]] static std::int64_t clampGigabytes(std::int64_t gb) { return gb < 1 ? 1 : (gb > 2000 ? 2000 : gb); }
    [[nodiscard]] static std::int64_t clampPercent(std::int64_t pct) { return pct < 1 ? 1 : (pct > 99 ? 99 : pct); }
};

[[nodiscard]] const char* lowSpaceUnitName(LowSpaceUnit u);

} // namespace bv
