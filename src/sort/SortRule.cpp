#include "sort/SortRule.h"

#include "foundation/CalendarContext.h"
#include "foundation/PhraseText.h"

namespace bv {

const char* matchModeName(MatchMode m) { return m == MatchMode::any ? "any" : "all"; }
const char* sortPlaceName(SortPlace p) { return p == SortPlace::desktop ? "desktop" : "downloads"; }
const char* sortRuleKindName(SortRuleKind k) { return k == SortRuleKind::arrange ? "arrange" : "sort"; }

const char* sortConditionTypeName(SortCondition::Type t) {
    using T = SortCondition::Type;
    switch (t) {
    case T::kind: return "kind";
    case T::fileExtension: return "fileExtension";
    case T::nameStartsWith: return "nameStartsWith";
    case T::nameContains: return "nameContains";
    case T::nameEndsWith: return "nameEndsWith";
    case T::nameEquals: return "nameEquals";
    case T::olderThanDays: return "olderThanDays";
    case T::minimumBytes: return "minimumBytes";
    case T::downloadSource: return "downloadSource";
    case T::location: return "location";
    }
    return "kind";
}

std::string SortTrigger::displayText() const {
    switch (type) {
    case Type::schedule: return std::string(cleanScheduleTitle(schedule));
    case Type::manual: return "When you run it";
    case Type::whenAdded: return "When a file arrives";
    }
    return {};
}

std::string lastPathComponent(const std::string& path) {
    std::string trimmed = path;
    while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.pop_back();
    const auto slash = trimmed.rfind('/');
    if (slash == std::string::npos || trimmed.size() == 1) return trimmed;
    return trimmed.substr(slash + 1);
}

std::string SortAction::displayText() const {
    switch (type) {
    case Type::moveToFolder: return argument.empty() ? "Move to a folder" : "Move to " + lastPathComponent(argument);
    case Type::rename: return "Rename to " + argument;
    case Type::trash: return "Move to Trash";
    case Type::archive: return "Zip, keep the original";
    }
    return {};
}

std::optional<std::string> SortRule::validationMessage() const {
    bool saysWhich = false;
    for (const auto& c : conditions) saysWhich = saysWhich || c.type != SortCondition::Type::location;
    if (!saysWhich) return "Say which files, with an extension, a name, or a kind.";
    if (action.type == SortAction::Type::moveToFolder && action.argument.empty())
        return "Choose a folder to move the files to.";
    if (action.type == SortAction::Type::rename && trimmedWhitespace(action.argument).empty())
        return "Give the rename a pattern, such as {date}-{name}.";
    if (action.type == SortAction::Type::trash && !hasAge())
        return "Delete rules need an age, for example \u201Colder than 7 days\u201D.";
    return std::nullopt;
}

bool SortRule::hasAge() const {
    for (const auto& c : conditions)
        if (c.type == SortCondition::Type::olderThanDays && c.number >= 1) return true;
    return false;
}

std::optional<std::string> SortRule::destinationName() const {
    if (action.type != SortAction::Type::moveToFolder || action.argument.empty()) return std::nullopt;
    return lastPathComponent(action.argument);
}

std::string SortRule::plainSummary() const {
    std::string out = match == MatchMode::all ? "All of" : "Any of";
    if (conditions.empty()) out += " \u00B7 no conditions";
    out += " \u00B7 ";
    switch (action.type) {
    case SortAction::Type::moveToFolder: out += action.displayText(); break;
    case SortAction::Type::rename: out += "Rename"; break;
    case SortAction::Type::trash:
    case SortAction::Type::archive: out += action.displayText(); break;
    }
    out += " \u00B7 " + trigger.displayText();
    return out;
}

Uuid defaultSortRuleID() { return *Uuid::parse("D3A1D3A1-0000-4000-8000-000000000D36"); }

SortRule defaultSortRule(TimePoint now, const CalendarContext& calendar) {
    SortRule rule;
    rule.id = defaultSortRuleID();
    rule.name = "Old installers and disk images";
    rule.phrase = "trash dmg, pkg and iso files older than 7 days";
    rule.match = MatchMode::all;
    rule.conditions = {SortCondition::fileExtension("dmg"), SortCondition::fileExtension("pkg"),
                       SortCondition::fileExtension("iso"), SortCondition::olderThanDays(7),
                       SortCondition::location(SortPlace::downloads)};
    rule.action = SortAction::trash();
    rule.trigger = SortTrigger::scheduled(CleanSchedule::daily);
    rule.isEnabled = true;
    rule.createdAt = now;
    rule.nextRun = calendar.addingDays(now, 1);
    rule.kind = SortRuleKind::sort;
    return rule;
}

} // namespace bv
