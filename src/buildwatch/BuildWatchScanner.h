#pragma once
#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "buildwatch/BuildTarget.h"
#include "foundation/CancellationFlag.h"
#include "foundation/Dates.h"

namespace bv {

// The disk-facing half of Build Watch: walks a folder for projects, lists the folders the
// catalogue's rows name, asks git which of them it ignores, measures them, and hunts the
// user's source folders for big unwatched projects. Changes nothing on disk. Every entry point
// blocks and takes no locks: call it from a background thread.
class BuildWatchScanner {
public:
    struct ProjectScan {
        std::vector<BuildStack> stacks;
        std::vector<BuildTarget> targets; // largest first; nested matches counted once, by the outer
        bool blocked = false;             // the system refused to list the folder

        friend bool operator==(const ProjectScan&, const ProjectScan&) = default;
    };

    struct DerivedDataFolder {
        std::string path;          // a folder directly inside the DerivedData root
        std::string workspacePath; // standardised path of the project it was built from
        friend bool operator==(const DerivedDataFolder&, const DerivedDataFolder&) = default;
    };

    struct LookResult {
        std::vector<BuildSuggestion> suggestions; // largest first, ties in found order
        std::vector<std::string> refusedFolders;  // folders the system would not let us list
        bool reachedDeadline = false;
    };

    // Scans one project. Inside a git work tree a matching folder counts only when git ignores
    // it (one git process per work tree); outside any, every matching folder counts. With
    // `measure` each target's bytes are the allocated size of all it holds.
    [[nodiscard]] static ProjectScan scanProject(const std::string& project, const std::string& home,
                                                 const std::optional<std::vector<DerivedDataFolder>>& derivedData,
                                                 bool measure);

    // The folders of home/Library/Developer/Xcode/DerivedData whose info.plist names the
    // workspace they came from.
    [[nodiscard]] static std::vector<DerivedDataFolder> listDerivedData(const std::string& home);

    // Walks the roots (to depth 5, never into a project) for projects not in `watched` whose
    // targets come to at least `minimumBytes`. Ends with what it has after `budget`. The walk
    // runs on the calling thread; what it finds is measured meanwhile on helper threads of its
    // own (one fewer than the cores, at least one), which the caller joins once the walk ends.
    [[nodiscard]] static LookResult lookForProjects(const std::vector<std::string>& roots,
                                                    const std::set<std::string>& watched, const std::string& home,
                                                    std::chrono::seconds budget = std::chrono::seconds(300),
                                                    std::int64_t minimumBytes = 1000000000);

    // The project parents the user named, then the usual source folders under home that exist
    // ("Projects", "Developer", "work", ... "Sites"), then Documents and Desktop when the whole
    // disk may be read; each standardised and once.
    [[nodiscard]] static std::vector<std::string> searchRoots(const std::string& home,
                                                              const std::vector<std::string>& projectParents,
                                                              bool fullDiskAccess);

    // The lower-case names of the processes running now (command and executable names from
    // `procRoot`). An unreadable process table gives an empty set: nothing counts as running.
    [[nodiscard]] static std::set<std::string> runningTools(const std::string& procRoot = "/proc");

    // The latest modification date of the folder and of each entry directly inside it.
    [[nodiscard]] static std::optional<TimePoint> newestChange(const std::string& folder);

    // Whether listing the folder fails for want of permission (EACCES or EPERM).
    [[nodiscard]] static bool accessDenied(const std::string& folder);
};

} // namespace bv
