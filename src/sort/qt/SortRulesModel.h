#pragma once
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sort/CleanupRule.h"
#include "sort/SortRule.h"
#include "sort/SortRuleParser.h"

namespace bv {

struct FeatureContext;

// Auto-Sort's rules and the rule editor's draft on the GUI thread: the older Downloads rules
// and the sort rules (both files written together), the one-time seeding of the default
// rule, and the editor: the text box, the chosen line, per-line edits and what the parser
// made of them.
class SortRulesModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Sort rules belong to AppModel.")
    Q_PROPERTY(QString draftPhrase READ draftPhraseText WRITE setDraftPhrase NOTIFY draftChanged)
    Q_PROPERTY(int editorLineIndex READ editorLineIndex WRITE setEditorLineIndex NOTIFY draftChanged)
    Q_PROPERTY(int editorLineCount READ editorLineCount NOTIFY draftChanged)
    Q_PROPERTY(bool ruleNameIsAutomatic READ ruleNameIsAutomatic WRITE setRuleNameIsAutomatic NOTIFY draftChanged)
    Q_PROPERTY(QString draftError READ draftErrorText NOTIFY draftChanged)
    Q_PROPERTY(QVariantList draftUnrecognized READ draftUnrecognizedList NOTIFY draftChanged)
    Q_PROPERTY(QVariantMap draftSort READ draftSortMap NOTIFY draftChanged)
    // "describe" (a sentence) or "build" (rows of conditions).
    Q_PROPERTY(QString inputMode READ inputMode WRITE setInputMode NOTIFY draftChanged)
    // "New Auto-Sort rule" or "Edit Auto-Sort rule".
    Q_PROPERTY(QString editorTitle READ editorTitle NOTIFY draftChanged)
    Q_PROPERTY(QString draftDestination READ draftDestinationText NOTIFY draftChanged)
    // One map per sort rule, in list order: id, name, summary, isEnabled, trigger, isOlder
    // (an older Downloads rule with the same id exists).
    Q_PROPERTY(QVariantList ruleRows READ ruleRows NOTIFY sortRulesChanged)

public:
    // Reads "rules-v2.json" and "rules.json" (a live model only).
    explicit SortRulesModel(const FeatureContext& context, QObject* parent = nullptr);

    // Offers the default sort rule once, after the stored rules are loaded. The flag is saved
    // first so a user who deletes the rule never gets it back.
    void seedDefaultRules();
    // Replaces the sort rule list and writes both rule files.
    void setSortRules(std::vector<SortRule> rules);

    [[nodiscard]] const std::vector<CleanupRule>& rules() const { return rules_; }
    [[nodiscard]] const std::vector<SortRule>& sortRules() const { return sortRules_; }

    [[nodiscard]] const std::string& draftPhrase() const { return draftPhrase_; }
    [[nodiscard]] QString draftPhraseText() const;
    void setDraftPhrase(const QString& text);
    [[nodiscard]] int editorLineIndex() const { return editorLineIndex_; }
    void setEditorLineIndex(int index);
    [[nodiscard]] int editorLineCount() const { return static_cast<int>(draftLines_.size()); }
    [[nodiscard]] bool ruleNameIsAutomatic() const { return ruleNameIsAutomatic_; }
    void setRuleNameIsAutomatic(bool on);
    [[nodiscard]] const std::string& draftDestinationPath() const { return draftDestinationPath_; }
    void setDraftDestinationPath(const std::string& path);
    // Keeps an edit of one line of a multi-line draft until the text changes.
    void setLineOverride(int index, const SortRule& rule);
    [[nodiscard]] const std::map<int, SortRule>& lineOverrides() const { return lineOverrides_; }
    [[nodiscard]] const std::vector<LineReview>& draftLines() const { return draftLines_; }
    [[nodiscard]] const std::optional<ParsedSort>& draftSort() const { return draftSort_; }
    [[nodiscard]] const std::optional<std::string>& draftError() const { return draftError_; }
    [[nodiscard]] const std::vector<PhraseSpan>& draftUnrecognized() const { return draftUnrecognized_; }
    [[nodiscard]] QString draftErrorText() const;
    [[nodiscard]] QVariantList draftUnrecognizedList() const;
    [[nodiscard]] QVariantMap draftSortMap() const;

    // ---- editing ---------------------------------------------------------------------
    // An empty editor for a new rule.
    Q_INVOKABLE void newDraft();
    // The saved rule in the editor, its sentence as the text and the rule itself as that
    // line's edit, so nothing of it is lost to a second reading.
    Q_INVOKABLE void editRule(const QString& id);
    [[nodiscard]] QString inputMode() const { return building_ ? QStringLiteral("build") : QStringLiteral("describe"); }
    void setInputMode(const QString& mode);
    [[nodiscard]] QString editorTitle() const;
    [[nodiscard]] QString draftDestinationText() const;
    // Drops the part of the draft a chip stands for.
    Q_INVOKABLE void removeChip(const QString& chipID);
    // "move", "trash", "archive" or "rename" (with its pattern).
    Q_INVOKABLE void setDraftAction(const QString& action, const QString& pattern = QString());
    // "whenAdded", "manual", "hourly", "daily" or "weekly".
    Q_INVOKABLE void setDraftTrigger(const QString& trigger);
    // The folder picker's answer; an empty path is a cancel.
    Q_INVOKABLE void chooseDraftFolder(const QString& path);
    // The build input: rows of {field, op, text, place} and "all" or "any". Rows whose text
    // is empty are left out.
    Q_INVOKABLE void buildDraft(const QVariantList& rows, const QString& match);
    // The draft's conditions as rows of the build input.
    Q_INVOKABLE QVariantList draftConditionRows() const;
    // "Save rule": every line of the text (or the built rule) becomes a rule; refused with the
    // first rule's validation message in draftError. True when saved (the editor then empties).
    Q_INVOKABLE bool saveDraft();
    Q_INVOKABLE void deleteRule(const QString& id);
    Q_INVOKABLE QString deleteExplanation(const QString& id) const;
    Q_INVOKABLE void setRuleEnabled(const QString& id, bool on);
    [[nodiscard]] QVariantList ruleRows() const;
    [[nodiscard]] const SortRule* sortRule(const QString& id) const;

signals:
    void sortRulesChanged();
    void draftChanged();

private:
    void refreshDraft();
    void save();
    template <class Edit> void editDraftRule(Edit edit);

    const FeatureContext& ctx_;
    std::vector<CleanupRule> rules_;
    std::vector<SortRule> sortRules_;
    std::string draftPhrase_;
    std::vector<LineReview> draftLines_;
    int editorLineIndex_ = 0;
    std::map<int, SortRule> lineOverrides_;
    std::string draftDestinationPath_;
    bool ruleNameIsAutomatic_ = true;
    std::optional<ParsedSort> draftSort_;
    std::optional<std::string> draftError_;
    std::vector<PhraseSpan> draftUnrecognized_;
    bool building_ = false;
    std::optional<SortRule> builtRule_;
    std::optional<Uuid> editingRuleID_;
};

} // namespace bv
