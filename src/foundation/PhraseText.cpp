#include "foundation/PhraseText.h"

#include <charconv>

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace bv {
namespace {

// Walks the code points of UTF-8 text; malformed bytes come out as U+FFFD one at a time.
template <class Visit>
void forEachCodePoint(std::string_view text, Visit visit) {
    const auto* s = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    int32_t i = 0;
    while (i < length) {
        const int32_t begin = i;
        UChar32 c = 0;
        U8_NEXT(s, i, length, c);
        if (c < 0) c = 0xFFFD;
        visit(c, static_cast<size_t>(begin), static_cast<size_t>(i));
    }
}

bool isSpace(UChar32 c) { return u_isUWhiteSpace(c) != 0; }
bool isNumeric(UChar32 c) { return u_getIntPropertyValue(c, UCHAR_NUMERIC_TYPE) != U_NT_NONE; }
bool isLetter(UChar32 c) { return u_hasBinaryProperty(c, UCHAR_ALPHABETIC) != 0; }

std::u32string codePoints(std::string_view text) {
    std::u32string out;
    forEachCodePoint(text, [&](UChar32 c, size_t, size_t) { out.push_back(static_cast<char32_t>(c)); });
    return out;
}

} // namespace

std::vector<PhraseWord> splitWords(std::string_view text) {
    std::vector<PhraseWord> words;
    int32_t utf16Offset = 0;
    bool inWord = false;
    forEachCodePoint(text, [&](UChar32 c, size_t begin, size_t end) {
        const int32_t units = U16_LENGTH(c);
        if (isSpace(c)) {
            inWord = false;
        } else {
            if (!inWord) {
                words.push_back(PhraseWord{{}, utf16Offset, 0});
                inWord = true;
            }
            words.back().text.append(text.substr(begin, end - begin));
            words.back().length += units;
        }
        utf16Offset += units;
    });
    return words;
}

std::string normalizedPhrase(std::string_view text) {
    std::string out;
    for (const auto& w : splitWords(text)) {
        if (!out.empty()) out += ' ';
        out += w.text;
    }
    return out;
}

icu::UnicodeString lowercased(const icu::UnicodeString& text) {
    icu::UnicodeString copy(text);
    copy.toLower(icu::Locale::getRoot());
    return copy;
}

std::string lowercased(std::string_view text) {
    std::string out;
    lowercased(icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size()))))
        .toUTF8String(out);
    return out;
}

namespace {

template <class Drop>
std::string trimmedBy(std::string_view text, Drop drop) {
    size_t first = text.size(), last = 0;
    forEachCodePoint(text, [&](UChar32 c, size_t begin, size_t end) {
        if (drop(c)) return;
        if (first == text.size()) first = begin;
        last = end;
    });
    if (first == text.size()) return {};
    return std::string(text.substr(first, last - first));
}

} // namespace

std::string trimmedWhitespace(std::string_view text) { return trimmedBy(text, isSpace); }

std::string trimmedOf(std::string_view text, std::string_view characters) {
    const std::u32string set = codePoints(characters);
    return trimmedBy(text, [&](UChar32 c) { return set.find(static_cast<char32_t>(c)) != std::u32string::npos; });
}

bool hasWhitespace(std::string_view text) {
    bool found = false;
    forEachCodePoint(text, [&](UChar32 c, size_t, size_t) { found = found || isSpace(c); });
    return found;
}

bool isAllNumeric(std::string_view text) {
    bool all = !text.empty();
    forEachCodePoint(text, [&](UChar32 c, size_t, size_t) { all = all && isNumeric(c); });
    return all;
}

bool isAllLettersOrNumbers(std::string_view text) {
    bool all = !text.empty();
    forEachCodePoint(text, [&](UChar32 c, size_t, size_t) { all = all && (isLetter(c) || isNumeric(c)); });
    return all;
}

std::size_t characterCount(std::string_view text) {
    std::size_t n = 0;
    forEachCodePoint(text, [&](UChar32, size_t, size_t) { ++n; });
    return n;
}

std::vector<std::string> alphanumericRuns(std::string_view text) {
    std::vector<std::string> runs;
    bool inRun = false;
    forEachCodePoint(text, [&](UChar32 c, size_t begin, size_t end) {
        if (isLetter(c) || u_isdigit(c)) {
            if (!inRun) runs.emplace_back();
            inRun = true;
            runs.back().append(text.substr(begin, end - begin));
        } else {
            inRun = false;
        }
    });
    return runs;
}

bool parseWholeNumber(std::string_view text, std::int64_t& out) {
    if (text.empty()) return false;
    size_t skip = text.front() == '+' ? 1 : 0;
    const char* first = text.data() + skip;
    const char* last = text.data() + text.size();
    if (first == last) return false;
    auto [ptr, ec] = std::from_chars(first, last, out);
    return ec == std::errc() && ptr == last;
}

} // namespace bv
