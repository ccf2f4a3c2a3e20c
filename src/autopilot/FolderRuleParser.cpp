#include "autopilot/FolderRuleParser.h"

#include "foundation/PhraseText.h"
#include "foundation/Regex.h"

namespace bv {
namespace {

using C = Regex::Case;

struct Grammar {
    Regex keepNewest{R"((?:except|keep)\s+the\s+newest\s+(\d+))", C::insensitive};
    Regex ageAfter{R"((?:after|older than|more than|at least|over)\s+(\d+)\s+days?)", C::insensitive};
    Regex ageOld{R"((\d+)\s+days?\s+old)", C::insensitive};
    Regex extension{R"(\*\.[a-z0-9]+)", C::insensitive};
    Regex named{R"((?:subfolders?|folders?|directories)\s+named\s+(.+)$)", C::insensitive};
    Regex clause{R"(\s+(?:that|which|if|when|older|newer|after|more than|at least|over|not touched|untouched|every|daily|weekly|hourly)\b.*$)",
                 C::insensitive};
};

const Grammar& grammar() {
    static const Grammar g;
    return g;
}

std::optional<std::int64_t> positiveNumber(const Regex& expression, const icu::UnicodeString& text) {
    auto groups = expression.firstCaptures(text);
    if (!groups || groups->empty()) return std::nullopt;
    std::int64_t n = 0;
    if (!parseWholeNumber(trimmedWhitespace((*groups)[0]), n) || n < 1) return std::nullopt;
    return n;
}

std::string joined(const std::vector<std::string>& items, const char* before = "") {
    std::string out;
    for (const auto& item : items) out += (out.empty() ? "" : ", ") + std::string(before) + item;
    return out;
}

std::string replacingAll(const std::string& text, std::string_view from, std::string_view to) {
    std::string out;
    size_t copied = 0;
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, copied)) {
        out.append(text, copied, at - copied);
        out.append(to);
        copied = at + from.size();
    }
    out.append(text, copied, std::string::npos);
    return out;
}

} // namespace

std::optional<ParsedFolderRule> FolderRuleParser::parse(std::string_view phrase) {
    const auto& g = grammar();
    const std::string text = normalizedPhrase(phrase);
    if (text.empty()) return std::nullopt;
    const icu::UnicodeString typed = utf16(text);
    const icu::UnicodeString lowered = lowercased(typed);
    const std::string loweredText = utf8(lowered);

    if (auto keep = positiveNumber(g.keepNewest, typed)) {
        ParsedFolderRule rule;
        rule.keepNewest = keep;
        rule.suggestedScope = FolderScope::children;
        rule.interpretation = "Delete everything inside except the newest " + std::to_string(*keep) + ".";
        return rule;
    }

    std::optional<std::int64_t> age = positiveNumber(g.ageAfter, lowered);
    if (!age) age = positiveNumber(g.ageOld, lowered);

    std::vector<std::string> extensions;
    for (const auto& match : g.extension.allGroupTexts(lowered)) {
        std::string value = lowercased(trimmedOf(match, "*."));
        if (!value.empty()) extensions.push_back(std::move(value));
    }
    if (!extensions.empty()) {
        ParsedFolderRule rule;
        rule.extensions = extensions;
        rule.minimumAgeDays = age;
        rule.suggestedScope = FolderScope::recursive;
        rule.interpretation = "Delete " + joined(extensions, "*.");
        if (age) rule.interpretation += " older than " + std::to_string(*age) + " days";
        rule.interpretation += ".";
        return rule;
    }

    if (auto groups = g.named.firstCaptures(typed); groups && !groups->empty()) {
        const std::string list =
            replacingAll(utf8(g.clause.replacingFirst(utf16((*groups)[0]), icu::UnicodeString())), " and ", ",");
        std::vector<std::string> names;
        size_t begin = 0;
        while (begin <= list.size()) {
            size_t end = list.find(',', begin);
            if (end == std::string::npos) end = list.size();
            std::string piece = trimmedWhitespace(std::string_view(list).substr(begin, end - begin));
            if (!piece.empty() && lowercased(piece) != "and") names.push_back(std::move(piece));
            begin = end + 1;
        }
        if (!names.empty()) {
            ParsedFolderRule rule;
            rule.names = names;
            rule.minimumAgeDays = age;
            rule.directoriesOnly = true;
            rule.suggestedScope = FolderScope::recursive;
            rule.interpretation = "Delete subfolders named " + joined(names);
            if (age) rule.interpretation += " older than " + std::to_string(*age) + (*age == 1 ? " day" : " days");
            rule.interpretation += ".";
            return rule;
        }
    }

    const bool saysAge = loweredText.find("older than") != std::string::npos ||
                         loweredText.find("after ") != std::string::npos;
    if (saysAge && age && loweredText.find("file") != std::string::npos) {
        ParsedFolderRule rule;
        rule.minimumAgeDays = age;
        rule.suggestedScope = FolderScope::children;
        rule.interpretation = "Delete files older than " + std::to_string(*age) + " days.";
        return rule;
    }
    return std::nullopt;
}

std::string FolderRuleParser::summary(const std::vector<std::string>& names, const std::vector<std::string>& extensions,
                                      const FolderWatchRule& rule) {
    if (rule.keepNewest) return "Delete everything except the newest " + std::to_string(*rule.keepNewest) + ".";
    if (!extensions.empty()) {
        if (rule.minimumAgeDays)
            return "Delete " + joined(extensions, "*.") + " older than " + std::to_string(*rule.minimumAgeDays) + " days.";
        return "Delete " + joined(extensions, "*.") + ".";
    }
    if (!names.empty()) return "Delete subfolders named " + joined(names) + ".";
    if (rule.minimumAgeDays) return "Delete files older than " + std::to_string(*rule.minimumAgeDays) + " days.";
    return "Clean this folder.";
}

Json ParsedFolderRule::toJson() const {
    Json j = Json::object();
    j["names"] = names;
    j["extensions"] = extensions;
    if (glob) j["glob"] = *glob;
    if (minimumAgeDays) j["minimumAgeDays"] = *minimumAgeDays;
    if (keepNewest) j["keepNewest"] = *keepNewest;
    j["directoriesOnly"] = directoriesOnly;
    j["suggestedScope"] = folderScopeName(suggestedScope);
    j["interpretation"] = interpretation;
    return j;
}

} // namespace bv
