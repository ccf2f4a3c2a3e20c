#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/CancellationFlag.h"
#include "space/FolderMeasure.h"
#include "space/SpaceHistory.h"

namespace bv {

// One coloured part of the Overview's storage bar, or one row of "Top space users".
struct StorageSegment {
    std::string id;
    std::string name;
    std::int64_t bytes = 0;

    friend bool operator==(const StorageSegment&, const StorageSegment&) = default;
};

// Bytes measured so far by every measure of one survey, for the screen to show while it
// waits. A lock around one 64-bit counter: the measures feed it through the progress holder
// FolderMeasure already raises once per folder, the model polls value().
class SurveyProgress {
public:
    [[nodiscard]] FolderMeasureProgress* forMeasure() { return &holder_; }
    [[nodiscard]] std::int64_t value() const { return holder_.snapshot().bytes; }

private:
    FolderMeasureProgress holder_;
};

// A big place the program reports on but never touches, with the way to clear it by hand.
struct CoverageItem {
    std::string id;
    std::string title;
    std::optional<std::int64_t> bytes; // absent: the place could not be read
    std::string detail;                // the short path, or why there is no size
    std::string howTo;
    std::optional<std::string> path;

    friend bool operator==(const CoverageItem&, const CoverageItem&) = default;
};

// A place the coverage list may name, before it is measured.
struct CoveragePlace {
    std::string id;
    std::string title;
    std::string path;
    std::string howTo;
};

// Where a survey looks. current() reads them from the environment; tests build their own.
//
// Apps on Linux: there is no one applications folder, so the survey measures the places
// where software the user chose to install lives apart from the operating system: /opt,
// the system and per-user Flatpak installations, the downloaded snap packages
// (/var/lib/snapd/snaps; /snap itself is only their mounts and would count them twice) and
// ~/Applications, where AppImages usually go. /usr is left out: it is the operating system
// itself, and no deadline-bound measure of it would mean anything.
//
// Extras are the other XDG user folders (Pictures, Videos, Music): they only appear in
// "Top space users", never on the bar.
struct SurveyPlaces {
    struct Extra {
        std::string id;
        std::string name;
        std::string path;
    };

    std::string home;
    std::vector<std::string> apps;
    std::string downloads;
    std::string documents;
    std::string desktop;
    std::vector<Extra> extras;
    std::string trash; // the freedesktop home Trash: $XDG_DATA_HOME/Trash
    std::vector<CoveragePlace> coverage; // StorageSurvey::coveragePlaces(trash) for the live survey

    [[nodiscard]] static SurveyPlaces current();
};

// The quick breakdown behind the storage bar. Each measure runs under a deadline, so a
// figure may be low; that is shown as it is, and everything not measured falls into
// "Other used space". Blocking functions are meant for a background task; the rest is pure.
class StorageSurvey {
public:
    struct Sizes {
        std::int64_t apps = 0;
        std::int64_t developer = 0;
        std::int64_t downloads = 0;
        std::int64_t documents = 0;
        std::int64_t desktop = 0;
        std::vector<StorageSegment> extras;

        friend bool operator==(const Sizes&, const Sizes&) = default;
    };

    static constexpr double kFolderSeconds = 2.5;             // each measure's deadline
    static constexpr std::int64_t kCoverageFloor = 200'000'000; // smaller places are not listed
    static constexpr const char* kUnreadableDetail = "Brimvale can\u2019t read this folder.";

    // ---- measuring (blocking) ----
    // Step one: apps, Downloads, Documents, Desktop and the extras, all at once, each with
    // kFolderSeconds from its start. A missing or unreadable folder counts 0; `developer`
    // is left 0. The flag stops every measure early.
    [[nodiscard]] static Sizes measureFolders(const SurveyPlaces& places, SurveyProgress* progress,
                                              const CancellationFlag* cancel = nullptr);
    // Step two: the sum of the developer cache catalogue's folders that exist under home,
    // review-only rows left out, measured at once with the same deadline. A folder inside
    // another counted folder (Library/Caches/pip inside Library/Caches) is counted once.
    [[nodiscard]] static std::int64_t measureDeveloper(const std::string& home, SurveyProgress* progress,
                                                       const CancellationFlag* cancel = nullptr);
    // The folders measureDeveloper adds up, in catalogue order.
    [[nodiscard]] static std::vector<std::string> developerFolders(const std::string& home);
    // The coverage rows: the places that exist, each measured with kFolderSeconds, in table
    // order, filtered by coverageRow.
    [[nodiscard]] static std::vector<CoverageItem> measureCoverage(const std::vector<CoveragePlace>& places,
                                                                   const std::string& home,
                                                                   SurveyProgress* progress = nullptr,
                                                                   const CancellationFlag* cancel = nullptr);

    // ---- pure ----
    // The bar, in the order apps, developer, downloads, documents, other, free. Total is held
    // at 0 or more, free to 0..total; other is used minus the four known sizes, never below
    // 0. Negative sizes count 0 and sums saturate rather than overflow, so a wild figure
    // gives other 0, never a wrapped number.
    [[nodiscard]] static std::vector<StorageSegment> segments(const Sizes& sizes, const VolumeSnapshot& volume);
    // Downloads, Documents, Desktop, the extras and Apps, in that order; folders of 0 bytes
    // are left out (an empty row says nothing and the screen has its own empty text), then
    // only the first five are kept.
    [[nodiscard]] static std::vector<StorageSegment> topFolders(const Sizes& sizes);
    // The places the coverage list may name on this system, in the order it walks them.
    // Places other desktops keep for phone backups, mail and message attachments, device
    // simulators and local snapshots have no counterpart here and yield nothing.
    [[nodiscard]] static std::vector<CoveragePlace> coveragePlaces(const std::string& trash);
    // One place's row from what was read: none when it does not exist or holds fewer than
    // kCoverageFloor bytes (exactly kCoverageFloor is listed). `bytes` empty means it could
    // not be read: the row is kept, without a size and with kUnreadableDetail.
    [[nodiscard]] static std::optional<CoverageItem> coverageRow(const CoveragePlace& place, bool exists,
                                                                 std::optional<std::int64_t> bytes,
                                                                 const std::string& home);
    // `path` with the home folder written "~"; other paths as they are.
    [[nodiscard]] static std::string shortPath(const std::string& path, const std::string& home);
};

} // namespace bv
