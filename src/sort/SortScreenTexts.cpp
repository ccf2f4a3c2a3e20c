#include "sort/SortScreenTexts.h"

#include <algorithm>

#include "sort/PlannedAction.h"
#include "sort/SortAutoRun.h"

namespace bv {

std::string SortScreenTexts::tidyCountLine(std::int64_t count) {
    if (count <= 0) return {};
    return std::to_string(count) + (count == 1 ? " file your rules can tidy right now" : " files your rules can tidy right now");
}

std::string SortScreenTexts::matchNowText(std::int64_t count) { return std::to_string(count) + " match right now"; }

std::string SortScreenTexts::deleteExplanation(const SortRule& rule) {
    return "\u201C" + rule.name + "\u201D is removed. Files it already sorted stay where they are.";
}

std::vector<std::string> SortScreenTexts::editorNotes(const SortRule& rule) {
    std::vector<std::string> notes;
    switch (rule.action.type) {
    case SortAction::Type::archive: notes.emplace_back("Zip keeps the original in place."); break;
    case SortAction::Type::rename: notes.emplace_back("The file stays in the same folder."); break;
    case SortAction::Type::trash: notes.emplace_back("Files go to the Trash."); break;
    case SortAction::Type::moveToFolder:
        // Downloads, the Desktop and any folder the user picks under home share one disk here.
        notes.emplace_back(rule.action.argument.empty() ? "Choose a folder to finish this rule."
                                                        : "A move on this disk does not free space.");
        break;
    }
    const bool userOnly = rule.action.type == SortAction::Type::rename || rule.action.type == SortAction::Type::archive;
    if (userOnly) notes.emplace_back("Zip and rename run only when you run them, so they never act on their own output.");
    const bool automatic = rule.trigger.type == SortTrigger::Type::whenAdded ||
                           (rule.trigger.type == SortTrigger::Type::schedule && rule.trigger.schedule != CleanSchedule::off);
    if (rule.trigger.type == SortTrigger::Type::whenAdded) {
        const int minutes = SortAutoRun::kSettleSeconds / 60;
        notes.push_back("Files that arrive from now on are handled once they are " + std::to_string(minutes) +
                        (minutes == 1 ? " minute" : " minutes") +
                        " old. Files already here are left alone; choose Daily to include them.");
    }
    if (automatic)
        notes.emplace_back("Automatic runs happen while Brimvale is open. \u201CWhen a file arrives\u201D sorts files "
                           "that land after the rule is saved, once they have settled.");
    return notes;
}

std::string SortScreenTexts::touchCountLine(std::size_t count) {
    if (count <= kTouchRows) return {};
    return "Showing the first " + std::to_string(kTouchRows) + " of " + std::to_string(count);
}

std::string SortScreenTexts::nothingMatchesYet(const std::string& place) {
    return "Nothing in " + place + " matches yet. Files that arrive later and match will be sorted.";
}

std::string SortScreenTexts::noActionsIn(const std::string& place) {
    return "No files in " + place + " match right now. New ones will when they arrive.";
}

bool SortScreenTexts::namesFiles(const SortRule& rule) {
    return std::any_of(rule.conditions.begin(), rule.conditions.end(),
                       [](const SortCondition& c) { return c.type != SortCondition::Type::location; });
}

} // namespace bv
