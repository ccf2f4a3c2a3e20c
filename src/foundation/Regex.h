#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/unistr.h>

U_NAMESPACE_BEGIN
class RegexPattern;
class RegexMatcher;
U_NAMESPACE_END

namespace bv {

// One ICU regular expression, compiled once at construction and then used from any thread
// (each call makes its own matcher). Meant to be held in a function-local static:
//
//     static const Regex age(R"((\d+)\s+days?\s+old)", Regex::Case::insensitive);
//
// A pattern that does not compile gives a Regex that never matches: `test` is false,
// `firstCaptures` is empty, the match lists are empty and replacements change nothing.
// Texts are UTF-8 std::string or ICU UnicodeString; positions are UTF-16 offsets, the
// unit ICU, Qt and the editor count characters in.
class Regex {
public:
    enum class Case { sensitive, insensitive };

    explicit Regex(std::string_view pattern, Case mode = Case::sensitive);
    ~Regex();
    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;

    [[nodiscard]] bool isValid() const { return pattern_ != nullptr; }

    // True when the expression is found anywhere in the text.
    [[nodiscard]] bool test(const icu::UnicodeString& text) const;
    [[nodiscard]] bool test(std::string_view utf8) const;
    [[nodiscard]] bool test(const char* utf8) const { return test(std::string_view(utf8)); }

    // The first match's groups 1 and up as UTF-8 (a group that took no part is empty), or
    // nothing when there is no match.
    [[nodiscard]] std::optional<std::vector<std::string>> firstCaptures(const icu::UnicodeString& text) const;
    [[nodiscard]] std::optional<std::vector<std::string>> firstCaptures(std::string_view utf8) const;
    [[nodiscard]] std::optional<std::vector<std::string>> firstCaptures(const char* utf8) const {
        return firstCaptures(std::string_view(utf8));
    }

    struct Range {
        std::int32_t start = 0;  // UTF-16 offset
        std::int32_t length = 0; // UTF-16 units
        friend bool operator==(const Range&, const Range&) = default;
    };
    struct Match {
        Range whole;
        std::vector<std::optional<Range>> groups; // index 0 is group 1
    };
    // Every non-overlapping match, left to right.
    [[nodiscard]] std::vector<Match> allMatches(const icu::UnicodeString& text) const;
    // The text of `group` (0 = the whole match) of every match, as UTF-8.
    [[nodiscard]] std::vector<std::string> allGroupTexts(const icu::UnicodeString& text, int group = 0) const;

    // The text with every match (or only the first) replaced by `literal`, taken as is:
    // no "$1" or backslash processing.
    [[nodiscard]] icu::UnicodeString replacingAll(const icu::UnicodeString& text, const icu::UnicodeString& literal) const;
    [[nodiscard]] icu::UnicodeString replacingFirst(const icu::UnicodeString& text, const icu::UnicodeString& literal) const;

private:
    struct MatcherCache;
    // Runs `use` with a matcher over `text`: the cached one when no other thread holds it,
    // else a fresh one. Gives false when there is no pattern or ICU fails.
    template <class Use>
    bool withMatcher(const icu::UnicodeString& text, Use use) const;

    [[nodiscard]] icu::UnicodeString replacing(const icu::UnicodeString& text, const icu::UnicodeString& literal,
                                               bool all) const;
    std::unique_ptr<icu::RegexPattern> pattern_;
    // Making a matcher costs more than most searches the grammars do, so one is kept and
    // reset for each text.
    std::unique_ptr<MatcherCache> cache_;
};

// UTF-8 of a UnicodeString, and of a part of one.
[[nodiscard]] std::string utf8(const icu::UnicodeString& text);
[[nodiscard]] std::string utf8(const icu::UnicodeString& text, std::int32_t start, std::int32_t length);
[[nodiscard]] icu::UnicodeString utf16(std::string_view text);

} // namespace bv
