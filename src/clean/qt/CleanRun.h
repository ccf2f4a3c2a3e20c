#pragma once
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "clean/Cleaner.h"
#include "clean/CleanupKinds.h"
#include "clean/CleanupNotice.h"
#include "clean/CleanupPlan.h"
#include "core/ActionLogEntry.h"
#include "foundation/CancellationFlag.h"
#include "space/SpaceHistory.h"

namespace bv {

struct FeatureContext;

// The preview sheet's state and the run of a Smart Clean: which entries are ticked, the
// progress of the run (phase, step, a fraction that only grows, the status line), the stop
// request, the History entries and the manifest, the free-space measurement and the notices.
// Lives on the GUI thread; each entry is applied by the Cleaner in a pool task of its own
// and the run waits for it, so at most one item is in flight and the window stays live.
class CleanRun : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The run belongs to AppModel.")
    Q_PROPERTY(bool hasPlan READ hasPlan NOTIFY planChanged)
    Q_PROPERTY(QVariantList entries READ entriesForQml NOTIFY planChanged)
    Q_PROPERTY(QStringList refusals READ refusalsForQml NOTIFY planChanged)
    Q_PROPERTY(QString selectedTotalText READ selectedTotalText NOTIFY planChanged)
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY planChanged)
    Q_PROPERTY(bool selectionHasPermanent READ selectionHasPermanent NOTIFY planChanged)
    Q_PROPERTY(QString sheetMode READ sheetMode NOTIFY planChanged)
    Q_PROPERTY(bool isSheetPresented READ isSheetPresented NOTIFY sheetPresentedChanged)
    Q_PROPERTY(QString phase READ phaseText NOTIFY progressChanged)
    Q_PROPERTY(int step READ step NOTIFY progressChanged)
    Q_PROPERTY(double fraction READ fraction NOTIFY progressChanged)
    Q_PROPERTY(QString statusLine READ statusLineForQml NOTIFY progressChanged)
    Q_PROPERTY(bool stopRequested READ stopRequested NOTIFY progressChanged)
    Q_PROPERTY(bool failed READ failed NOTIFY progressChanged)
    Q_PROPERTY(bool verifying READ verifying NOTIFY progressChanged)
    Q_PROPERTY(int trashLandings READ trashLandings NOTIFY trashLandingsChanged)
    // True from the end of a run until its sheet has closed: no new plan, no second confirm.
    Q_PROPERTY(bool closing READ closing NOTIFY progressChanged)
    // After a clean: what came back, measured; or that the Trash still holds it; or that it
    // is being measured. Empty before the first clean of this session.
    Q_PROPERTY(QString afterCleanLine READ afterCleanLine NOTIFY progressChanged)

