#pragma once
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/Uuid.h"
#include "sort/FileSample.h"
#include "sort/PlannedAction.h"
#include "sort/RuleRunEngine.h"
#include "sort/RuleSuggestions.h"
#include "sort/SortRule.h"

namespace bv {

struct FeatureContext;
class SortRulesModel;

// Auto-Sort at work, on the GUI thread: the run preview (of the editor's draft, of saved
// rules, or of one older Downloads rule) and its confirmed run, the automatic runs on the
// clock's tick, the files the rules could tidy now (match counts, suggestions, and what the
// draft would touch). Reads its rules from the SortRulesModel beside it and writes them back
// there (a scheduled rule's next run). Folders are listed and files moved in pool tasks on
// plain copies; results come back here and are dropped when `previewToken` moved on.
class AutoSortModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Auto-Sort belongs to AppModel.")
    // "" (no preview), "draft" or "runSaved".
    Q_PROPERTY(QString previewMode READ previewMode NOTIFY previewChanged)
    Q_PROPERTY(bool isPreviewing READ isPreviewing NOTIFY previewChanged)
    Q_PROPERTY(bool hasSimulation READ hasSimulation NOTIFY previewChanged)
    // One map per planned step: id, fileName, summary, detail, symbolName, ticked.
    Q_PROPERTY(QVariantList previewActions READ previewActions NOTIFY previewChanged)
    Q_PROPERTY(QStringList previewWarnings READ previewWarnings NOTIFY previewChanged)
    // The text under the preview ("1.2 MB would move to the Trash. …").
    Q_PROPERTY(QString previewFootnote READ previewFootnote NOTIFY previewChanged)
    // "No files in Downloads match right now. New ones will when they arrive." for an empty preview.
    Q_PROPERTY(QString emptyPreviewText READ emptyPreviewText NOTIFY previewChanged)
    Q_PROPERTY(QString confirmQuestion READ confirmQuestion NOTIFY previewChanged)
    Q_PROPERTY(bool canRun READ canRun NOTIFY previewChanged)
    Q_PROPERTY(bool isRunningRules READ isRunningRules NOTIFY previewChanged)
    Q_PROPERTY(QString ruleRunSuccess READ ruleRunSuccess NOTIFY previewChanged)
    Q_PROPERTY(QStringList ruleRunErrors READ ruleRunErrors NOTIFY previewChanged)
    Q_PROPERTY(bool sortAutoRunInFlight READ sortAutoRunInFlight NOTIFY autoRunChanged)
    // The list: rule id to its count, the top line, the suggestions shown.
    Q_PROPERTY(QVariantMap matchCounts READ matchCountsMap NOTIFY samplesChanged)
    Q_PROPERTY(QString tidyCountLine READ tidyCountLine NOTIFY samplesChanged)
    // One map per suggestion: id, title, evidence, bytesText, fileCount.
    Q_PROPERTY(QVariantList suggestions READ suggestionsList NOTIFY samplesChanged)
    // What the draft would touch now: rows {name, detail} (at most 50), their count, and
    // whether Downloads could be read at all.
    Q_PROPERTY(QVariantList touchRows READ touchRows NOTIFY touchChanged)
    Q_PROPERTY(int touchCount READ touchCount NOTIFY touchChanged)
    Q_PROPERTY(bool downloadsReadable READ downloadsReadable NOTIFY samplesChanged)

public:
    AutoSortModel(const FeatureContext& context, SortRulesModel& rules, QObject* parent = nullptr);

    // ---- the run preview ----------------------------------------------------------------
    // Previews the given saved rules (all enabled sort rules when empty).
    Q_INVOKABLE void startPreview(const QStringList& ruleIDs = {});
    Q_INVOKABLE void previewDraft();
    // The preview of one older Downloads rule by its id.
    Q_INVOKABLE void previewRule(const QString& cleanupRuleID);
    Q_INVOKABLE void clearPreview();
    Q_INVOKABLE void setActionTicked(const QString& actionID, bool ticked);
    // The confirmed run: every ticked step is checked again against the disk, in a pool task.
    // Refused (false) when the preview no longer fits what it was made of.
    Q_INVOKABLE bool runPreview();

