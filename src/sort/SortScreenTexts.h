#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "sort/SortRule.h"

namespace bv {

// The sentences of the Auto-Sort list, the rule editor and the run preview that depend on
// the rules or counts. Fixed headings live in the screen itself.
struct SortScreenTexts {
    // The list's top line: "3 files your rules can tidy right now", or nothing at 0.
    [[nodiscard]] static std::string tidyCountLine(std::int64_t count);
    // A rule row's count: "2 match right now".
    [[nodiscard]] static std::string matchNowText(std::int64_t count);
    // The delete question's body: "“Name” is removed. Files it already sorted stay where they are."
    [[nodiscard]] static std::string deleteExplanation(const SortRule& rule);

    // The notes of "WHAT HAPPENS" for the draft, in the order they are shown: what its action
    // does, then what its trigger means.
    [[nodiscard]] static std::vector<std::string> editorNotes(const SortRule& rule);

    // The line above the files a draft would touch: nothing for up to 50 matches, else
    // "Showing the first 50 of 73".
    [[nodiscard]] static std::string touchCountLine(std::size_t count);
    static constexpr std::size_t kTouchRows = 50;
    // "Nothing in Downloads matches yet. Files that arrive later and match will be sorted."
    [[nodiscard]] static std::string nothingMatchesYet(const std::string& place);
    // "No files in Downloads match right now. New ones will when they arrive."
    [[nodiscard]] static std::string noActionsIn(const std::string& place);
    // Whether a draft says which files at all: some condition other than the place.
    [[nodiscard]] static bool namesFiles(const SortRule& rule);
};

} // namespace bv
