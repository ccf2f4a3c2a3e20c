#include "arrange/NamePattern.h"

#include <algorithm>

#include "foundation/PhraseText.h"

namespace bv {

std::optional<NamePattern> NamePattern::parse(std::string_view raw) {
    const std::string text = trimmedOf(trimmedWhitespace(raw), "\"\u201C\u201D'");
    if (text.empty() || hasWhitespace(text)) return std::nullopt;
    const auto stars = std::count(text.begin(), text.end(), '*');
    if (stars == 0) {
        if (text.front() == '-' || text.front() == '_') return NamePattern{Type::suffix, text};
        return NamePattern{Type::prefix, text};
    }
    if (stars > 1) return std::nullopt;
    if (text.back() == '*') {
        std::string rest = text.substr(0, text.size() - 1);
        if (rest.empty()) return std::nullopt;
        return NamePattern{Type::prefix, rest};
    }
    if (text.front() != '*') return std::nullopt;
    const std::string rest = text.substr(1);
    if (rest.front() != '.' || characterCount(rest) < 2) return NamePattern{Type::suffix, rest};
    const std::string extension = rest.substr(1);
    if (extension.find('.') != std::string::npos) return NamePattern{Type::suffix, rest};
    if (isAllLettersOrNumbers(extension)) return NamePattern{Type::fileExtension, lowercased(extension)};
    return std::nullopt;
}

SortCondition NamePattern::condition() const {
    switch (type) {
    case Type::prefix: return SortCondition::nameStartsWith(value);
    case Type::suffix: return SortCondition::nameEndsWith(value);
    case Type::fileExtension: return SortCondition::fileExtension(value);
    }
    return SortCondition::nameStartsWith(value);
}

} // namespace bv
