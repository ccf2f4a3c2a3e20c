#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sort/SortRule.h"

namespace bv {

struct ArrangeMoved;

// The words Auto-Arrange shows and posts, in one place.
namespace arrange_text {

inline constexpr const char* kNotificationTitle = "Auto-Arrange";

// The notification after a sweep moved files: "Moved a.pdf to Invoices." for one file,
// "Moved 3 files. Details are in History." for several. Nothing when nothing moved.
// `rules` gives the folder of a single move.
[[nodiscard]] std::optional<std::string> notificationBody(const std::vector<ArrangeMoved>& moved,
                                                          const std::vector<SortRule>& rules);

// The line under a pattern: off, watching with nothing moved yet, or what it has moved.
[[nodiscard]] std::string statusLine(const SortRule& rule);

// The line under the pattern sheet's preview: "3 of your downloads already match. They stay
// put; ..." or, with none, "Nothing in Downloads matches yet. New downloads that match will move."
[[nodiscard]] std::string sheetMatchLine(std::size_t alreadyMatching);

// Arrange now: the sheet's lead-in, why Confirm is off, and the line after the move.
inline constexpr const char* kArrangeNowLead =
    "These were already in Downloads before the pattern. Untick anything you want left alone.";
inline constexpr const char* kTickOne = "Tick at least one file.";
inline constexpr const char* kNoneMatch = "No files in Downloads match right now.";
inline constexpr const char* kFilesGone = "Nothing to move. Those files are gone or no longer match.";
// Why the sheet can't confirm, if anything: no files at all, or none ticked.
[[nodiscard]] std::optional<std::string> arrangeNowRefusal(std::size_t files, std::size_t ticked);
// After the move: "Moves are listed in History." or "Nothing was moved."; `foundAny` false
// (every chosen file gone or no longer matching) gives the gone sentence.
[[nodiscard]] std::string arrangeNowResult(std::size_t moved, bool foundAny);

} // namespace arrange_text
} // namespace bv
