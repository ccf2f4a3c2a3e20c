#include "sort/SortRuleParser.h"

#include <cmath>
#include <limits>
#include <set>

#include "arrange/NamePattern.h"
#include "foundation/PhraseText.h"
#include "foundation/Regex.h"
#include "sort/RuleParser.h"
#include "sort/SortVocabulary.h"

namespace bv {

const char* sortRuleParserErrorMessage(SortRuleParserError e) {
    switch (e) {
    case SortRuleParserError::empty: return "Type a rule to continue.";
    case SortRuleParserError::unrecognized: return "Those words aren\u2019t part of a rule yet.";
    case SortRuleParserError::mixedActions: return "Use one action in a rule, not two.";
    case SortRuleParserError::deleteRequiresAge: return "Delete rules need an age, for example \u201Cafter 3 days\u201D.";
    case SortRuleParserError::invalidAge: return "Use a number of days that is at least 1.";
    case SortRuleParserError::missingMatch: return "Say which files, with an extension, a name, or a kind.";
    }
    return "";
}

namespace {

using C = Regex::Case;

// Every constant expression of the grammar, compiled once. Tests run case-sensitively on
// lowered text; captures are compiled case-insensitively.
struct Grammar {
    Regex zip{R"(\b(zip|archive|compress)\b)"};
    Regex rename{R"(\brename\b)"};
    Regex trash{R"(\b(delete|deleted|trash|trashed|remove|removed)\b)"};
    Regex move{R"(\b(put|place|placed|move|moved|moving|keep)\b)"};
    Regex renamePattern{R"((?:to|as)\s+["“”']?([^\s"“”']+)\s*$)", C::insensitive};

    Regex weeksAfter{R"((?:after|older than|more than|at least|over)\s+(\d+)\s+weeks?)", C::insensitive};
    Regex weeksOld{R"((\d+)\s+weeks?\s+old)", C::insensitive};
    Regex daysAfter{R"((?:after|older than|more than|at least|over)\s+(\d+)\s+days?)", C::insensitive};
    Regex daysOld{R"((\d+)\s+days?\s+old)", C::insensitive};

    Regex startsWith{R"((?:prefix|starting with|starts with|beginning with|begins with)\s+["“”']?([^\s"“”']+))", C::insensitive};
    Regex contains{R"((?:containing|contains|with name containing)\s+["“”']?([^\s"“”']+))", C::insensitive};
    Regex endsWith{R"((?:suffix|ending with|ends with)\s+["“”']?([^\s"“”']+))", C::insensitive};

    Regex extensionWord{R"(extension\s+\.?([a-z0-9]+))", C::insensitive};
    Regex size{R"((?:larger than|bigger than|over|at least)\s+(\d+(?:\.\d+)?)\s*(gb|mb|kb))", C::insensitive};
    Regex source{R"((?:from|downloaded from)\s+([a-z0-9.-]+\.[a-z]{2,}))", C::insensitive};

    Regex diskImagePhrase{R"(\bdisk\s+images?\b)"};
    Regex image{R"(\b(images?|pictures?|photos?)\b)"};
    Regex screenshot{R"(\bscreenshots?\b|\bscreen shots?\b)"};
    Regex video{R"(\bvideos?\b|\bmovies?\b)"};
    Regex pdf{R"(\bpdfs?\b)"};
    Regex archive{R"(\barchives?\b)"};
    Regex installer{R"(\binstallers?\b)"};
    Regex diskImage{R"(\bdisk images?\b)"};
    Regex desktop{R"(\bdesktop\b)"};
    Regex anyOf{R"(\bor\b)"};
    Regex hourly{R"(\bevery hour\b|\bhourly\b)"};
    Regex weekly{R"(\bevery week\b|\bweekly\b)"};
    Regex daily{R"(\bevery day\b|\bdaily\b)"};
    Regex manual{R"(\bwhen i run\b|\bmanual\b)"};
};

const Grammar& grammar() {
    static const Grammar g;
    return g;
}

using Result = SortRuleParser::Result;
Result failure(SortRuleParserError e) { return {std::nullopt, e}; }

int actionFamilies(const icu::UnicodeString& lowered, bool& zip, bool& rename, bool& trash, bool& move) {
    const auto& g = grammar();
    zip = g.zip.test(lowered);
    rename = g.rename.test(lowered);
    trash = g.trash.test(lowered);
    move = g.move.test(lowered);
    return int(zip) + int(rename) + int(trash) + int(move);
}

