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

signals:
    void sortRulesChanged();
    void draftChanged();

private:
    void refreshDraft();
    void save();

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
};

} // namespace bv
