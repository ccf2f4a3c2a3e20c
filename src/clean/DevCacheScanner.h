#pragma once
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "clean/DevCacheCatalog.h"
#include "clean/DevScanRow.h"
#include "foundation/CancellationFlag.h"

namespace bv {

// Walks the developer cache catalogue from its first row to its last and turns what exists
// under the home folder into rows: those that can be cleaned and those only shown for their
// size. Blocking: meant for a background task. Reads the disk, never writes it.
class DevCacheScanner {
public:
    // Folders of the simulator devices the simulator tool would delete. The tool is absent on
    // Linux, which reads as none; tests and other platforms hand in their own reader.
    using UnavailableSimulatorReader = std::function<std::vector<std::string>(const std::string& home)>;

    struct Options {
        const CancellationFlag* cancel = nullptr; // stops between rows and inside measures
        UnavailableSimulatorReader unavailableSimulators; // empty: none
        double reviewDeadlineSeconds = 4.0;       // how long one review-only folder is measured
    };

    struct Result {
        std::vector<DevScanRow> rows;       // cleanable, sorted by size, largest first
        std::vector<DevScanRow> reviewRows; // shown for size only, sorted the same way
        bool cancelled = false;
    };

    [[nodiscard]] static Result scan(const std::string& home, const Options& options);
    [[nodiscard]] static Result scan(const std::string& home) { return scan(home, Options{}); }

    // The folder a catalogue row looks in under `home`, standardized; whether it exists is
    // the caller's question. The scan and the storage survey both find rows' folders here.
    [[nodiscard]] static std::string recipeFolder(const std::string& home, const DevCacheCatalog::Recipe& recipe);

    // The title of an app's update download folder: a known app's name, else the last
    // meaningful word of the folder's name, each + " update download".
    [[nodiscard]] static std::string updateDownloadTitle(std::string_view folderName, std::string_view suffix);

    // The texts a row shows when it can't be chosen.
    static constexpr const char* kPointsElsewhere = "This shortcut points somewhere else, so it stays.";
    static constexpr const char* kStaysPut = "This stays put.";
    static constexpr const char* kNewestStays = "The newest copy stays.";
    static constexpr const char* kDailyVersionStays = "This is the version you use every day. It stays.";
    static constexpr const char* kToolchainStays = "This is the toolchain you build with. It stays.";
    static constexpr const char* kShownForSizeOnly = "Shown for size only.";
    static constexpr const char* kReviewFallbackNote = "Shown so you can check it. Smart Clean will not remove it.";
};

} // namespace bv