    // ---- the list -----------------------------------------------------------------------
    // Lists Downloads and the Desktop again (in the background), then the counts, the
    // suggestions and the draft's matches follow.
    Q_INVOKABLE void refreshSamples();
    Q_INVOKABLE void dismissSuggestion(const QString& id);
    // The suggested rule goes to the editor as a draft.
    Q_INVOKABLE void useSuggestion(const QString& id);

    // ---- the automatic runs ---------------------------------------------------------------
    // The tick's check: the due rules run unless a preview is open, a run or an automatic run
    // is under way, or `busyElsewhere` says the clean-up is running.
    void runDue();
    void setBusyElsewhere(std::function<bool()> busy) { busyElsewhere_ = std::move(busy); }

    [[nodiscard]] QString previewMode() const;
    [[nodiscard]] bool isPreviewing() const { return isPreviewing_; }
    [[nodiscard]] bool hasSimulation() const { return simulation_.has_value(); }
    [[nodiscard]] const std::optional<SimulationResult>& simulation() const { return simulation_; }
    [[nodiscard]] const std::string& simulationFingerprint() const { return fingerprint_; }
    [[nodiscard]] const Uuid& previewToken() const { return previewToken_; }
    [[nodiscard]] QVariantList previewActions() const;
    [[nodiscard]] QStringList previewWarnings() const;
    [[nodiscard]] QString previewFootnote() const;
    [[nodiscard]] QString emptyPreviewText() const;
    [[nodiscard]] QString confirmQuestion() const;
    [[nodiscard]] bool canRun() const;
    [[nodiscard]] bool isRunningRules() const { return isRunningRules_; }
    [[nodiscard]] QString ruleRunSuccess() const;
    [[nodiscard]] QStringList ruleRunErrors() const;
    [[nodiscard]] bool sortAutoRunInFlight() const { return autoRunInFlight_; }
    [[nodiscard]] const std::map<std::string, std::int64_t>& sortMatchCounts() const { return matchCounts_; }
    [[nodiscard]] QVariantMap matchCountsMap() const;
    [[nodiscard]] QString tidyCountLine() const;
    [[nodiscard]] const std::vector<RuleSuggestion>& sortSuggestions() const { return suggestions_; }
    [[nodiscard]] QVariantList suggestionsList() const;
    [[nodiscard]] QVariantList touchRows() const;
    [[nodiscard]] int touchCount() const { return static_cast<int>(touching_.size()); }
    [[nodiscard]] bool downloadsReadable() const { return downloadsReadable_; }

signals:
    void previewChanged();
    void autoRunChanged();
    void samplesChanged();
    void touchChanged();
    // Files moved (a run or an automatic run): the folder lists are worth reading again.
    void filesChanged();
    // An automatic run ended (for tests).
    void autoRunFinished();

private:
    enum class Mode { none, draft, runSaved };
    void beginPreview(Mode mode, std::vector<SortRule> rules, std::string fingerprint,
                      std::optional<Uuid> olderRule = std::nullopt);
    void finishRun(const ApplyOutcome& outcome);
    void afterRulesChanged();
    void recount();
    void retouch();
    [[nodiscard]] std::string currentFingerprint() const;
    [[nodiscard]] RuleRunEngine engine() const;
    [[nodiscard]] std::string downloads() const;
    [[nodiscard]] std::string desktop() const;

    const FeatureContext& ctx_;
    SortRulesModel& rules_;
    std::function<bool()> busyElsewhere_;

    Mode mode_ = Mode::none;
    std::optional<SimulationResult> simulation_;
    std::string fingerprint_;
    std::vector<SortRule> previewSortRules_;
    std::optional<Uuid> previewCleanupRule_; // the older rule being previewed
    std::set<Uuid> excluded_;
    Uuid previewToken_ = Uuid::generate();
    bool isPreviewing_ = false;
    bool isRunningRules_ = false;
    std::optional<ApplyOutcome> lastRun_;
    bool autoRunInFlight_ = false;

    std::vector<FileSample> samples_; // settled files of Downloads and the Desktop
    Uuid samplesToken_ = Uuid::generate();
    bool downloadsReadable_ = true;
    std::map<std::string, std::int64_t> matchCounts_;
    std::vector<RuleSuggestion> suggestions_;
    std::vector<FileSample> touching_; // what the draft matches now
};

} // namespace bv
