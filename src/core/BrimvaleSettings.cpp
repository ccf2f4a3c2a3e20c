#include "core/BrimvaleSettings.h"

namespace bv {

const char* lowSpaceUnitName(LowSpaceUnit u) { return u == LowSpaceUnit::percent ? "percent" : "gigabytes"; }

Json BrimvaleSettings::toJson() const {
    Json j = Json::object();
    j["nodeModulesPermanent"] = nodeModulesPermanent;
    j["nodeModulesUntouchedDays"] = nodeModulesUntouchedDays;
    j["menuBarShowsFreeSpace"] = menuBarShowsFreeSpace;
    j["launchAtLogin"] = launchAtLogin;
    j["defaultFolderSchedule"] = std::string(cleanScheduleName(defaultFolderSchedule));
    j["didSkipFullDiskAccess"] = didSkipFullDiskAccess;
    j["alertsEnabled"] = alertsEnabled;
    j["lowSpaceUnit"] = lowSpaceUnitName(lowSpaceUnit);
    j["lowSpaceGigabytes"] = lowSpaceGigabytes;
    j["lowSpacePercent"] = lowSpacePercent;
    j["alertWhenBelowEither"] = alertWhenBelowEither;
    j["lowSpaceRemindDaily"] = lowSpaceRemindDaily;
    j["lowSpaceArmed"] = lowSpaceArmed;
    putDate(j, "lowSpaceLastAlert", lowSpaceLastAlert);
    j["playSounds"] = playSounds;
    j["didCompleteFirstRun"] = didCompleteFirstRun;
    j["installationID"] = installationID;
    j["dismissedSuggestions"] = dismissedSuggestions;
    putDate(j, "tourCompletedAt", tourCompletedAt);
    j["seenCues"] = seenCues;
    j["didExplainTrashUndo"] = didExplainTrashUndo;
    j["didSeedDefaultRules"] = didSeedDefaultRules;
    j["lifetimeBytesFreed"] = lifetimeBytesFreed;
    j["lifetimeCleanups"] = lifetimeCleanups;
    putDate(j, "firstCleanupAt", firstCleanupAt);
    j["lastMilestoneBytes"] = lastMilestoneBytes;
    return j;
}

BrimvaleSettings BrimvaleSettings::fromJson(const Json& json) {
    const JsonReader r(json);
    BrimvaleSettings s;
    s.nodeModulesPermanent = r.boolean("nodeModulesPermanent");
    s.nodeModulesUntouchedDays = r.integer("nodeModulesUntouchedDays");
    s.menuBarShowsFreeSpace = r.boolean("menuBarShowsFreeSpace");
    s.launchAtLogin = r.boolean("launchAtLogin");
    auto schedule = cleanScheduleFromName(r.text("defaultFolderSchedule"));
    if (!schedule) throw DecodeError("unknown schedule");
    s.defaultFolderSchedule = *schedule;
    s.didSkipFullDiskAccess = r.boolean("didSkipFullDiskAccess", false);

    const auto legacyGigabytes = r.optionalBoolean("lowSpaceGigabytesEnabled");
    const auto legacyPercent = r.optionalBoolean("lowSpacePercentEnabled");
    const bool bothLegacy = legacyGigabytes && legacyPercent;
    s.alertsEnabled = r.boolean("alertsEnabled", bothLegacy ? (*legacyGigabytes || *legacyPercent) : true);
    if (r.has("lowSpaceUnit")) {
        const std::string unit = r.text("lowSpaceUnit");
        if (unit == "gigabytes") s.lowSpaceUnit = LowSpaceUnit::gigabytes;
        else if (unit == "percent") s.lowSpaceUnit = LowSpaceUnit::percent;
        else throw DecodeError("unknown lowSpaceUnit");
    } else {
        s.lowSpaceUnit = (legacyGigabytes && !*legacyGigabytes && legacyPercent && *legacyPercent) ? LowSpaceUnit::percent
                                                                                                  : LowSpaceUnit::gigabytes;
    }
    s.lowSpaceGigabytes = r.integer("lowSpaceGigabytes", 40);
    s.lowSpacePercent = r.integer("lowSpacePercent", 10);
    s.alertWhenBelowEither = r.boolean("alertWhenBelowEither", bothLegacy && *legacyGigabytes && *legacyPercent);
    s.lowSpaceRemindDaily = r.boolean("lowSpaceRemindDaily", false);
    s.lowSpaceArmed = r.boolean("lowSpaceArmed", true);
    s.lowSpaceLastAlert = r.optionalDate("lowSpaceLastAlert");
    s.playSounds = r.boolean("playSounds", true);
    s.didCompleteFirstRun = r.boolean("didCompleteFirstRun", false);
    s.installationID = r.text("installationID", "");
    s.dismissedSuggestions = r.texts("dismissedSuggestions", {});
    s.tourCompletedAt = r.optionalDate("tourCompletedAt");
    s.seenCues = r.texts("seenCues", {});
    s.didExplainTrashUndo = r.boolean("didExplainTrashUndo", false);
    s.didSeedDefaultRules = r.boolean("didSeedDefaultRules", false);
    s.lifetimeBytesFreed = r.integer("lifetimeBytesFreed", 0);
    s.lifetimeCleanups = r.integer("lifetimeCleanups", 0);
    s.firstCleanupAt = r.optionalDate("firstCleanupAt");
    s.lastMilestoneBytes = r.integer("lastMilestoneBytes", 0);
    return s;
}

} // namespace bv
