#include "foundation/Regex.h"

#include <unicode/regex.h>

namespace bv {

Regex::Regex(std::string_view pattern, Case mode) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError{};
    const uint32_t flags = mode == Case::insensitive ? UREGEX_CASE_INSENSITIVE : 0;
    std::unique_ptr<icu::RegexPattern> compiled(
        icu::RegexPattern::compile(utf16(pattern), flags, parseError, status));
    if (U_SUCCESS(status)) pattern_ = std::move(compiled);
}

Regex::~Regex() = default;
Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;

namespace {

// A matcher over `text`, which must outlive it; nothing when the pattern is invalid or ICU
// cannot make one.
std::unique_ptr<icu::RegexMatcher> matcherFor(const icu::RegexPattern* pattern, const icu::UnicodeString& text) {
    if (!pattern) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> m(pattern->matcher(text, status));
    if (U_FAILURE(status)) return nullptr;
    return m;
}

} // namespace

bool Regex::test(const icu::UnicodeString& text) const {
    auto m = matcherFor(pattern_.get(), text);
    if (!m) return false;
    UErrorCode status = U_ZERO_ERROR;
    const bool found = m->find(0, status);
    return U_SUCCESS(status) && found;
}

bool Regex::test(std::string_view text) const { return test(utf16(text)); }

std::optional<std::vector<std::string>> Regex::firstCaptures(const icu::UnicodeString& text) const {
    auto m = matcherFor(pattern_.get(), text);
    if (!m) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    if (!m->find(0, status) || U_FAILURE(status)) return std::nullopt;
    std::vector<std::string> groups;
    const int32_t count = m->groupCount();
    groups.reserve(static_cast<size_t>(count));
    for (int32_t g = 1; g <= count; ++g) {
        status = U_ZERO_ERROR;
        const int32_t start = m->start(g, status);
        const int32_t end = m->end(g, status);
        if (U_FAILURE(status) || start < 0) {
            groups.emplace_back();
        } else {
            groups.push_back(utf8(text, start, end - start));
        }
    }
    return groups;
}

std::optional<std::vector<std::string>> Regex::firstCaptures(std::string_view text) const {
    return firstCaptures(utf16(text));
}

std::vector<Regex::Match> Regex::allMatches(const icu::UnicodeString& text) const {
    std::vector<Match> out;
    auto m = matcherFor(pattern_.get(), text);
    if (!m) return out;
    UErrorCode status = U_ZERO_ERROR;
    while (m->find(status) && U_SUCCESS(status)) {
        Match match;
        match.whole.start = m->start(status);
        match.whole.length = m->end(status) - match.whole.start;
        for (int32_t g = 1; g <= m->groupCount(); ++g) {
            const int32_t start = m->start(g, status);
            const int32_t end = m->end(g, status);
            if (U_FAILURE(status) || start < 0)
                match.groups.emplace_back();
            else
                match.groups.push_back(Range{start, end - start});
        }
        if (U_FAILURE(status)) break;
        out.push_back(std::move(match));
    }
    return out;
}

std::vector<std::string> Regex::allGroupTexts(const icu::UnicodeString& text, int group) const {
    std::vector<std::string> out;
    for (const Match& match : allMatches(text)) {
        if (group == 0) {
            out.push_back(utf8(text, match.whole.start, match.whole.length));
        } else if (group > 0 && static_cast<size_t>(group) <= match.groups.size()) {
            const auto& r = match.groups[static_cast<size_t>(group - 1)];
            out.push_back(r ? utf8(text, r->start, r->length) : std::string());
        }
    }
    return out;
}

icu::UnicodeString Regex::replacing(const icu::UnicodeString& text, const icu::UnicodeString& literal, bool all) const {
    auto m = matcherFor(pattern_.get(), text);
    if (!m) return text;
    icu::UnicodeString out;
    int32_t copied = 0;
    UErrorCode status = U_ZERO_ERROR;
    while (m->find(status) && U_SUCCESS(status)) {
        const int32_t start = m->start(status);
        const int32_t end = m->end(status);
        out.append(text, copied, start - copied);
        out.append(literal);
        copied = end;
        if (!all) break;
    }
    out.append(text, copied, text.length() - copied);
    return out;
}

icu::UnicodeString Regex::replacingAll(const icu::UnicodeString& text, const icu::UnicodeString& literal) const {
    return replacing(text, literal, true);
}

icu::UnicodeString Regex::replacingFirst(const icu::UnicodeString& text, const icu::UnicodeString& literal) const {
    return replacing(text, literal, false);
}

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::string utf8(const icu::UnicodeString& text, std::int32_t start, std::int32_t length) {
    std::string out;
    icu::UnicodeString part(text, start, length);
    part.toUTF8String(out);
    return out;
}

icu::UnicodeString utf16(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

} // namespace bv
