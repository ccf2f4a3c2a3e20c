#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace bv {

// One thing the first clean may move to the Trash.
struct FirstRunItem {
    std::string id;            // category id, "-", and what makes it unique in the category
    std::string categoryID;    // "developer", "leftovers", "installers", "duplicates", "downloads"
    std::string categoryTitle;
    std::string title;
    std::string path;
    std::int64_t bytes = 0;
    std::string safety;        // "Comes back automatically" or "Moves to Trash"
    std::string allowRoot;     // the item must lie below this folder when it moves
    std::optional<std::string> toolCommand;
    bool selected = false;

    friend bool operator==(const FirstRunItem&, const FirstRunItem&) = default;
};

// One line of the first run's report.
struct FirstRunCategoryTotal {
    std::string id;
    std::string title;
    std::int64_t bytes = 0;
    std::string safety;

    friend bool operator==(const FirstRunCategoryTotal&, const FirstRunCategoryTotal&) = default;
};

} // namespace bv
