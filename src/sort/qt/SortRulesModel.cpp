#include "sort/qt/SortRulesModel.h"

#include <QStringList>
#include <QVariantMap>

#include <algorithm>

#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "sort/PlannedAction.h"
#include "sort/SortRuleStore.h"
#include "sort/SortScreenTexts.h"

namespace bv {
namespace {

bool moveWithoutFolder(const SortRule& rule) {
    return rule.action.type == SortAction::Type::moveToFolder && rule.action.argument.empty();
}

QString actionKey(const SortAction& action) {
    switch (action.type) {
    case SortAction::Type::moveToFolder: return QStringLiteral("move");
    case SortAction::Type::rename: return QStringLiteral("rename");
    case SortAction::Type::trash: return QStringLiteral("trash");
    case SortAction::Type::archive: return QStringLiteral("archive");
    }
    return {};
}

QString triggerKey(const SortTrigger& trigger) {
    switch (trigger.type) {
    case SortTrigger::Type::whenAdded: return QStringLiteral("whenAdded");
    case SortTrigger::Type::manual: return QStringLiteral("manual");
    case SortTrigger::Type::schedule: return q(std::string(cleanScheduleName(trigger.schedule)));
    }
    return {};
}

QStringList qList(const std::vector<std::string>& texts) {
    QStringList out;
    for (const auto& t : texts) out << q(t);
    return out;
}

// One row of the build input as the condition it stands for; nothing for an empty text.
std::optional<SortCondition> conditionFromRow(const QVariantMap& row) {
    const QString field = row.value("field").toString();
    const QString op = row.value("op").toString();
    std::string text = row.value("text").toString().trimmed().toStdString();
    using T = SortCondition::Type;
    if (field == "location")
        return SortCondition::location(row.value("place").toString() == "desktop" ? SortPlace::desktop : SortPlace::downloads);
    if (text.empty()) return std::nullopt;
    if (field == "name") {
        const T type = op == "beginsWith" ? T::nameStartsWith : op == "endsWith" ? T::nameEndsWith
                     : op == "equals"     ? T::nameEquals     : T::nameContains;
        return SortCondition::text(type, text);
    }
    if (field == "fileExtension") {
        while (!text.empty() && text.front() == '.') text.erase(text.begin());
        return SortCondition::fileExtension(QString::fromStdString(text).toLower().toStdString());
    }
    if (field == "kind") return SortCondition::kindIs(QString::fromStdString(text).toLower().toStdString());
    if (field == "downloadSource") return SortCondition::downloadSource(text);
    bool ok = false;
    const double number = QString::fromStdString(text).toDouble(&ok);
    if (!ok || number < 0) return std::nullopt;
    if (field == "size") return SortCondition::minimumBytes(static_cast<std::int64_t>(number * 1'000'000)); // in MB
    if (field == "age") return SortCondition::olderThanDays(static_cast<std::int64_t>(number));
    return std::nullopt;
}

QVariantMap rowFromCondition(const SortCondition& c) {
    using T = SortCondition::Type;
    const auto row = [](const char* field, const char* op, const QString& text) {
        return QVariantMap{{"field", field}, {"op", op}, {"text", text}, {"place", "downloads"}};
    };
    switch (c.type) {
    case T::kind: return row("kind", "is", q(c.value));
    case T::fileExtension: return row("fileExtension", "is", q(c.value));
    case T::nameStartsWith: return row("name", "beginsWith", q(c.value));
    case T::nameContains: return row("name", "contains", q(c.value));
    case T::nameEndsWith: return row("name", "endsWith", q(c.value));
    case T::nameEquals: return row("name", "equals", q(c.value));
    case T::olderThanDays: return row("age", "olderThan", QString::number(c.number));
    case T::minimumBytes: return row("size", "biggerThan", QString::number(static_cast<double>(c.number) / 1e6));
    case T::downloadSource: return row("downloadSource", "contains", q(c.value));
    case T::location: {
        QVariantMap m = row("location", "is", QString());
        m["place"] = c.place == SortPlace::desktop ? "desktop" : "downloads";
        return m;
    }
    }
    return {};
}

} // namespace

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
    if (building_) {
        if (builtRule_) {
            ParsedSort built{*builtRule_, SortRuleParser::chips(*builtRule_), moveWithoutFolder(*builtRule_), {}};
            if (ruleNameIsAutomatic_) built.rule.name = built.rule.phrase = chipLine(built.rule);
            built.interpretation = built.rule.plainSummary();
            draftSort_ = std::move(built);
        }
    } else if (!draftLines_.empty()) {
        const PhraseReview& review = draftLines_[static_cast<size_t>(editorLineIndex_)].review;
        draftUnrecognized_ = review.unrecognized;
        const auto edited = lineOverrides_.find(editorLineIndex_);
        const bool isEdited = edited != lineOverrides_.end();
        if (!review.parsed && !isEdited) {
            // A marked word is explanation enough; the message is for sentences without one.
            if (draftUnrecognized_.empty()) draftError_ = review.message;
        } else {
            // A line edited by hand (or a rule taken in whole) stands even where the sentence
            // alone would not parse.
            ParsedSort parsed = review.parsed ? *review.parsed : ParsedSort{edited->second, {}, false, edited->second.plainSummary()};
            if (isEdited) {
                parsed.rule = edited->second;
                parsed.needsFolder = moveWithoutFolder(parsed.rule);
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
                    {"chips", chips},
                    {"action", actionKey(rule.action)},
                    {"pattern", rule.action.type == SortAction::Type::rename ? q(rule.action.argument) : QString()},
                    {"trigger", triggerKey(rule.trigger)},
                    {"match", q(matchModeName(rule.match))},
                    {"place", q(placeNameFor(rule))},
                    {"isArrival", rule.trigger.type == SortTrigger::Type::whenAdded},
                    {"namesFiles", SortScreenTexts::namesFiles(rule)},
                    {"notes", qList(SortScreenTexts::editorNotes(rule))}};
    if (auto problem = rule.validationMessage()) map.insert("validationMessage", q(*problem));
    return map;
}

// ---- editing and saving --------------------------------------------------------------------

template <class Edit> void SortRulesModel::editDraftRule(Edit edit) {
    if (!draftSort_) return;
    SortRule rule = draftSort_->rule;
    edit(rule);
    if (building_) {
        builtRule_ = std::move(rule);
        refreshDraft();
    } else {
        setLineOverride(editorLineIndex_, rule);
    }
}

void SortRulesModel::newDraft() {
    editingRuleID_.reset();
    builtRule_.reset();
    building_ = false;
    draftDestinationPath_.clear();
    ruleNameIsAutomatic_ = true;
    draftPhrase_ = "\n"; // differs from any text, so the next line always resets
    setDraftPhrase(QString());
}

void SortRulesModel::editRule(const QString& id) {
    const SortRule* found = sortRule(id);
    if (!found) return;
    const SortRule rule = *found;
    newDraft();
    editingRuleID_ = rule.id;
    ruleNameIsAutomatic_ = false;
    if (rule.action.type == SortAction::Type::moveToFolder) draftDestinationPath_ = rule.action.argument;
    setDraftPhrase(q(rule.phrase.empty() ? rule.name : rule.phrase));
    if (draftLines_.empty()) {
        // A rule without a sentence (built by rows) is edited as rows.
        building_ = true;
        builtRule_ = rule;
        refreshDraft();
    } else {
        setLineOverride(0, rule);
    }
}

void SortRulesModel::setInputMode(const QString& mode) {
    const bool build = mode == "build";
    if (build == building_) return;
    if (build) {
        SortRule seed = draftSort_ ? draftSort_->rule : SortRule{};
        if (!draftSort_) {
            seed.id = Uuid::generate();
            seed.createdAt = ctx_.clock.now();
            seed.action = SortAction::moveToFolder(draftDestinationPath_);
            seed.trigger = SortTrigger::whenAdded();
        }
        builtRule_ = std::move(seed);
    }
    building_ = build;
    refreshDraft();
}

QString SortRulesModel::editorTitle() const {
    return editingRuleID_ ? QStringLiteral("Edit Auto-Sort rule") : QStringLiteral("New Auto-Sort rule");
}

QString SortRulesModel::draftDestinationText() const { return q(draftDestinationPath_); }

void SortRulesModel::removeChip(const QString& chipID) {
    const std::string id = chipID.toStdString();
    editDraftRule([&](SortRule& rule) { rule = SortRuleParser::removingChip(id, rule); });
}

void SortRulesModel::setDraftAction(const QString& action, const QString& pattern) {
    editDraftRule([&](SortRule& rule) {
        if (action == "move") rule.action = SortAction::moveToFolder(draftDestinationPath_);
        else if (action == "trash") rule.action = SortAction::trash();
        else if (action == "archive") rule.action = SortAction::archive();
        else if (action == "rename")
            rule.action = SortAction::rename(pattern.isNull() ? std::string("{date}-{name}") : pattern.toStdString());
    });
}

void SortRulesModel::setDraftTrigger(const QString& trigger) {
    editDraftRule([&](SortRule& rule) {
        if (trigger == "whenAdded") rule.trigger = SortTrigger::whenAdded();
        else if (trigger == "manual") rule.trigger = SortTrigger::manual();
        else if (auto s = cleanScheduleFromName(trigger.toStdString())) rule.trigger = SortTrigger::scheduled(*s);
    });
}

void SortRulesModel::chooseDraftFolder(const QString& path) {
    if (path.isEmpty()) return;
    const std::string folder = path.toStdString();
    draftDestinationPath_ = folder;
    if (draftSort_ && draftSort_->rule.action.type == SortAction::Type::moveToFolder)
        editDraftRule([&](SortRule& rule) { rule.action = SortAction::moveToFolder(folder); });
    else
        refreshDraft();
}

void SortRulesModel::buildDraft(const QVariantList& rows, const QString& match) {
    if (!building_) return;
    SortRule rule = builtRule_.value_or(SortRule{});
    rule.conditions.clear();
    for (const QVariant& row : rows)
        if (auto c = conditionFromRow(row.toMap())) rule.conditions.push_back(std::move(*c));
    rule.match = match == "any" ? MatchMode::any : MatchMode::all;
    if (rule == builtRule_) return;
    builtRule_ = std::move(rule);
    refreshDraft();
}

QVariantList SortRulesModel::draftConditionRows() const {
    QVariantList rows;
    if (draftSort_)
        for (const auto& c : draftSort_->rule.conditions) rows << rowFromCondition(c);
    return rows;
}

bool SortRulesModel::saveDraft() {
    std::vector<SortRule> made;
    std::optional<std::string> refusal;
    if (building_) {
        if (draftSort_) made.push_back(draftSort_->rule);
    } else {
        for (const LineReview& line : draftLines_) {
            // The line on show is taken as shown: its edits, its folder and its name.
            if (line.index == editorLineIndex_ && draftSort_) {
                made.push_back(draftSort_->rule);
                continue;
            }
            const auto edited = lineOverrides_.find(line.index);
            if (edited != lineOverrides_.end()) {
                made.push_back(edited->second);
                if (ruleNameIsAutomatic_) made.back().name = chipLine(made.back());
                continue;
            }
            if (!line.review.parsed) {
                refusal = line.review.message.value_or("Say which files, with an extension, a name, or a kind.");
                setEditorLineIndex(line.index);
                break;
            }
            SortRule rule = line.review.parsed->rule;
            if (line.review.parsed->needsFolder && !draftDestinationPath_.empty())
                rule.action = SortAction::moveToFolder(draftDestinationPath_);
            rule.name = chipLine(rule);
            made.push_back(std::move(rule));
        }
    }
    if (made.empty() && !refusal) refusal = "Say which files, with an extension, a name, or a kind.";
    for (std::size_t i = 0; i < made.size() && !refusal; ++i)
        if (auto problem = made[i].validationMessage()) {
            refusal = problem;
            if (!building_ && i < draftLines_.size()) setEditorLineIndex(draftLines_[i].index);
        }
    if (refusal) {
        draftError_ = refusal;
        emit draftChanged();
        return false;
    }
    std::vector<SortRule> rules = sortRules_;
    const TimePoint now = ctx_.clock.now();
    for (std::size_t i = 0; i < made.size(); ++i) {
        SortRule& rule = made[i];
        rule.kind = SortRuleKind::sort;
        const auto existing = editingRuleID_ && i == 0
            ? std::find_if(rules.begin(), rules.end(), [&](const SortRule& r) { return r.id == *editingRuleID_; })
            : rules.end();
        if (existing != rules.end()) {
            rule.id = existing->id;
            // A rule whose trigger stays keeps its birth: "when a file arrives" acts on what came after it.
            rule.createdAt = existing->trigger == rule.trigger ? existing->createdAt : now;
            if (!(existing->trigger == rule.trigger)) rule.nextRun.reset();
            *existing = std::move(rule);
        } else {
            rule.id = Uuid::generate();
            rule.createdAt = now; // files that land from now on
            rule.nextRun.reset();
            rules.push_back(std::move(rule));
        }
    }
    newDraft();
    setSortRules(std::move(rules));
    return true;
}

void SortRulesModel::deleteRule(const QString& id) {
    std::vector<SortRule> rules = sortRules_;
    std::erase_if(rules, [&](const SortRule& r) { return q(r.id.text()) == id; });
    if (editingRuleID_ && q(editingRuleID_->text()) == id) newDraft();
    setSortRules(std::move(rules));
}

QString SortRulesModel::deleteExplanation(const QString& id) const {
    const SortRule* rule = sortRule(id);
    return rule ? q(SortScreenTexts::deleteExplanation(*rule)) : QString();
}

void SortRulesModel::setRuleEnabled(const QString& id, bool on) {
    std::vector<SortRule> rules = sortRules_;
    for (SortRule& r : rules)
        if (q(r.id.text()) == id) r.isEnabled = on;
    setSortRules(std::move(rules));
}

const SortRule* SortRulesModel::sortRule(const QString& id) const {
    const auto found = std::find_if(sortRules_.begin(), sortRules_.end(), [&](const SortRule& r) { return q(r.id.text()) == id; });
    return found != sortRules_.end() ? &*found : nullptr;
}

QVariantList SortRulesModel::ruleRows() const {
    QVariantList rows;
    for (const SortRule& rule : sortRules_) {
        if (rule.kind != SortRuleKind::sort) continue;
        const bool older = std::any_of(rules_.begin(), rules_.end(), [&](const CleanupRule& c) { return c.id == rule.id; });
        rows << QVariantMap{{"id", q(rule.id.text())},
                            {"name", q(rule.name.empty() ? rule.phrase : rule.name)},
                            {"summary", q(rule.plainSummary())},
                            {"isEnabled", rule.isEnabled},
                            {"trigger", q(rule.trigger.displayText())},
                            {"isOlder", older}};
    }
    return rows;
}

} // namespace bv