public:
    enum class Phase { idle, running, success };

    // The waits of the run, shortened by tests.
    struct Timing {
        int closeAfterCleanMs = 1400;
        int closeAfterNothingMs = 200;
        int sampleEveryMs = 4000;
        int measureAtMostMs = 60000;
        int steadyAfterMs = 8000;
    };

    // Everything the run needs comes from the shared context: the home folder, the clock, the
    // volume reading, History, the settings, the messages, the cues and the notifications.
    explicit CleanRun(const FeatureContext& context, QObject* parent = nullptr);

    void setCleanerEnvironment(Cleaner::Environment env) { cleanerEnv_ = std::move(env); }
    void setTiming(Timing timing) { timing_ = timing; }

    // ---- the preview ----
    // The one way to open the clean-up preview. A plan with neither entries nor refusals
    // posts "Choose what to preview. Nothing is selected." and changes nothing (false), as
    // does any plan while a run is under way or its sheet is closing (false, silently).
    // Otherwise the plan is stored, every entry ticked, and the sheet opens in `mode` (true).
    // Observers hear of a plan only when its content changes.
    bool presentPlan(CleanupPlan plan, CleanupSheetMode mode = CleanupSheetMode::clean);
    Q_INVOKABLE void setEntryTicked(const QString& id, bool ticked);
    Q_INVOKABLE void dismissSheet(); // only when no run is under way

    // ---- the run ----
    // Does nothing without a plan, while a run is under way or while its sheet is closing.
    Q_INVOKABLE void confirm();
    Q_INVOKABLE void requestStop(); // only while running

    [[nodiscard]] const std::optional<CleanupPlan>& plan() const { return plan_; }
    [[nodiscard]] const std::set<std::string>& excluded() const { return excluded_; }
    [[nodiscard]] Phase phase() const { return phase_; }
    [[nodiscard]] int step() const { return step_; }
    [[nodiscard]] double fraction() const { return fraction_; }
    [[nodiscard]] const std::string& statusLine() const { return statusLine_; }
    [[nodiscard]] bool stopRequested() const { return stopRequested_; }
    [[nodiscard]] bool failed() const { return failed_; }
    [[nodiscard]] bool verifying() const { return verifying_; }
    [[nodiscard]] std::int64_t reclaimed() const { return reclaimed_; }
    [[nodiscard]] std::int64_t lastFreed() const { return lastFreed_; }
    [[nodiscard]] std::optional<std::int64_t> lastVerifiedFreed() const { return lastVerifiedFreed_; }
    [[nodiscard]] int trashLandings() const { return trashLandings_; }
    [[nodiscard]] bool isSheetPresented() const { return sheetPresented_; }
    [[nodiscard]] const std::optional<CleanupNotice>& deferredNotice() const { return deferredNotice_; }
    [[nodiscard]] std::shared_ptr<CancellationFlag> stopFlag() const { return stop_; }
    [[nodiscard]] CleanupSheetMode sheetModeValue() const { return mode_; }
    [[nodiscard]] const std::string& lastNotification() const { return lastNotification_; }

    [[nodiscard]] bool closing() const { return closing_; }
    [[nodiscard]] QString afterCleanLine() const;
    [[nodiscard]] bool hasPlan() const { return plan_.has_value(); }
    [[nodiscard]] QVariantList entriesForQml() const;
    [[nodiscard]] QStringList refusalsForQml() const;
    [[nodiscard]] QString selectedTotalText() const;
    [[nodiscard]] int selectedCount() const;
    [[nodiscard]] bool selectionHasPermanent() const;
    [[nodiscard]] QString sheetMode() const;
    [[nodiscard]] QString phaseText() const;
    [[nodiscard]] QString statusLineForQml() const { return QString::fromStdString(statusLine_); }

signals:
    void planChanged();
    void sheetPresentedChanged();
    void progressChanged();
    void trashLandingsChanged();
    void runFinished(); // after the sheet closed; the model refreshes and rescans
    // The two free-space messages, titled "Brimvale"; the notification router posts them.
    void notificationPosted(const QString& title, const QString& body);
    void measurementFinished(); // the model refreshes

private:
    struct Run {
        std::vector<CleanupEntry> entries;
        size_t next = 0;
        std::vector<ActionLogEntry> logs;
        std::vector<std::string> failures;
        std::vector<const CleanupEntry*> cleaned;
        bool landed = false;
        VolumeSnapshot baseline;
        std::int64_t estimate = 0;
    };

    void runNext();
    void finish();
    void startMeasurement(std::int64_t count, std::int64_t estimate, std::int64_t baselineFree);
    void closeSheetAndRefresh(bool cleanedSomething);
    void raiseFraction(double value);
    void setPhase(Phase p);
    void postNotice(const CleanupNotice& notice);
    void notify(const std::string& body);

    const FeatureContext& ctx_;
    bool closing_ = false;
    Timing timing_;
    Cleaner::Environment cleanerEnv_;
    std::optional<CleanupPlan> plan_;
    std::set<std::string> excluded_;
    CleanupSheetMode mode_ = CleanupSheetMode::clean;
    bool sheetPresented_ = false;
    Phase phase_ = Phase::idle;
    int step_ = 0;
    double fraction_ = 0;
    std::string statusLine_;
    bool stopRequested_ = false;
    bool failed_ = false;
    bool verifying_ = false;
    std::int64_t reclaimed_ = 0;
    std::int64_t lastFreed_ = 0;
    std::optional<std::int64_t> lastVerifiedFreed_;
    int trashLandings_ = 0;
    std::shared_ptr<CancellationFlag> stop_;
    std::optional<CleanupNotice> deferredNotice_;
    std::unique_ptr<Run> run_;
    std::string lastNotification_;
};

} // namespace bv