// The text a sentence is read from after each understood piece is blanked out, so that a
// glob or a name value is not read a second time as an extension word.
void blank(icu::UnicodeString& working, std::string_view text) {
    const icu::UnicodeString needle = lowercased(utf16(text));
    if (needle.isEmpty()) return;
    const int32_t at = working.indexOf(needle);
    if (at < 0) return;
    const int32_t count = needle.countChar32();
    working.replace(at, needle.length(), icu::UnicodeString(count, U' ', count));
}

struct AgeOutcome {
    std::optional<std::int64_t> days;
    bool invalid = false;
};

AgeOutcome readAge(const icu::UnicodeString& lowered) {
    const auto& g = grammar();
    const std::pair<const Regex*, std::int64_t> steps[] = {
        {&g.weeksAfter, 7}, {&g.weeksOld, 7}, {&g.daysAfter, 1}, {&g.daysOld, 1}};
    for (const auto& [expression, factor] : steps) {
        auto groups = expression->firstCaptures(lowered);
        if (!groups) continue;
        std::string joined;
        for (const auto& part : *groups) joined += (joined.empty() ? "" : " ") + part;
        std::int64_t n = 0;
        if (!parseWholeNumber(trimmedWhitespace(joined), n)) continue;
        if (n < 1) return {std::nullopt, true};
        // A number of weeks that would overflow in days is as unusable as one that is no
        // number at all; in practice the 64-bit range is never near.
        if (n > std::numeric_limits<std::int64_t>::max() / factor) continue;
        return {n * factor, false};
    }
    return {};
}

bool containsAny(const std::set<std::string>& set, std::initializer_list<const char*> values) {
    for (const char* v : values)
        if (set.count(v)) return true;
    return false;
}

} // namespace

