#pragma once
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "clean/CleanerError.h"
#include "clean/CleanerOriginChecks.h"
#include "clean/CleanupEntry.h"
#include "core/ActionLogEntry.h"
#include "foundation/Dates.h"
#include "platform/RunningApps.h"

namespace bv {

// Applies confirmed cleanup entries one at a time, trusting nothing the plan says: each
// entry is looked up again, its resolved path is held to its origin's law, its recheck
// criteria are compared with the disk, its owner must not be running, and only then is it
// moved to the Trash or removed. The move itself works on the item pinned at check time
// (parent opened without links, identity compared), so a path swapped for a link or for
// another item after the checks is never followed and never moved.
//
// Blocking and safe to run off the main thread; one Cleaner may serve many entries.
class Cleaner {
public:
    // The parts of the world the cleaner asks, replaceable by tests.
    struct Environment {
        std::function<TimePoint()> now = [] { return Clock::now(); };
        // The running processes, read when an entry has owners.
        std::function<std::vector<RunningProcess>()> runningProcesses = [] { return RunningApps::list(); };
        // The package tool ("npm cache clean --force"): its exit status, or nothing when it
        // could not be started.
        std::function<std::optional<int>()> runPackageTool = [] {
            return runToolQuietly({"/usr/bin/env", "npm", "cache", "clean", "--force"});
        };
        // The simulator tool does not exist on this system: no success is possible.
        std::function<bool()> runSimulatorTool = [] { return false; };
        // The checks of the origins whose features supply them; null leaves those origins alone.
        std::shared_ptr<const CleanerOriginChecks> originChecks = std::make_shared<CleanerOriginChecks>();
        // Called after every check passed and right before the item is touched. Tests use it
        // to change the disk in exactly that window; it is empty otherwise.
        std::function<void(const CleanupEntry&)> beforeAction;
    };

    using KeptVersions = std::set<std::string>;

    Cleaner() = default;
    explicit Cleaner(Environment environment) : env_(std::move(environment)) {}

    // Applies one entry. Returns its log entry, or throws CleanerError or FileSystemError
    // (the file system's own failure, e.g. a Trash on another drive). An item that changed
    // under the cleaner's hands becomes CleanerError: missing, symlink or stale.
    [[nodiscard]] ActionLogEntry apply(const CleanupEntry& entry, const std::string& home, const KeptVersions& kept) const;

    struct ListResult {
        std::vector<ActionLogEntry> logs;
        std::vector<std::string> failures; // "Couldn’t clean <title>. <reason>"
        friend bool operator==(const ListResult&, const ListResult&) = default;
    };
    // Applies entries in order with the kept node versions read once. A failure never ends
    // the list.
    [[nodiscard]] ListResult applyList(const std::vector<CleanupEntry>& entries, const std::string& home) const;

    // "Couldn’t clean " + title + ". " + reason.
    [[nodiscard]] static std::string failureLine(const std::string& title, const std::string& reason);

    // The in-use sentence for a path and its owners, or nothing when it is free to go.
    [[nodiscard]] std::optional<std::string> inUseReason(const std::string& path, const std::vector<std::string>& bundleIDs,
                                                         const std::vector<std::string>& names) const;
    // Whether a folder's direct names show a lock file (".lock", ".sock", ".pid").
    [[nodiscard]] static bool hasLockFile(const std::vector<std::string>& names);

private:
    enum class Action { trash, permanent, packageTool, simulatorTool };
    [[nodiscard]] Action chooseAction(const CleanupEntry& entry, const std::string& path, const std::string& resolved,
                                      const std::string& home, const KeptVersions& kept) const;
    void recheck(const CleanupEntry& entry, const std::string& path, const std::string& resolved) const;

    Environment env_;
};

// The size words of logs and details: byteText, so under 1 byte it reads "0 GB".
// The path for people: "~/" in place of the home folder.
[[nodiscard]] std::string pathForPeople(const std::string& path, const std::string& home);

} // namespace bv
