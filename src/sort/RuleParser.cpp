#include "sort/RuleParser.h"

#include <algorithm>
#include <set>

#include "foundation/PhraseText.h"
#include "foundation/Regex.h"
#include "sort/SortVocabulary.h"

namespace bv {

const char* ruleParserErrorMessage(RuleParserError e) {
    switch (e) {
    case RuleParserError::empty: return "Type a rule to continue.";
    case RuleParserError::unrecognized:
        return "Use a move or delete sentence, such as \u201Cput JPEGs in this folder only\u201D.";
    case RuleParserError::mixedActions: return "Use either a move or a delete, not both in one rule.";
    case RuleParserError::deleteRequiresAge: return "Delete rules need an age, for example \u201Cafter 3 days\u201D.";
    case RuleParserError::invalidAge: return "Use a number of days that is at least 1.";
    case RuleParserError::missingMatch: return "Say which files, with an extension or a name prefix.";
    }
    return "";
}

namespace {

using C = Regex::Case;

struct Patterns {
    Regex deleteWord{R"(\b(delete|deleted|deletes|trash|trashed|remove|removed|recycle|recycled|discard|discarded)\b)"};
    Regex moveWord{R"(\b(put|place|placed|move|moved|moving|relocate|relocated|keep)\b)"};
    Regex only{R"(\bonly\b)"};
    Regex ageAfter{R"((?:after|older than|more than|at least|over)\s+(\d+)\s+days?)", C::insensitive};
    Regex ageOld{R"((\d+)\s+days?\s+old)", C::insensitive};
    Regex prefixes[3] = {
        Regex{R"(prefix\s+["“”']?([^\s"“”']+)["“”']?)", C::insensitive},
        Regex{R"((?:starting|starts|start|beginning|begins|begin)\s+with\s+["“”']?([^\s"“”']+)["“”']?)", C::insensitive},
        Regex{R"(named\s+["“”']?([^\s"“”']+)["“”']?)", C::insensitive},
    };
    Regex extensionWord{R"(extension\s+\.?([a-z0-9]+))"};
    Regex dotted{R"(\.([a-z0-9]{1,8})\b)"};
};

const Patterns& patterns() {
    static const Patterns p;
    return p;
}

// The first expression that yields a whole number decides; nothing when none does.
std::optional<std::int64_t> firstWholeNumber(std::initializer_list<const Regex*> expressions,
                                             const icu::UnicodeString& text) {
    for (const Regex* e : expressions) {
        auto groups = e->firstCaptures(text);
        if (!groups) continue;
        std::string joined;
        for (const auto& g : *groups) joined += (joined.empty() ? "" : " ") + g;
        std::int64_t n = 0;
        if (parseWholeNumber(trimmedWhitespace(joined), n)) return n;
    }
    return std::nullopt;
}

bool isSkippedPrefix(const std::string& lowered) {
    static const std::set<std::string> skipped{"the", "this", "a", "an", "in", "to", "folder", "file", "files"};
    return skipped.count(lowered) > 0;
}

} // namespace

RuleParser::Result RuleParser::parse(std::string_view rawPhrase) {
    const auto& p = patterns();
    const std::string phrase = normalizedPhrase(rawPhrase);
    if (phrase.empty()) return {std::nullopt, RuleParserError::empty};
    const icu::UnicodeString typed = utf16(phrase);
    const icu::UnicodeString lowered = lowercased(typed);
    const std::string loweredText = utf8(lowered);

    const bool deletes = p.deleteWord.test(lowered);
    const bool moves = p.moveWord.test(lowered) || loweredText.find("should go") != std::string::npos ||
                       loweredText.find("belong") != std::string::npos;
    RuleAction action;
    if (deletes && moves) return {std::nullopt, RuleParserError::mixedActions};
    if (deletes) {
        action = RuleAction::trash;
    } else if (p.only.test(lowered)) {
        if (!moves && loweredText.find("folder") == std::string::npos) return {std::nullopt, RuleParserError::unrecognized};
        action = RuleAction::keepInFolder;
    } else {
        if (!moves) return {std::nullopt, RuleParserError::unrecognized};
        action = RuleAction::move;
    }

    const auto age = firstWholeNumber({&p.ageAfter, &p.ageOld}, lowered);
    if (age && *age < 1) return {std::nullopt, RuleParserError::invalidAge};

    std::optional<std::string> prefix;
    for (const Regex& e : p.prefixes) {
        auto groups = e.firstCaptures(typed);
        if (!groups || groups->empty()) continue;
        std::string candidate = trimmedOf((*groups)[0], ".,;:");
        if (candidate.empty() || isSkippedPrefix(lowercased(candidate))) continue;
        prefix = candidate;
        break;
    }

    icu::UnicodeString searched = lowered;
    if (prefix) {
        const icu::UnicodeString needle = utf16(*prefix);
        const int32_t at = searched.indexOf(needle);
        if (at >= 0) searched.replace(at, needle.length(), icu::UnicodeString(needle.length(), U' ', needle.length()));
    }

    std::set<std::string> extensions;
    for (auto& e : p.extensionWord.allGroupTexts(searched, 1)) extensions.insert(e);
    for (auto& e : p.dotted.allGroupTexts(searched, 1)) extensions.insert(e);
    for (const auto& word : alphanumericRuns(utf8(searched)))
        if (const auto* values = extensionsForWord(word)) extensions.insert(values->begin(), values->end());

    if (action == RuleAction::trash && !age) return {std::nullopt, RuleParserError::deleteRequiresAge};
    if (!prefix && extensions.empty()) return {std::nullopt, RuleParserError::missingMatch};

    ParsedRule rule;
    rule.phrase = phrase;
    rule.action = action;
    rule.extensions.assign(extensions.begin(), extensions.end());
    rule.namePrefix = prefix;
    rule.minimumAgeDays = age;
    rule.requiresDestination = action != RuleAction::trash;
    rule.interpretation = interpretation(action, filesPhrase(rule.extensions, prefix), age);
    return {rule, std::nullopt};
}

std::string RuleParser::filesPhrase(const std::vector<std::string>& extensions,
                                    const std::optional<std::string>& prefix) {
    std::string phrase;
    const bool jpeg = extensions.size() == 2 &&
                      ((extensions[0] == "jpg" && extensions[1] == "jpeg") ||
                       (extensions[0] == "jpeg" && extensions[1] == "jpg"));
    if (jpeg) {
        phrase = "JPEG files (.jpg and .jpeg)";
    } else if (extensions.empty()) {
        phrase = "matching files";
    } else if (extensions.size() == 1) {
        phrase = "." + extensions[0] + " files";
    } else {
        phrase = "files ending in ";
        for (size_t i = 0; i < extensions.size(); ++i) phrase += (i ? ", ." : ".") + extensions[i];
    }
    if (prefix) {
        if (extensions.empty()) return "files whose names start with \"" + *prefix + "\"";
        phrase += " whose names start with \"" + *prefix + "\"";
    }
    return phrase;
}

std::string RuleParser::interpretation(RuleAction action, const std::string& files, std::optional<std::int64_t> age) {
    const auto days = [](std::int64_t n) { return std::to_string(n) + (n == 1 ? " day" : " days"); };
    switch (action) {
    case RuleAction::move:
        if (!age) return "Place " + files + " in the folder you choose.";
        return "Place " + files + " that are at least " + days(*age) + " old in the folder you choose.";
    case RuleAction::keepInFolder: return "Put " + files + " only in the folder you choose.";
    case RuleAction::trash: return "Move " + files + " to the Trash after " + days(age.value_or(0)) + ".";
    }
    return {};
}

} // namespace bv
