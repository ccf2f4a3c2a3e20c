#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ActionLogEntry.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

// The JSON file each run that touched something leaves behind, so the user can see later
// what was cleaned. Files are never pruned.
struct CleanupManifest {
    struct Line {
        std::string path;
        std::int64_t bytes = 0;
        std::string action; // "deleted", "moved" or "trashed"
        std::optional<std::string> destination;
        friend bool operator==(const Line&, const Line&) = default;
        [[nodiscard]] Json toJson() const;
        // "deleted" for the trash.slash icon, else "moved" with a destination, else "trashed".
        [[nodiscard]] static Line fromLog(const ActionLogEntry& entry);
    };

    struct Document {
        TimePoint writtenAt;
        std::string appVersion;
        std::string trigger; // "clean", "autopilot", "build-watch", ...
        std::vector<Line> lines;
        std::vector<std::string> errors; // failure lines, then the not-started lines
        std::int64_t totalBytes = 0;
        [[nodiscard]] Json toJson() const;
    };

    [[nodiscard]] static Document document(const std::string& trigger, const std::vector<ActionLogEntry>& logs,
                                           const std::vector<std::string>& errors, TimePoint now,
                                           const std::string& appVersion);

    // "cleanup-2026-11-15T22-16-00Z.json": two runs in one second share a name.
    [[nodiscard]] static std::string fileName(TimePoint now);

    // The version text: the short version, then " (build)" when a build exists and differs.
    [[nodiscard]] static std::string versionText(const std::string& shortVersion, const std::string& build);

    // Writes the manifest into `folder` (made with its parents when missing) atomically.
    // Writes nothing when both lists are empty. Gives the file's path, or nothing when
    // nothing was written (a failure is quiet: the run goes on without it).
    static std::optional<std::string> write(const std::string& trigger, const std::vector<ActionLogEntry>& logs,
                                            const std::vector<std::string>& errors, TimePoint now,
                                            const std::string& folder, const std::string& appVersion);
};

} // namespace bv