Result SortRuleParser::parseNewGrammar(std::string_view rawPhrase, Uuid id, TimePoint now) {
    const auto& g = grammar();
    const std::string phrase = normalizedPhrase(rawPhrase);
    if (phrase.empty()) return failure(SortRuleParserError::empty);
    const icu::UnicodeString typed = utf16(phrase);
    const icu::UnicodeString lowered = lowercased(typed);
    icu::UnicodeString working = lowered;

    // A2: the action.
    bool zip = false, rename = false, trash = false, move = false;
    if (actionFamilies(lowered, zip, rename, trash, move) > 1) return failure(SortRuleParserError::mixedActions);
    SortAction action = SortAction::moveToFolder({});
    if (zip) {
        action = SortAction::archive();
    } else if (rename) {
        std::string pattern = "{name}";
        if (auto groups = g.renamePattern.firstCaptures(typed); groups && !groups->empty())
            pattern = (*groups)[0];
        action = SortAction::rename(trimmedWhitespace(pattern));
    } else if (trash) {
        action = SortAction::trash();
    }

    // A3, A4: the age.
    const AgeOutcome age = readAge(lowered);
    if (age.invalid) return failure(SortRuleParserError::invalidAge);
    if (action.type == SortAction::Type::trash && !age.days) return failure(SortRuleParserError::deleteRequiresAge);

    std::vector<SortCondition> conditions;

    // A5: star patterns, from the words as typed.
    for (const auto& word : splitWords(phrase)) {
        const std::string trimmed = trimmedOf(word.text, "\"\u201C\u201D',;:");
        if (trimmed.find('*') == std::string::npos) continue;
        const auto pattern = NamePattern::parse(trimmed);
        if (!pattern) continue;
        conditions.push_back(pattern->condition());
        switch (pattern->type) {
        case NamePattern::Type::prefix: blank(working, pattern->value + "*"); break;
        case NamePattern::Type::suffix: blank(working, "*" + pattern->value); break;
        case NamePattern::Type::fileExtension: blank(working, "*." + pattern->value); break;
        }
    }

    // A6: name words, keeping the value's case.
    const std::pair<const Regex*, SortCondition::Type> nameWords[] = {
        {&g.startsWith, SortCondition::Type::nameStartsWith},
        {&g.contains, SortCondition::Type::nameContains},
        {&g.endsWith, SortCondition::Type::nameEndsWith}};
    for (const auto& [expression, type] : nameWords) {
        auto groups = expression->firstCaptures(typed);
        if (!groups || groups->empty()) continue;
        const std::string value = trimmedOf((*groups)[0], ".,;:\"\u201C\u201D'");
        conditions.push_back(SortCondition::text(type, value));
        blank(working, value);
    }

    // A7: the zip verb is no extension.
    if (action.type == SortAction::Type::archive)
        for (const char* verb : {"zip", "archive", "compress"}) blank(working, verb);

    // A8: extensions.
    std::set<std::string> extensions;
    for (auto& e : g.extensionWord.allGroupTexts(working, 1)) extensions.insert(e);
    for (const auto& word : alphanumericRuns(utf8(working)))
        if (const auto* values = extensionsForWord(word)) extensions.insert(values->begin(), values->end());
    for (const auto& e : extensions) conditions.push_back(SortCondition::fileExtension(e));

    // A9: age.
    if (age.days) conditions.push_back(SortCondition::olderThanDays(*age.days));

    // A10: size.
    if (auto groups = g.size.firstCaptures(lowered); groups && groups->size() == 2) {
        char* end = nullptr;
        const std::string& number = (*groups)[0];
        const double value = std::strtod(number.c_str(), &end);
        if (end && *end == '\0' && !number.empty()) {
            const std::string unit = lowercased((*groups)[1]);
            const double factor = unit == "gb" ? 1e9 : unit == "mb" ? 1e6 : 1e3;
            const double bytes = std::trunc(value * factor);
            // Past the 64-bit range the size is held at its largest value rather than wrapping.
            const auto limit = static_cast<double>(std::numeric_limits<std::int64_t>::max());
            conditions.push_back(SortCondition::minimumBytes(
                bytes >= limit ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(bytes)));
        }
    }

    // A11: download source.
    if (auto groups = g.source.firstCaptures(lowered); groups && !groups->empty())
        conditions.push_back(SortCondition::downloadSource(trimmedOf((*groups)[0], ".,")));

    // A12: kinds, read from the whole sentence.
    const icu::UnicodeString withoutDiskImages = g.diskImagePhrase.replacingAll(lowered, icu::UnicodeString(u" "));
    if (g.image.test(withoutDiskImages) &&
        !containsAny(extensions, {"jpg", "jpeg", "png", "gif", "heic", "webp", "tif", "tiff"}))
        conditions.push_back(SortCondition::kindIs("image"));
    if (g.screenshot.test(lowered)) conditions.push_back(SortCondition::kindIs("screenshot"));
    if (g.video.test(lowered)) conditions.push_back(SortCondition::kindIs("video"));
    if (g.pdf.test(lowered) && !extensions.count("pdf")) conditions.push_back(SortCondition::kindIs("pdf"));
    if (g.archive.test(lowered) && !containsAny(extensions, {"zip", "gz", "tar", "tgz", "rar", "7z"}))
        conditions.push_back(SortCondition::kindIs("archive"));
    const bool installer = g.installer.test(lowered);
    if (installer) conditions.push_back(SortCondition::kindIs("installer"));
    if (!installer && extensions.empty() && g.diskImage.test(lowered))
        conditions.push_back(SortCondition::kindIs("disk image"));

    // A13: place, always last.
    conditions.push_back(SortCondition::location(g.desktop.test(lowered) ? SortPlace::desktop : SortPlace::downloads));

    // A14.
    if (conditions.size() == 1) return failure(SortRuleParserError::missingMatch);

    SortRule rule;
    rule.id = id;
    rule.name = phrase;
    rule.phrase = phrase;
    rule.match = g.anyOf.test(lowered) ? MatchMode::any : MatchMode::all;
    rule.conditions = std::move(conditions);
    rule.action = action;
    if (g.hourly.test(lowered))
        rule.trigger = SortTrigger::scheduled(CleanSchedule::hourly);
    else if (g.weekly.test(lowered))
        rule.trigger = SortTrigger::scheduled(CleanSchedule::weekly);
    else if (g.daily.test(lowered))
        rule.trigger = SortTrigger::scheduled(CleanSchedule::daily);
    else if (g.manual.test(lowered))
        rule.trigger = SortTrigger::manual();
    else
        rule.trigger = SortTrigger::whenAdded();
    rule.isEnabled = true;
    rule.createdAt = now;
    rule.kind = SortRuleKind::sort;

    ParsedSort parsed;
    parsed.needsFolder = action.type == SortAction::Type::moveToFolder && action.argument.empty();
    parsed.interpretation = phrase;
    parsed.chips = chips(rule);
    parsed.rule = std::move(rule);
    return {std::move(parsed), std::nullopt};
}

