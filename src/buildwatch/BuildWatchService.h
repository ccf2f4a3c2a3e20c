#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "buildwatch/BuildWatch.h"
#include "clean/CleanupEntry.h"

namespace bv {

// A notification to post: its title and body.
struct BuildWatchNotice {
    std::string title;
    std::string body;
    friend bool operator==(const BuildWatchNotice&, const BuildWatchNotice&) = default;
};

// The rules of Build Watch on plain values: drafts, watches and their samples, limits, the
// alert rule, clean-up entries, suggestions and every text the user reads. No disk, no clock:
// the date is always handed in. The observable model calls these between its background steps.
class BuildWatchService {
public:
    static constexpr int kSampleCap = 120;
    static constexpr std::int64_t kLowDiskLimit = 500000000;
    static constexpr std::int64_t kSuggestionNotifyBytes = 5000000000;
    static constexpr std::chrono::seconds kBuildWaitRetry{1800};
    static constexpr std::chrono::seconds kRecentChange{900};
    static constexpr std::chrono::seconds kAlertQuiet{259200};
    static constexpr std::chrono::seconds kSuggestionNotifyQuiet{604800};
    static constexpr std::chrono::seconds kSuggestionRescan{43200};

    // ---- Texts ----
    static constexpr const char* kBlockedFolderProblem =
        "This folder can\u2019t be watched. Choose a project folder, such as one with Cargo.toml, package.json, "
        "Package.swift or an Xcode project inside.";
    static constexpr const char* kNoProjectProblem =
        "No project files were found here. Build Watch looks for Cargo.toml, package.json, Package.swift, Xcode "
        "projects, Gradle, Flutter and Python projects.";
    static constexpr const char* kFolderGoneNote = "The folder moved or was deleted, so this watch is paused.";
    static constexpr const char* kRunsWhileOpen = "Watches run only while Brimvale is open.";
    // The note for a folder the system refused to list, with the path as people read it.
    [[nodiscard]] static std::string unreadableProblem(const std::string& path, const std::string& home);

    // ---- Limits ----
    [[nodiscard]] static const std::vector<std::int64_t>& limitChoices(); // 1, 2, 5, 10, 20, 50 GB
    // The next choice up (+1) or down (-1) from a limit; stays at the ends.
    [[nodiscard]] static std::int64_t stepLimit(std::int64_t current, int direction);

    // ---- Drafts ----
    struct DraftStart {
        std::optional<std::string> toast; // set when the folder is already watched: nothing else happens
        std::optional<BuildWatchDraft> draft;
        bool needsScan = false; // the draft's folder must now be scanned with measuring on
    };
    // `path` is standardised with links resolved already.
    [[nodiscard]] static DraftStart startDraft(const BuildWatchState& state, const std::string& path,
                                               const std::optional<std::string>& bookmark, bool fromLink,
                                               bool loginItemEnabled, const std::string& home);
    // Stores a finished scan in the draft and words its problem, if any.
    static void applyDraftScan(BuildWatchDraft& draft, const BuildWatchScanner::ProjectScan& scan, const std::string& home);
    [[nodiscard]] static bool canConfirm(const BuildWatchDraft& draft);

    struct Confirmed {
        Uuid id;
        std::vector<BuildTarget> targets; // to store under the new watch's id
        std::string toast;
        bool enableLoginItem = false;
    };
    // Appends the new watch (with its first sample) and takes the path out of the dismissed
    // list. Nothing when the draft can't be confirmed.
    [[nodiscard]] static std::optional<Confirmed> confirmDraft(BuildWatchState& state, const BuildWatchDraft& draft,
                                                               bool loginItemEnabled, TimePoint now);

    // ---- Changing a watch ----
    static void setCadence(BuildWatch& watch, BuildWatchCadence cadence, TimePoint now);
    static void setEnabled(BuildWatch& watch, bool enabled, TimePoint now);
    // Removes the watch; gives the confirmation line, or nothing when there was no such watch.
    [[nodiscard]] static std::optional<std::string> stopWatching(BuildWatchState& state, const Uuid& id);

    // ---- Samples and growth ----
    static void recordSample(BuildWatch& watch, std::int64_t bytes, TimePoint date, int cap = kSampleCap);
    [[nodiscard]] static std::optional<std::int64_t> growth(const std::vector<BuildWatchSample>& samples, int days,
                                                            TimePoint now);
    // "+1.2 GB this week" / "−300 MB this week".
    [[nodiscard]] static std::string growthText(std::int64_t growth);

    // ---- Due checks ----
    [[nodiscard]] static std::vector<Uuid> dueWatches(const BuildWatchState& state, TimePoint now);
    // At or over the limit; a total under 1 byte never is; while the disk is low a limit above
    // 500 MB counts as 500 MB.
    [[nodiscard]] static bool isOverLimit(std::int64_t total, std::int64_t limitBytes, bool diskIsLow);
    // The running tools that mean a build of this watch's stacks is under way, sorted.
    [[nodiscard]] static std::vector<std::string> blockingTools(const BuildWatch& watch,
                                                                const std::set<std::string>& runningTools);
    [[nodiscard]] static std::string waitingNote(const std::string& tool);

    // The alert rule: applies it and gives the notice when the user is to be told.
    [[nodiscard]] static std::optional<BuildWatchNotice> alert(BuildWatch& watch, std::int64_t total, TimePoint now);

    struct Entries {
        std::vector<CleanupEntry> entries; // largest first
        std::vector<std::string> notes;    // folders left alone and why
    };
    [[nodiscard]] static Entries buildEntries(const BuildWatch& watch, const std::vector<BuildTarget>& targets,
                                              TimePoint now);
    // "Build Watch skipped <name>: <n> folder(s) was/were left alone. <first note>"
    [[nodiscard]] static std::string skippedLine(const std::string& name, const std::vector<std::string>& notes);
    // The "Freed ... of build files from ..." notice; `names` lists each project that gave bytes.
    [[nodiscard]] static BuildWatchNotice freedNotice(std::int64_t freed, const std::vector<std::string>& names);
    [[nodiscard]] static std::string nothingToCleanToast(const std::string& name);

    // After a clean with Build Watch entries: each watch whose targets lost bytes is credited.
    // `freedByPath` maps a cleaned entry's path to the bytes its log reports.
    static void creditClean(BuildWatchState& state, std::map<Uuid, std::vector<BuildTarget>>& targets,
                            const std::vector<CleanupEntry>& entries, const std::map<std::string, std::int64_t>& freedByPath,
                            TimePoint now);

    // ---- Suggestions ----
    // Drops dismissed paths.
    [[nodiscard]] static std::vector<BuildSuggestion> visibleSuggestions(const BuildWatchState& state,
                                                                         std::vector<BuildSuggestion> found);
    // At most one notice per look: the first suggestion of 5 GB and up not told of this week.
    [[nodiscard]] static std::optional<BuildWatchNotice> suggestionNotice(BuildWatchState& state,
                                                                          const std::vector<BuildSuggestion>& suggestions,
                                                                          TimePoint now);
    // Whether an unforced look is due.
    [[nodiscard]] static bool lookIsDue(const BuildWatchState& state, bool force, TimePoint now);
    static void dismiss(BuildWatchState& state, std::vector<BuildSuggestion>& suggestions, const std::string& path);
};

} // namespace bv
