#pragma once
#include <QObject>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

#include "autopilot/FolderRuleDraft.h"
#include "autopilot/FolderWatchRule.h"
#include "foundation/Uuid.h"

namespace bv {

struct FeatureContext;
struct AutopilotRunResult;

// Autopilot's folder rules ("folder-rules.json") and the builder's draft, on the GUI thread.
// The draft starts with the default schedule from the settings and follows it when it changes.
//
// The builder previews through the shared sheet in `saveFolderRule` mode; "Confirm Rule" saves
// the rule with the figures of that preview as its bound. On each tick the due rules get their
// next run at once (and the list is saved) before a run lists and cleans them in a pool task;
// "Run now" takes the same road for one rule. One run at a time: a tick during a run does nothing.
class FolderRulesModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Folder rules belong to AppModel.")
    Q_PROPERTY(QVariantList rules READ rulesForQml NOTIFY folderRulesChanged)
    Q_PROPERTY(QString countText READ countText NOTIFY folderRulesChanged)
    Q_PROPERTY(QVariantMap draft READ draftForQml NOTIFY draftChanged)
    Q_PROPERTY(bool running READ running NOTIFY runningChanged)

public:
    explicit FolderRulesModel(const FeatureContext& context, QObject* parent = nullptr);

    void setFolderRules(std::vector<FolderWatchRule> rules);
    [[nodiscard]] const std::vector<FolderWatchRule>& folderRules() const { return rules_; }
    [[nodiscard]] const FolderRuleDraft& folderDraft() const { return draft_; }

    // The builder. A kept-safe folder is refused on the error line and not taken.
    Q_INVOKABLE void chooseFolder(const QString& path);
    // Reads the sentence into the controls, or keeps them and shows the parser's message.
    Q_INVOKABLE void setSentence(const QString& phrase);
    // One control: "namesText", "extensionsText", "glob", "minimumAgeDays", "keepNewest",
    // "useAge", "useKeepNewest", "directoriesOnly", "includeSubfolders", "permanent", "schedule".
    Q_INVOKABLE void setDraftField(const QString& key, const QVariant& value);
    Q_INVOKABLE void editRule(int index);
    // "Continue to Preview": the checks, then the plan in a pool task, then the sheet.
    Q_INVOKABLE void continueToPreview();
    // "Confirm Rule" of the sheet in saveFolderRule mode.
    Q_INVOKABLE void confirmRule();
    Q_INVOKABLE void runNow(int index);
    Q_INVOKABLE void removeRule(int index);

    [[nodiscard]] QVariantList rulesForQml() const;
    [[nodiscard]] QString countText() const;
    [[nodiscard]] QVariantMap draftForQml() const;
    [[nodiscard]] bool running() const { return running_; }

signals:
    void folderRulesChanged();
    void draftChanged();
    void runningChanged();

private:
    void runDue();
    void startRun(std::vector<FolderWatchRule> rules);
    void setDraft(FolderRuleDraft draft);

    const FeatureContext& ctx_;
    std::vector<FolderWatchRule> rules_;
    FolderRuleDraft draft_ = FolderRuleDraft::fresh();
    std::optional<Uuid> editing_;
    Uuid previewToken_;
    std::optional<std::pair<std::int64_t, std::int64_t>> previewed_; // count and bytes the sheet shows
    bool running_ = false;
};

} // namespace bv
