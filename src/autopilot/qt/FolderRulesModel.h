#pragma once
#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <vector>

#include "autopilot/FolderRuleDraft.h"
#include "autopilot/FolderWatchRule.h"

namespace bv {

struct FeatureContext;

// Autopilot's folder rules ("folder-rules.json") and the builder's draft, on the GUI thread.
// The draft starts with the default schedule from the settings and follows it when it changes.
class FolderRulesModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Folder rules belong to AppModel.")

public:
    explicit FolderRulesModel(const FeatureContext& context, QObject* parent = nullptr);

    void setFolderRules(std::vector<FolderWatchRule> rules);
    [[nodiscard]] const std::vector<FolderWatchRule>& folderRules() const { return rules_; }
    [[nodiscard]] const FolderRuleDraft& folderDraft() const { return draft_; }

signals:
    void folderRulesChanged();
    void draftChanged();

private:
    const FeatureContext& ctx_;
    std::vector<FolderWatchRule> rules_;
    FolderRuleDraft draft_ = FolderRuleDraft::fresh();
};

} // namespace bv
