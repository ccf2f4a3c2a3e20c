#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Dates.h"

namespace bv {

// Which items of a folder rule's folder a keep-newest rule leaves alone. The rule's plan and
// the cleaner's check right before a removal both ask here, so they agree on which items
// count and in which order: a removal whose item has since become one of the newest (another
// was deleted, or it was touched) is refused.
class KeepNewestItems {
public:
    struct Item {
        std::string path; // standardized
        bool isDirectory = false;
        std::optional<TimePoint> modified;
    };

    // What the count runs over: the rule's names (none: every name), folders only, and every
    // depth instead of the folder's direct children.
    struct Scope {
        std::vector<std::string> names;
        bool directoriesOnly = false;
        bool includeSubfolders = false;
    };

    // Whether an item takes part in the count: a folder when only folders count, and named
    // like one of the names (ASCII case ignored) when there are names.
    [[nodiscard]] static bool counts(std::string_view name, bool isDirectory, const Scope& scope);

    // The paths of the `keep` newest items, newest first. An item without a date is older than
    // any dated one; equal dates are ordered by path so the answer never depends on listing order.
    [[nodiscard]] static std::vector<std::string> newest(std::vector<Item> items, std::int64_t keep);

    // Whether a walk of a rule folder enters a subfolder of this name: never ".git", whose
    // contents no rule may touch.
    [[nodiscard]] static bool entersFolderNamed(std::string_view name) { return name != ".git"; }

    // Lists `folder` now (never following a link below it, never entering ".git" or another file
    // system) and answers `newest` over the items that count. Nothing when the folder itself
    // can't be read.
    [[nodiscard]] static std::optional<std::vector<std::string>> newestInFolder(const std::string& folder,
                                                                                const Scope& scope, std::int64_t keep);
};

} // namespace bv
