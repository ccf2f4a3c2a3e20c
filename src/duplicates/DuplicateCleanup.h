#pragma once
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "clean/CleanupPlan.h"
#include "duplicates/DuplicateGroup.h"

namespace bv {

// Which copy of each group stays: group id -> path of the kept file. Held by the model only
// (never saved); rebuilt after every finished scan.
using DuplicateKeepMap = std::map<std::string, std::string>;

// The texts of the clean-up side of the Duplicates screen.
namespace duplicateTexts {
inline constexpr const char* kNothingToClean = "Nothing to clean. Scan for duplicates first.";
inline constexpr const char* kReviewAll = "Review && Clean All"; // "&&" shows one "&" in a button
inline constexpr const char* kCleanGroup = "Clean group";
inline constexpr const char* kCleanGroupCaption = "Preview removing every copy in this group except the one you keep";
inline constexpr const char* kTrashOneCopy = "Move only this copy to the Trash…";
inline constexpr const char* kTrashOneCopyCaption = "Preview moving only this copy to the Trash";
inline constexpr const char* kPreviewCaption = "Preview every extra copy below. You can still untick any of them.";
inline constexpr const char* kKeeperMark = "This copy stays";
inline constexpr const char* kNotKeptMark = "Not kept";
inline constexpr const char* kKeepThisCopy = "Keep this copy";
inline constexpr const char* kKeepThisCopyInstead = "Keep this copy instead";
inline constexpr const char* kPreviewGroupName = "Duplicates";
} // namespace duplicateTexts

// After a scan each group keeps its first file, the one with the lowest path.
[[nodiscard]] DuplicateKeepMap initialDuplicateKeep(const std::vector<DuplicateGroup>& groups);

// The kept file of a group: the file whose path the map names for the group, else (no entry,
// or a path no longer in the group) its first file. Nothing for a group without files.
[[nodiscard]] const DuplicateFile* duplicateKeeper(const DuplicateGroup& group, const DuplicateKeepMap& keep);

// The plan that trashes every copy but the keeper, group by group and file by file in the
// groups' order. A copy outside every root, or failing the duplicate path law, becomes a
// note instead of an entry; a group of hard links of one file gives one note. `roots` are
// the searched folders as the model holds them now; `home` is the user's home folder.
// With `onlyPath`, only the copy at that path is planned (its group's notes still apply to
// it alone); a keeper asked for this way gives nothing.
[[nodiscard]] CleanupPlan buildDuplicatePlan(const std::vector<DuplicateGroup>& groups, const DuplicateKeepMap& keep,
                                             const std::vector<std::string>& roots, const std::string& home,
                                             const std::optional<std::string>& onlyPath = std::nullopt);

// What a review button asks for.
struct DuplicateReviewRequest {
    enum class Scope { all, group, oneCopy };
    Scope scope = Scope::all;
    std::string groupId; // group and oneCopy
    std::string path;    // oneCopy
};

// The plan a review opens the preview on, or the error line to show instead: "Nothing to
// clean. Scan for duplicates first." when there are no groups; an unknown group id plans
// nothing (the preview's own empty-plan rule then speaks).
struct DuplicateReview {
    std::optional<CleanupPlan> plan;
    std::optional<std::string> error;
};
[[nodiscard]] DuplicateReview reviewDuplicates(const DuplicateReviewRequest& request,
                                               const std::vector<DuplicateGroup>& groups, const DuplicateKeepMap& keep,
                                               const std::vector<std::string>& roots, const std::string& home);

} // namespace bv
