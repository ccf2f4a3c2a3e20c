#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/CancellationFlag.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

// One rebuildable folder found in a project: proven by a manifest and ignored by git.
struct NodeModuleHit {
    std::string path;         // as the walk met it
    std::string resolvedPath; // links resolved, standardized
    std::string projectName;  // last component of projectPath
    std::string projectPath;  // the folder that holds it
    std::int64_t bytes = 0;   // allocated size on disk
    std::optional<TimePoint> lastTouched;
    bool selected = false;    // a scan never selects
    std::string artifact;     // the folder's own name

    bool operator==(const NodeModuleHit&) const = default;
};

// The hit under its own field names; `lastTouched` left out when unknown.
[[nodiscard]] Json encodeNodeModuleHit(const NodeModuleHit& hit);

// Finds old project files under the parent folders the user named. Blocking: meant for a
// background task. Reads the disk and asks git; never writes anything.
//
// The walk never follows a link (a link and what lies behind it are skipped), does not enter
// hidden folders except to test a hidden artefact name, skips the folder "Library" directly
// under home, and never descends into a folder whose name is in the artefact table. Such a
// folder is a hit only if a manifest of its row proves it and git says it is ignored; git is
// asked once per repository, with every candidate of that repository in one process, and a
// few repositories are asked at a time.
class OldProjectScanner {
public:
    struct Artefact {
        std::string name;  // as the folder is named; matched lower-cased
        std::string label; // what the entry calls it
        std::vector<std::string> manifests; // one must stand beside it (or inside, for venvs)
    };
    // The 15 rows.
    [[nodiscard]] static const std::vector<Artefact>& artefacts();
    // The row of a lower-cased name, or nullptr.
    [[nodiscard]] static const Artefact* artefact(std::string_view lowerName);
    // The set the cleaner checks as well.
    [[nodiscard]] static bool isArtefactName(std::string_view lowerName);
    // Whether a manifest of the row stands where it must: "pyvenv.cfg" inside a folder whose
    // name ends in "venv", every other manifest in the folder's parent.
    [[nodiscard]] static bool manifestProves(const std::string& folder, const Artefact& row);

    // Which of the candidate folders (absolute, all inside `repository`) git ignores, as
    // absolute paths. Nothing means git could not answer. The default asks GitQuery. A probe is
    // called from several threads at once, one repository each.
    using IgnoreProbe = std::function<std::optional<std::vector<std::string>>(const std::string& repository,
                                                                              const std::vector<std::string>& folders)>;
    [[nodiscard]] static IgnoreProbe gitIgnoreProbe();

    struct Options {
        const CancellationFlag* cancel = nullptr;
        IgnoreProbe ignoreProbe; // empty: gitIgnoreProbe()
    };
    struct Result {
        std::vector<NodeModuleHit> hits;          // biggest first
        std::vector<std::string> unreachableRoots; // roots that could not be opened, skipped
        int repositoriesAsked = 0;
        bool cancelled = false;
    };
    [[nodiscard]] static Result scan(const std::vector<std::string>& roots, const std::string& home, const Options& options);

    // The project's last-touched date: the newest content modification date among the
    // project's direct entries that are not artefacts or ".git" (the manifests among them),
    // a venv's own "pyvenv.cfg", and, where the project holds ".git", its last commit.
    // Nothing when none of them can be read. The cleaner's recheck asks this same question.
    [[nodiscard]] static std::optional<TimePoint> lastTouched(const std::string& projectPath);

    // Whole days since `lastTouched`; nothing without a date or with a date in the future.
    [[nodiscard]] static std::optional<std::int64_t> ageDays(const std::optional<TimePoint>& lastTouched, TimePoint now);
    // Old enough to show: at least `untouchedDays` whole days (0 and below count as 1).
    [[nodiscard]] static bool isOld(const NodeModuleHit& hit, std::int64_t untouchedDays, TimePoint now);

    // The screen's words.
    static constexpr const char* kScanning = "Looking for old project files\u2026";
    static constexpr const char* kPickerPrompt = "Choose a parent folder, such as Projects, to look for old project files.";
    static constexpr const char* kExplanation =
        "Pick a parent folder, such as Projects. Brimvale finds node_modules, .next, dist, target, and other rebuildable "
        "folders in projects you have not opened in a while, only where a manifest proves what they are and git ignores "
        "them. They move to the Trash unless you turn on permanent delete.";
    static constexpr const char* kHoldToDelete =
        "Hold to turn permanent delete on. Releasing early keeps the Trash. A click does not confirm.";
    static constexpr const char* kPermanentOn = "Permanent delete is on for old project files only. This cannot be undone.";
};

} // namespace bv
