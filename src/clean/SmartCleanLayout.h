#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clean/CleanupPlan.h"
#include "clean/DevScanRow.h"

namespace bv {

// How the developer cache rows are grouped into cards by tool family, what "Select
// recommended" picks, and how selected rows become a plan. Pure functions over rows.
class SmartCleanLayout {
public:
    struct Card {
        std::string id;                    // the family's key
        std::string title;
        std::vector<DevScanRow> rows;      // the large rows, largest first
        std::vector<DevScanRow> smallRows; // the small ones when "Show small items" is on
        int hiddenCount = 0;               // how many small rows there are, shown or not
        std::optional<std::string> keptLine;
        std::string safety;
        std::int64_t totalBytes = 0;       // what the family's selectable rows hold

        bool operator==(const Card&) const = default;
    };

    struct Family {
        std::string key;
        std::string title;
    };

    // The family of a row, from its id (and its own title for families named after it).
    [[nodiscard]] static Family familyOf(const DevScanRow& row);

    // Rows that "Select recommended" picks: selectable, cleanable, not opt-in, at least
    // 1,000,000 bytes, and not a marker file. These are the rows that come back on their own.
    [[nodiscard]] static bool isRecommended(const DevScanRow& row);
    // Selects the recommended rows; leaves the choice of the others as it is.
    static void selectRecommended(std::vector<DevScanRow>& rows);

    // Cards in order of what they would free, largest first; a card with nothing to show is
    // left out.
    [[nodiscard]] static std::vector<Card> cards(const std::vector<DevScanRow>& rows, bool showSmallItems);

    // Selected cleanable rows become entries, or refusals when they can't go. `home` is the
    // user's home folder the path law judges by.
    [[nodiscard]] static CleanupPlan plan(const std::vector<DevScanRow>& rows, const std::string& home);

    static constexpr std::int64_t kLargeBytes = 1'000'000;
    static constexpr const char* kSafetyComesBack = "Comes back automatically";
    static constexpr const char* kSafetyTrash = "Moves to Trash";
    static constexpr const char* kSafetySimulatorTool = "Removed by Xcode\u2019s simulator tool";
};

} // namespace bv
