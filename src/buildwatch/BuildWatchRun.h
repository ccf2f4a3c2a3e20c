#pragma once
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "buildwatch/BuildWatchService.h"
#include "clean/Cleaner.h"
#include "core/ActionLogEntry.h"

namespace bv {

// One due check of Build Watch over the watches that are due: measure each, record a sample,
// and when a watch is over its limit either tell the user or clean its build folders through
// the cleaner, unless a build of its stacks is running or a folder changed a moment ago.
// Blocking (it scans and cleans): the model runs it off the main thread on a copy of the
// state and takes the changed watches back by id.
class BuildWatchRun {
public:
    struct Environment {
        std::string home;
        TimePoint now = Clock::now();
        bool diskIsLow = false;
        // Read once for the whole run.
        std::function<std::set<std::string>()> runningTools = [] { return BuildWatchScanner::runningTools(); };
        // Scans a watch's folder with measuring on; empty means the real scanner.
        std::function<BuildWatchScanner::ProjectScan(const std::string& path)> scan;
        // Cleans the entries; empty means a real cleaner with Build Watch's checks.
        std::function<Cleaner::ListResult(const std::vector<CleanupEntry>&)> clean;
    };

    struct Result {
        std::map<Uuid, std::vector<BuildTarget>> targets; // every watch measured
        std::vector<ActionLogEntry> logs;                 // the cleaner's and the skipped lines, in order
        std::vector<CleanupEntry> cleanedEntries;         // what went to the cleaner, for the manifest
        std::vector<std::string> failures;                // the cleaner's failure lines
        bool cleanerRan = false;
        std::int64_t freedBytes = 0;
        std::vector<BuildWatchNotice> notices; // alerts, then the freed summary
    };

    // Checks the watches due at `env.now` in `state`, changing them in place.
    [[nodiscard]] static Result run(BuildWatchState& state, const Environment& env);

    // The log line of a skipped watch or folder.
    [[nodiscard]] static ActionLogEntry skippedLog(const BuildWatch& watch, const std::string& title, TimePoint now,
                                                   const std::string& home);
};

} // namespace bv
