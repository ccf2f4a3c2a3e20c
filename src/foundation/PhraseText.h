#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/unistr.h>

namespace bv {

// Small text helpers that the sentence grammars share. "White space" is Unicode's
// White_Space property, new lines included. Positions are UTF-16 offsets, the unit the
// editor counts characters in.

struct PhraseWord {
    std::string text;         // UTF-8, as typed
    std::int32_t start = 0;   // UTF-16 offset in the line
    std::int32_t length = 0;  // UTF-16 units
};

// The words of a text split on white space, empty pieces dropped, with their places.
[[nodiscard]] std::vector<PhraseWord> splitWords(std::string_view text);

// The words joined by one blank: runs of white space become one blank, ends are trimmed.
[[nodiscard]] std::string normalizedPhrase(std::string_view text);

// Lower case independent of the user's locale (so "I" is always "i").
[[nodiscard]] std::string lowercased(std::string_view text);
[[nodiscard]] icu::UnicodeString lowercased(const icu::UnicodeString& text);
[[nodiscard]] inline std::string lowercased(const char* text) { return lowercased(std::string_view(text)); }
[[nodiscard]] inline std::string lowercased(const std::string& text) { return lowercased(std::string_view(text)); }

// Drops white space at both ends.
[[nodiscard]] std::string trimmedWhitespace(std::string_view text);
// Drops, at both ends, every character that is one of `characters` (UTF-8 listed).
[[nodiscard]] std::string trimmedOf(std::string_view text, std::string_view characters);

[[nodiscard]] bool hasWhitespace(std::string_view text);
// True for a non-empty text whose every character has a Unicode numeric value.
[[nodiscard]] bool isAllNumeric(std::string_view text);
// True for a non-empty text made only of letters and numbers.
[[nodiscard]] bool isAllLettersOrNumbers(std::string_view text);
// Number of characters (code points).
[[nodiscard]] std::size_t characterCount(std::string_view text);

// Maximal runs of letters and digits, in order.
[[nodiscard]] std::vector<std::string> alphanumericRuns(std::string_view text);

// Parses an optional-sign run of ASCII digits that fits a signed 64-bit integer.
[[nodiscard]] bool parseWholeNumber(std::string_view text, std::int64_t& out);

} // namespace bv
