#pragma once
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "clean/CleanupPlan.h"
#include "clean/InstalledApps.h"
#include "clean/LeftoverOwners.h"
#include "foundation/CancellationFlag.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

enum class OwnerStatus { installed, gone, unknown };
[[nodiscard]] std::string_view textValue(OwnerStatus status);

// One leftover file or folder of an owner.
struct OrphanPath {
    std::string path;
    OrphanLocation location = OrphanLocation::applicationSupport;
    std::int64_t bytes = 0;        // allocated on disk (a plain file: its file size)
    std::int64_t logicalBytes = 0; // what the files say they hold
    std::optional<TimePoint> lastActivity;

    bool operator==(const OrphanPath&) const = default;
};

// What one owner that no installed app can be tied to left behind, and how sure we are.
struct OrphanFinding {
    std::string id; // "orphan." + owner key
    std::string title;
    std::string ownerName;
    std::vector<std::string> bundleIDs; // sorted
    OwnerStatus status = OwnerStatus::unknown;
    std::vector<OrphanPath> paths;
    std::vector<std::string> evidence;

    bool operator==(const OrphanFinding&) const = default;
    [[nodiscard]] std::int64_t totalBytes() const;
};

[[nodiscard]] Json encodeOrphanFinding(const OrphanFinding& finding);

// Finds what apps that are gone left behind in the library folders and in the places Linux
// keeps per-app data, groups it by owner and says how sure it is. Blocking: meant for a
// background task. Reads the disk, never writes it. A folder that can't be read yields nothing.
class AppLeftovers {
public:
    struct Options {
        std::optional<InstalledApps::Roots> installedRoots; // none: this system's places
        const CancellationFlag* cancel = nullptr;
        std::optional<TimePoint> now; // none: the clock
    };
    struct Result {
        std::vector<OrphanFinding> findings; // by size, largest first
        bool cancelled = false;
    };
    [[nodiscard]] static Result scan(const std::string& home, const Options& options);

    // Shown only with at least 1,000,000 bytes (gone) or 50,000,000 (unknown); never installed.
    [[nodiscard]] static bool passesSizeFilter(OwnerStatus status, std::int64_t totalBytes);

    // The newest content modification date under `path` (the item itself included), not
    // following links and passing over lock files (".lock", ".sock", ".pid"), within
    // `secondsAllowed`. Nothing when nothing could be read.
    [[nodiscard]] static std::optional<TimePoint> newestActivity(const std::string& path, double secondsAllowed);

    // The law for a leftover's path: the library's own test, or a direct child of one of
    // Linux's per-app places that is not the system's own (a login item must end ".desktop").
    [[nodiscard]] static bool canCleanLeftoverPath(std::string_view path, std::string_view home);

    // Entries for the findings whose ids are selected, refusals for what may not go.
    [[nodiscard]] static CleanupPlan build(const std::vector<OrphanFinding>& findings,
                                           const std::set<std::string>& selectedIDs, const std::string& home);
    // "Select recommended": the ids of every `gone` finding.
    [[nodiscard]] static std::set<std::string> recommendedIDs(const std::vector<OrphanFinding>& findings);
    // After a scan: the selection keeps only ids that still exist.
    [[nodiscard]] static std::set<std::string> keepExisting(const std::set<std::string>& selectedIDs,
                                                            const std::vector<OrphanFinding>& findings);

    static constexpr const char* kScanning = "Looking for app leftovers\u2026";
    static constexpr const char* kGroup = "App leftovers";
    static constexpr const char* kPossiblyLeftBehindHeading = "POSSIBLY LEFT BEHIND";
    static constexpr const char* kPossiblyLeftBehindText =
        "No installed app matched these names. They may belong to a command-line tool you still use, so none are selected.";
    static constexpr const char* kFullDiskAccess = "Turn on Brimvale in Full Disk Access to include them.";
};

} // namespace bv
