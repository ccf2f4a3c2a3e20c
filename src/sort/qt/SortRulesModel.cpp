#include "sort/qt/SortRulesModel.h"

#include <QVariantMap>

#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "sort/SortRuleStore.h"

namespace bv {

SortRulesModel::SortRulesModel(const FeatureContext& context, QObject* parent) : QObject(parent), ctx_(context) {
    if (!ctx_.live) return;
    LoadedSortRules loaded = loadSortRuleFiles(ctx_.store, ctx_.clock.now());
    rules_ = std::move(loaded.cleanupRules);
    sortRules_ = std::move(loaded.sortRules);
}

void SortRulesModel::save() {
    if (ctx_.live) saveSortRuleFiles(ctx_.store, sortRules_, rules_);
    rules_ = cleanupRulesForSaving(sortRules_, rules_);
}

void SortRulesModel::seedDefaultRules() {
    SeedOutcome outcome;
    ctx_.settings.update([&](BrimvaleSettings& s) {
        outcome = seedDefaultSortRule(s, sortRules_, ctx_.clock.now(), ctx_.calendar);
    });
    if (!outcome.rulesChanged) return;
    save();
    emit sortRulesChanged();
}

void SortRulesModel::setSortRules(std::vector<SortRule> rules) {
    if (rules == sortRules_) return;
    sortRules_ = std::move(rules);
    save();
    emit sortRulesChanged();
}

// ---- the sort rule editor -----------------------------------------------------------------

QString SortRulesModel::draftPhraseText() const { return q(draftPhrase_); }

void SortRulesModel::setDraftPhrase(const QString& text) {
    const std::string phrase = text.toStdString();
    if (phrase == draftPhrase_) return;
    draftPhrase_ = phrase;
    lineOverrides_.clear();
    draftLines_ = SortRuleParser::reviewLines(draftPhrase_, ctx_.clock.now());
    // The chosen line survives while it still exists; otherwise the first line is chosen.
    if (draftLines_.empty() || editorLineIndex_ >= static_cast<int>(draftLines_.size()) || editorLineIndex_ < 0)
        editorLineIndex_ = 0;
    refreshDraft();
}

void SortRulesModel::setEditorLineIndex(int index) {
    if (draftLines_.empty() || index < 0 || index >= static_cast<int>(draftLines_.size())) index = 0;
    if (index == editorLineIndex_) return;
    editorLineIndex_ = index;
    refreshDraft();
}

void SortRulesModel::setRuleNameIsAutomatic(bool on) {
    if (on == ruleNameIsAutomatic_) return;
    ruleNameIsAutomatic_ = on;
    refreshDraft();
}

void SortRulesModel::setDraftDestinationPath(const std::string& path) {
    if (path == draftDestinationPath_) return;
    draftDestinationPath_ = path;
    refreshDraft();
}

void SortRulesModel::setLineOverride(int index, const SortRule& rule) {
    if (index < 0 || index >= static_cast<int>(draftLines_.size())) return;
    lineOverrides_[index] = rule;
    if (index == editorLineIndex_) refreshDraft();
}

void SortRulesModel::refreshDraft() {
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
    emit draftChanged();
}

QString SortRulesModel::draftErrorText() const { return draftError_ ? q(*draftError_) : QString(); }

QVariantList SortRulesModel::draftUnrecognizedList() const {
    QVariantList list;
    for (const auto& span : draftUnrecognized_)
        list.push_back(QVariantMap{{"text", q(span.text)}, {"start", span.start}, {"length", span.length}});
    return list;
}

QVariantMap SortRulesModel::draftSortMap() const {
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
