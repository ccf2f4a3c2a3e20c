#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "guidance/FirstRunItem.h"

namespace bv {

struct DevScanRow;
struct FileSample;

// Builds the first run's list from what its scans found, category by category in the order
// the report shows them: developer caches, app leftovers, then three kinds of files from
// Downloads. Pure except duplicatesIn, which compares file contents.
class FirstRunItems {
public:
    static constexpr const char* kSafetyComesBack = "Comes back automatically";
    static constexpr const char* kSafetyMovesToTrash = "Moves to Trash";

    // A leftover of a removed app, as the leftovers scan reports it.
    struct Leftover {
        std::string title;
        std::string path;
        std::int64_t bytes = 0;
        std::string allowRoot; // the library folder it lies in
    };

    // Every selectable cleanable row of at least 1 byte, except marker files and the
    // unavailable-simulators row. Rows that come back on their own start ticked.
    [[nodiscard]] static std::vector<FirstRunItem> fromDeveloperRows(const std::vector<DevScanRow>& rows);
    // Leftovers of removed apps; never ticked at first.
    [[nodiscard]] static std::vector<FirstRunItem> fromLeftovers(const std::vector<Leftover>& leftovers);
    // From the files of Downloads (folder `downloads`), in three categories and never ticked
    // at first: installers and disk images older than a week; copies a browser saved again
    // ("name (1).ext" beside an identical "name.ext"); then any other file of at least 1 MB
    // untouched for 90 days. A file lands in the first category that takes it.
    [[nodiscard]] static std::vector<FirstRunItem> fromDownloads(const std::vector<FileSample>& samples,
                                                                 const std::string& downloads, TimePoint now);

    // One report line per category that has items, in list order. The three Downloads
    // categories share the line "Old installers and downloads".
    [[nodiscard]] static std::vector<FirstRunCategoryTotal> totals(const std::vector<FirstRunItem>& items);
    [[nodiscard]] static std::int64_t sum(const std::vector<FirstRunItem>& items);

    // Whether `copy` is a name a browser gives a second download of `original`
    // ("report (2).pdf", "report(2).pdf" or "report.pdf.1" for "report.pdf").
    [[nodiscard]] static bool isRepeatName(const std::string& copy, const std::string& original);
    // Whether two regular files hold the same bytes. Unreadable files are never equal.
    [[nodiscard]] static bool sameContents(const std::string& a, const std::string& b);
};

} // namespace bv
