#include "foundation/Regex.h"

#include <mutex>

#include <unicode/regex.h>

namespace bv {

Regex::Regex(std::string_view pattern, Case mode) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError{};
    const uint32_t flags = mode == Case::insensitive ? UREGEX_CASE_INSENSITIVE : 0;
    std::unique_ptr<icu::RegexPattern> compiled(
        icu::RegexPattern::compile(utf16(pattern), flags, parseError, status));
    if (U_SUCCESS(status)) pattern_ = std::move(compiled);
    cache_ = std::make_unique<MatcherCache>();
}

struct Regex::MatcherCache {
    std::mutex lock;
    std::unique_ptr<icu::RegexMatcher> matcher;
};

Regex::~Regex() = default;
Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;

template <class Use>
bool Regex::withMatcher(const icu::UnicodeString& text, Use use) const {
    if (!pattern_) return false;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_lock<std::mutex> held(cache_->lock, std::try_to_lock);
    if (held.owns_lock()) {
        if (cache_->matcher) {
            cache_->matcher->reset(text);
        } else {
            cache_->matcher.reset(pattern_->matcher(text, status));
            if (U_FAILURE(status) || !cache_->matcher) {
                cache_->matcher.reset();
                return false;
            }
        }
        use(*cache_->matcher);
        return true;
    }
    std::unique_ptr<icu::RegexMatcher> own(pattern_->matcher(text, status));
    if (U_FAILURE(status) || !own) return false;
    use(*own);
    return true;
}

bool Regex::test(const icu::UnicodeString& text) const {
    bool found = false;
    withMatcher(text, [&](icu::RegexMatcher& m) {
        UErrorCode status = U_ZERO_ERROR;
        found = m.find(0, status) && U_SUCCESS(status);
    });
    return found;
}

bool Regex::test(std::string_view text) const { return test(utf16(text)); }

std::optional<std::vector<std::string>> Regex::firstCaptures(const icu::UnicodeString& text) const {
    std::optional<std::vector<std::string>> groups;
    withMatcher(text, [&](icu::RegexMatcher& m) {
        UErrorCode status = U_ZERO_ERROR;
        if (!m.find(0, status) || U_FAILURE(status)) return;
        groups.emplace();
        const int32_t count = m.groupCount();
        groups->reserve(static_cast<size_t>(count));
        for (int32_t g = 1; g <= count; ++g) {
            status = U_ZERO_ERROR;
            const int32_t start = m.start(g, status);
            const int32_t end = m.end(g, status);
            if (U_FAILURE(status) || start < 0)
                groups->emplace_back();
            else
                groups->push_back(utf8(text, start, end - start));
        }
    });
    return groups;
}

std::optional<std::vector<std::string>> Regex::firstCaptures(std::string_view text) const {
    return firstCaptures(utf16(text));
}

std::vector<Regex::Match> Regex::allMatches(const icu::UnicodeString& text) const {
    std::vector<Match> out;
    withMatcher(text, [&](icu::RegexMatcher& m) {
        UErrorCode status = U_ZERO_ERROR;
        while (m.find(status) && U_SUCCESS(status)) {
            Match match;
            match.whole.start = m.start(status);
            match.whole.length = m.end(status) - match.whole.start;
            for (int32_t g = 1; g <= m.groupCount(); ++g) {
                const int32_t start = m.start(g, status);
                const int32_t end = m.end(g, status);
                if (U_FAILURE(status) || start < 0)
                    match.groups.emplace_back();
                else
                    match.groups.push_back(Range{start, end - start});
            }
            if (U_FAILURE(status)) break;
            out.push_back(std::move(match));
        }
    });
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
    icu::UnicodeString out;
    int32_t copied = 0;
    const bool ran = withMatcher(text, [&](icu::RegexMatcher& m) {
        UErrorCode status = U_ZERO_ERROR;
        while (m.find(status) && U_SUCCESS(status)) {
            const int32_t start = m.start(status);
            const int32_t end = m.end(status);
            out.append(text, copied, start - copied);
            out.append(literal);
            copied = end;
            if (!all) break;
        }
    });
    if (!ran) return text;
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
