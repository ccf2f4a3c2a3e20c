#include "clean/CleanupManifest.h"

#include "foundation/FileIO.h"

namespace bv {

Json CleanupManifest::Line::toJson() const {
    Json j = Json::object();
    j["path"] = path;
    j["bytes"] = bytes;
    j["action"] = action;
    if (destination) j["destination"] = *destination;
    return j;
}

CleanupManifest::Line CleanupManifest::Line::fromLog(const ActionLogEntry& entry) {
    Line l;
    l.path = entry.sourcePath;
    l.bytes = entry.bytesReclaimed;
    l.destination = entry.destinationPath;
    if (entry.symbolName == "trash.slash") l.action = "deleted";
    else if (entry.destinationPath) l.action = "moved";
    else l.action = "trashed";
    return l;
}

Json CleanupManifest::Document::toJson() const {
    Json j = Json::object();
    putDate(j, "writtenAt", writtenAt);
    j["appVersion"] = appVersion;
    j["trigger"] = trigger;
    Json ls = Json::array();
    for (const auto& l : lines) ls.push_back(l.toJson());
    j["lines"] = ls;
    j["errors"] = errors;
    j["totalBytes"] = totalBytes;
    return j;
}

CleanupManifest::Document CleanupManifest::document(const std::string& trigger, const std::vector<ActionLogEntry>& logs,
                                                    const std::vector<std::string>& errors, TimePoint now,
                                                    const std::string& appVersion) {
    Document d;
    d.writtenAt = now;
    d.appVersion = appVersion;
    d.trigger = trigger;
    for (const auto& e : logs) {
        d.lines.push_back(Line::fromLog(e));
        d.totalBytes += e.bytesReclaimed;
    }
    d.errors = errors;
    return d;
}

std::string CleanupManifest::fileName(TimePoint now) {
    std::string stamp = isoDateText(now);
    for (auto& c : stamp)
        if (c == ':') c = '-';
    return "cleanup-" + stamp + ".json";
}

std::string CleanupManifest::versionText(const std::string& shortVersion, const std::string& build) {
    const std::string v = shortVersion.empty() ? "dev" : shortVersion;
    if (!build.empty() && build != v) return v + " (" + build + ")";
    return v;
}

std::optional<std::string> CleanupManifest::write(const std::string& trigger, const std::vector<ActionLogEntry>& logs,
                                                  const std::vector<std::string>& errors, TimePoint now,
                                                  const std::string& folder, const std::string& appVersion) {
    if (logs.empty() && errors.empty()) return std::nullopt;
    const std::string text = encodeJson(document(trigger, logs, errors, now, appVersion).toJson());
    if (!makeDirectories(folder, 0700)) return std::nullopt;
    const std::string path = folder + "/" + fileName(now);
    if (!writeFileAtomically(path, text)) return std::nullopt;
    return path;
}

} // namespace bv