namespace {

ParsedSort fromOlderGrammar(const ParsedRule& old, Uuid id, TimePoint now) {
    SortRule rule;
    rule.id = id;
    rule.createdAt = now;
    rule.name = old.phrase;
    rule.phrase = old.phrase;
    rule.match = MatchMode::all;
    for (const auto& e : old.extensions) rule.conditions.push_back(SortCondition::fileExtension(e));
    if (old.namePrefix && !old.namePrefix->empty()) rule.conditions.push_back(SortCondition::nameStartsWith(*old.namePrefix));
    if (old.minimumAgeDays) rule.conditions.push_back(SortCondition::olderThanDays(*old.minimumAgeDays));
    rule.conditions.push_back(SortCondition::location(SortPlace::downloads));
    rule.action = old.action == RuleAction::trash ? SortAction::trash() : SortAction::moveToFolder({});
    rule.trigger = SortTrigger::whenAdded();
    rule.isEnabled = true;
    rule.kind = SortRuleKind::sort;
    ParsedSort parsed;
    parsed.needsFolder = old.requiresDestination;
    parsed.interpretation = old.interpretation;
    parsed.chips = SortRuleParser::chips(rule);
    parsed.rule = std::move(rule);
    return parsed;
}

size_t matchingConditions(const SortRule& rule) {
    size_t n = 0;
    for (const auto& c : rule.conditions) n += c.type != SortCondition::Type::location;
    return n;
}

} // namespace

Result SortRuleParser::parse(std::string_view rawPhrase, Uuid id, TimePoint now) {
    const std::string phrase = normalizedPhrase(rawPhrase);
    if (phrase.empty()) return failure(SortRuleParserError::empty);
    bool zip = false, rename = false, trash = false, move = false;
    if (actionFamilies(lowercased(utf16(phrase)), zip, rename, trash, move) > 1)
        return failure(SortRuleParserError::mixedActions);

    std::optional<ParsedSort> older;
    if (auto old = RuleParser::parse(phrase); old.rule) older = fromOlderGrammar(*old.rule, id, now);
    Result newer = parseNewGrammar(phrase, id, now);
    // Only the newer grammar's errors ever reach the user.
    if (!older) return newer;
    if (!newer.parsed) return {std::move(older), std::nullopt};
    if (matchingConditions(newer.parsed->rule) > matchingConditions(older->rule)) return newer;
    return {std::move(older), std::nullopt};
}

PhraseReview SortRuleParser::review(std::string_view rawLine, Uuid id, TimePoint now) {
    const std::string line = trimmedWhitespace(rawLine);
    PhraseReview review;
    if (line.empty()) {
        review.message = sortRuleParserErrorMessage(SortRuleParserError::empty);
        return review;
    }
    Result result = parse(line, id, now);
    if (result.parsed) {
        review.unrecognized = unrecognizedWords(line, &result.parsed->rule);
        review.parsed = std::move(result.parsed);
    } else {
        review.unrecognized = unrecognizedWords(line, nullptr);
        review.message = result.error ? sortRuleParserErrorMessage(*result.error) : "That sentence isn\u2019t a rule yet.";
    }
    return review;
}

std::vector<LineReview> SortRuleParser::reviewLines(std::string_view text, TimePoint now) {
    std::vector<LineReview> lines;
    size_t begin = 0;
    while (begin <= text.size()) {
        size_t end = text.find('\n', begin);
        if (end == std::string_view::npos) end = text.size();
        const std::string line = trimmedWhitespace(text.substr(begin, end - begin));
        if (!line.empty()) {
            LineReview review;
            review.index = static_cast<int>(lines.size());
            review.text = line;
            review.review = SortRuleParser::review(line, Uuid::generate(), now);
            lines.push_back(std::move(review));
        }
        begin = end + 1;
    }
    return lines;
}

} // namespace bv
