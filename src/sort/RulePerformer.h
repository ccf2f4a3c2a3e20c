#pragma once
#include <optional>
#include <stdexcept>
#include <string>

#include "core/ActionLogEntry.h"
#include "foundation/Dates.h"
#include "sort/PlannedAction.h"
#include "sort/SortRule.h"

namespace bv {

class CalendarContext;

// A step that was not carried out. `what()` is the finished sentence for people, naming
// the file ("report.pdf is already in that folder."). Nothing was changed when it is thrown.
class SortApplyError : public std::runtime_error {
public:
    explicit SortApplyError(const std::string& text) : std::runtime_error(text) {}
};

// The new name a rename pattern gives a file: "{name}" is the name without its extension,
// "{ext}" the extension, "{date}" the day of `now` as yyyy-MM-dd in the calendar's zone,
// replaced in that order. The extension is appended when the pattern doesn't place it and
// the result doesn't already end in it. Nothing when the result is empty, starts with "."
// or holds "/" or ":".
[[nodiscard]] std::optional<std::string> expandRenamePattern(const std::string& fileName, const std::string& pattern,
                                                             TimePoint now, const CalendarContext& calendar);

// Carries out one planned step on the disk, as `rule` says (the rule's action decides, not
// the step's). Shared by Auto-Sort and Auto-Arrange. The caller has already matched the
// file again; this checks that the path is still a plain file (not a folder, link or
// anything else) and pins it, so the object moved is the one checked.
//  - move: makes the folder with its parents, then renames with RENAME_NOREPLACE. A name
//    already in the folder is refused; never an overwrite, never a numbered copy.
//  - rename: within the same folder, the same way.
//  - trash: the desktop Trash (never a permanent delete); the entry carries the step's bytes.
//  - zip: a new archive beside the file holding it under its own name; the file stays.
// Returns the History entry on success; throws SortApplyError with the sentence otherwise.
// Blocking; call it off the GUI thread.
class RulePerformer {
public:
    [[nodiscard]] static ActionLogEntry perform(const PlannedAction& action, const SortRule& rule, TimePoint now,
                                                const CalendarContext& calendar);
};

} // namespace bv
