// The model's rule lists (older Downloads rules, sort rules, folder rules), their loading at
// construction, the one-time seeding of the default sort rule, and the sort rule editor's
// draft: the text box, the chosen line, per-line edits and what the parser made of them.
#include <QVariantMap>

#include "core/AppModel.h"
#include "sort/SortRuleStore.h"

namespace bv {
namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

} // namespace

void AppModel::loadRuleFiles() {
    const TimePoint now = now_();
    LoadedSortRules loaded = loadSortRuleFiles(store_, now);
    rules_ = std::move(loaded.cleanupRules);
    sortRules_ = std::move(loaded.sortRules);
    folderRules_ = loadFolderRules(store_);
    folderDraft_ = FolderRuleDraft::fresh();
}

// Auto-Sort: offer the default sort rule once, after the stored rules are loaded. The flag
// is saved first so a user who deletes the rule never gets it back.
void AppModel::seedDefaultRules() {
    const SeedOutcome outcome = seedDefaultSortRule(settings_, sortRules_, now_(), calendar_);
    if (outcome.settingsChanged) {
        saveSettings();
        emit settingsChanged();
    }
    if (outcome.rulesChanged) {
        saveSortRuleFiles(store_, sortRules_, rules_);
        rules_ = cleanupRulesForSaving(sortRules_, rules_);
        emit sortRulesChanged();
    }
}

void AppModel::setSortRules(std::vector<SortRule> rules) {
    if (rules == sortRules_) return;
    sortRules_ = std::move(rules);
    saveSortRuleFiles(store_, sortRules_, rules_);
    rules_ = cleanupRulesForSaving(sortRules_, rules_);
    emit sortRulesChanged();
}

void AppModel::setFolderRules(std::vector<FolderWatchRule> rules) {
    if (rules == folderRules_) return;
    folderRules_ = std::move(rules);
    saveFolderRules(store_, folderRules_);
    emit folderRulesChanged();
}

// ---- the sort rule editor -----------------------------------------------------------------

QString AppModel::draftPhraseText() const { return q(draftPhrase_); }

void AppModel::setDraftPhrase(const QString& text) {
    const std::string phrase = text.toStdString();
    if (phrase == draftPhrase_) return;
    draftPhrase_ = phrase;
    lineOverrides_.clear();
    draftLines_ = SortRuleParser::reviewLines(draftPhrase_, now_());
    // The chosen line survives while it still exists; otherwise the first line is chosen.
    if (draftLines_.empty() || editorLineIndex_ >= static_cast<int>(draftLines_.size()) || editorLineIndex_ < 0)
        editorLineIndex_ = 0;
    refreshRuleDraft();
}

void AppModel::setEditorLineIndex(int index) {
    if (draftLines_.empty() || index < 0 || index >= static_cast<int>(draftLines_.size())) index = 0;
    if (index == editorLineIndex_) return;
    editorLineIndex_ = index;
    refreshRuleDraft();
}

void AppModel::setRuleNameIsAutomatic(bool on) {
    if (on == ruleNameIsAutomatic_) return;
    ruleNameIsAutomatic_ = on;
    refreshRuleDraft();
}

void AppModel::setDraftDestinationPath(const std::string& path) {
    if (path == draftDestinationPath_) return;
    draftDestinationPath_ = path;
    refreshRuleDraft();
}

void AppModel::setLineOverride(int index, const SortRule& rule) {
    if (index < 0 || index >= static_cast<int>(draftLines_.size())) return;
    lineOverrides_[index] = rule;
    if (index == editorLineIndex_) refreshRuleDraft();
}

void AppModel::refreshRuleDraft() {
    const std::optional<ParsedSort> previous = draftSort_;
    draftSort_.reset();
    draftError_.reset();
    draftUnrecognized_.clear();
    if (!draftLines_.empty()) {
        const PhraseReview& review = draftLines_[static_cast<size_t>(editorLineIndex_)].review;
        draftUnrecognized_ = review.unrecognized;
        if (!review.parsed) {
            // A marked word is explanation enough; the message is for sentences without one.
            if (draftUnrecognized_.empty()) draftError_ = review.message;
        } else {
            ParsedSort parsed = *review.parsed;
            const auto edited = lineOverrides_.find(editorLineIndex_);
            const bool isEdited = edited != lineOverrides_.end();
            if (isEdited) {
                parsed.rule = edited->second;
                parsed.needsFolder = false;
                parsed.chips = SortRuleParser::chips(parsed.rule);
            }
            if (!draftDestinationPath_.empty() && parsed.needsFolder) {
                parsed.rule.action = SortAction::moveToFolder(draftDestinationPath_);
                parsed.needsFolder = false;
                parsed.chips = SortRuleParser::chips(parsed.rule);
            }
            // A line the user edited keeps the name of that edit.
            if (ruleNameIsAutomatic_)
                parsed.rule.name = chipLine(parsed.rule);
            else if (!isEdited && previous && !previous->rule.name.empty())
                parsed.rule.name = previous->rule.name;
            draftSort_ = std::move(parsed);
        }
    }
    emit ruleDraftChanged();
}

QString AppModel::draftErrorText() const { return draftError_ ? q(*draftError_) : QString(); }

QVariantList AppModel::draftUnrecognizedList() const {
    QVariantList list;
    for (const auto& span : draftUnrecognized_)
        list.push_back(QVariantMap{{"text", q(span.text)}, {"start", span.start}, {"length", span.length}});
    return list;
}

QVariantMap AppModel::draftSortMap() const {
    if (!draftSort_) return {};
    const SortRule& rule = draftSort_->rule;
    QVariantList chips;
    for (const auto& chip : draftSort_->chips)
        chips.push_back(QVariantMap{{"id", q(chip.id)}, {"text", q(chip.text)}, {"systemImage", q(chip.systemImage)}});
    QVariantMap map{{"name", q(rule.name)},
                    {"phrase", q(rule.phrase)},
                    {"interpretation", q(draftSort_->interpretation)},
                    {"needsFolder", draftSort_->needsFolder},
                    {"summary", q(rule.plainSummary())},
                    {"chips", chips}};
    if (auto problem = rule.validationMessage()) map.insert("validationMessage", q(*problem));
    return map;
}

} // namespace bv
