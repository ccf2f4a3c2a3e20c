#include "arrange/ArrangePatterns.h"

#include <algorithm>

#include "arrange/NamePattern.h"
#include "foundation/PhraseText.h"
#include "foundation/Uuid.h"

namespace bv {
namespace {

const std::string kOpenQuote = "\u201C";
const std::string kCloseQuote = "\u201D";

bool holdsPattern(const SortRule& rule, const SortCondition& condition) {
    return rule.kind == SortRuleKind::arrange &&
           std::find(rule.conditions.begin(), rule.conditions.end(), condition) != rule.conditions.end();
}

} // namespace

SortRule makeArrangeRule(const std::string& glob, const NamePattern& pattern, const std::string& folder, TimePoint now) {
    SortRule rule;
    rule.id = Uuid::generate();
    rule.phrase = "move " + glob + " files";
    rule.name = glob + " \u2192 " + lastPathComponent(folder);
    rule.kind = SortRuleKind::arrange;
    rule.match = MatchMode::all;
    rule.trigger = SortTrigger::whenAdded();
    rule.conditions = {pattern.condition(), SortCondition::location(SortPlace::downloads)};
    rule.action = SortAction::moveToFolder(folder);
    rule.isEnabled = true;
    rule.createdAt = now;
    rule.liveSince = now;
    return rule;
}

ArrangeSaveResult saveArrangePatterns(const std::vector<ArrangePatternRow>& rows, const std::vector<SortRule>& existing,
                                      TimePoint now) {
    ArrangeSaveResult result;
    std::vector<NamePattern> inSheet;
    for (const ArrangePatternRow& row : rows) {
        const std::string glob = trimmedWhitespace(row.glob);
        auto refuse = [&](std::string message) {
            result.rules.clear();
            result.message = std::move(message);
            return result;
        };
        if (glob.empty()) return refuse("Type the start or end of a name.");
        const auto pattern = NamePattern::parse(glob);
        if (!pattern) return refuse("Use one word: vk- or vk-* for the start, *-sk or -sk for the end.");
        const SortCondition condition = pattern->condition();
        const auto holder = std::find_if(existing.begin(), existing.end(),
                                         [&](const SortRule& r) { return holdsPattern(r, condition); });
        if (holder != existing.end())
            return refuse(kOpenQuote + glob + kCloseQuote + " already goes to " +
                          holder->destinationName().value_or("a folder") + ". Change that one instead.");
        if (std::find(inSheet.begin(), inSheet.end(), *pattern) != inSheet.end())
            return refuse(kOpenQuote + glob + kCloseQuote + " already has a folder.");
        if (trimmedWhitespace(row.folder).empty()) return refuse("Choose the folder these files go to.");
        inSheet.push_back(*pattern);
        result.rules.push_back(makeArrangeRule(glob, *pattern, row.folder, now));
    }
    return result;
}

std::string arrangeGlob(const SortRule& rule) {
    const std::string head = "move ";
    const std::string tail = " files";
    const std::string& p = rule.phrase;
    if (p.size() > head.size() + tail.size() && p.compare(0, head.size(), head) == 0 &&
        p.compare(p.size() - tail.size(), tail.size(), tail) == 0)
        return p.substr(head.size(), p.size() - head.size() - tail.size());
    return p;
}

std::string describeNamePattern(const NamePattern& pattern) {
    switch (pattern.type) {
    case NamePattern::Type::prefix: return "Names starting with " + kOpenQuote + pattern.value + kCloseQuote;
    case NamePattern::Type::suffix: return "Names ending with " + kOpenQuote + pattern.value + kCloseQuote;
    case NamePattern::Type::fileExtension: return "Names ending with " + kOpenQuote + "." + pattern.value + kCloseQuote;
    }
    return {};
}

std::set<SortPlace> arrangeWatchedPlaces(const std::vector<SortRule>& rules) {
    std::set<SortPlace> places;
    for (const SortRule& rule : rules) {
        if (rule.kind != SortRuleKind::arrange || !rule.isEnabled) continue;
        bool named = false;
        for (const SortCondition& c : rule.conditions)
            if (c.type == SortCondition::Type::location) {
                places.insert(c.place);
                named = true;
            }
        if (!named) places.insert(SortPlace::downloads);
    }
    return places;
}

std::string removePatternQuestion() { return "Remove this pattern?"; }

std::string removePatternExplanation(const SortRule& rule) {
    return kOpenQuote + arrangeGlob(rule) + kCloseQuote + " stops moving files. Files it already moved stay where they are.";
}

std::vector<SortRule> withoutRule(std::vector<SortRule> rules, const Uuid& id) {
    std::erase_if(rules, [&](const SortRule& r) { return r.id == id; });
    return rules;
}

} // namespace bv
