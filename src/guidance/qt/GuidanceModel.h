#pragma once
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <cstdint>
#include <functional>

#include "core/qt/FeatureContext.h"
#include "guidance/Celebration.h"
#include "guidance/CueEngine.h"
#include "guidance/FirstRunFlow.h"
#include "guidance/TourPlayer.h"

namespace bv {

class KeyedListModel;
class SoundOutput;

// Guidance: the one-line cue of the current screen, the sounds every feature asks for through
// the cue bus, the celebration after a clean, the first run's sheet and the feature tour.
// GUI thread only; the first run's scan and clean run in the background with plain copies.
//
// It knows no other feature: what a cue reads comes from a context source the model wires in
// (setCueContextSource), and the model follows `cleanupPreviewRequested` and
// `firstRunClosed`.
class GuidanceModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Guidance belongs to AppModel.")
    Q_MOC_INCLUDE("core/qt/KeyedListModel.h")
    // The cue line: the key ("" for none), its text and its button's title ("" for none).
    Q_PROPERTY(QString activeCue READ activeCue NOTIFY activeCueChanged)
    Q_PROPERTY(QString cueText READ cueTextForQml NOTIFY activeCueChanged)
    Q_PROPERTY(QString cueButton READ cueButton NOTIFY activeCueChanged)
    // "none", "spark" or "confetti"; the id changes with every new celebration.
    Q_PROPERTY(QString celebration READ celebrationText NOTIFY celebrationChanged)
    Q_PROPERTY(int celebrationID READ celebrationID NOTIFY celebrationChanged)
    Q_PROPERTY(int celebrationMilliseconds READ celebrationMilliseconds CONSTANT)
    Q_PROPERTY(bool reducedMotion READ reducedMotion CONSTANT)
    // First run.
    Q_PROPERTY(bool isOnboardingPresented READ isOnboardingPresented NOTIFY firstRunChanged)
    Q_PROPERTY(QString firstRunStep READ firstRunStep NOTIFY firstRunChanged)
    Q_PROPERTY(bool firstRunScanning READ firstRunScanning NOTIFY firstRunChanged)
    Q_PROPERTY(bool firstRunScanDone READ firstRunScanDone NOTIFY firstRunChanged)
    Q_PROPERTY(bool firstRunCleaning READ firstRunCleaning NOTIFY firstRunChanged)
    Q_PROPERTY(bool firstRunCleanDone READ firstRunCleanDone NOTIFY firstRunChanged)
    Q_PROPERTY(QString firstRunNote READ firstRunNote NOTIFY firstRunChanged)
    Q_PROPERTY(QVariantList firstRunTotals READ firstRunTotals NOTIFY firstRunChanged)
    Q_PROPERTY(QString firstRunSummary READ firstRunSummary NOTIFY firstRunChanged)
    Q_PROPERTY(QString firstRunCleanSummary READ firstRunCleanSummary NOTIFY firstRunChanged)
    Q_PROPERTY(bool fullDiskAccessGranted READ fullDiskAccessGranted NOTIFY firstRunChanged)
    // The steps' fixed texts by name ("welcomeTitle", "scanTitle", ...), worded for this desktop.
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)
    Q_PROPERTY(bv::KeyedListModel* firstRunItems READ firstRunItems CONSTANT)
    Q_PROPERTY(int firstRunSelectedCount READ firstRunSelectedCount NOTIFY firstRunChanged)
    // The tour.
    Q_PROPERTY(bool isTourPresented READ isTourPresented NOTIFY tourChanged)
    Q_PROPERTY(QString tourMode READ tourMode NOTIFY tourChanged)
    Q_PROPERTY(int tourIndex READ tourIndex NOTIFY tourChanged)
    Q_PROPERTY(int tourSlideCount READ tourSlideCount CONSTANT)
    Q_PROPERTY(QString tourScene READ tourScene NOTIFY tourChanged)
    Q_PROPERTY(QString tourTitle READ tourTitle NOTIFY tourChanged)
    Q_PROPERTY(QString tourText READ tourText NOTIFY tourChanged)
    Q_PROPERTY(QString tourForwardTitle READ tourForwardTitle NOTIFY tourChanged)
    Q_PROPERTY(bool tourCanGoForward READ tourCanGoForward NOTIFY tourChanged)
    Q_PROPERTY(QString tourFooter READ tourFooter NOTIFY tourChanged)
    Q_PROPERTY(QString tourAccessibleDescription READ tourAccessibleDescription NOTIFY tourChanged)

public:
    GuidanceModel(const FeatureContext& context, QObject* parent = nullptr);
    ~GuidanceModel() override;

    // Where sounds go (the desktop program's CuePlayer); none: silent. Not owned.
    void setSoundOutput(SoundOutput* output) { sound_ = output; }
    // What the cue choice reads, gathered by the model from the other features.
    void setCueContextSource(std::function<CueContext()> source) { contextSource_ = std::move(source); }

    // ---- cues and sounds --------------------------------------------------------------
    // A cue by its name at a base volume, scaled by the user's and the desktop's switches.
    void playCue(const QString& name, double volume);
    // Chooses the cue for this moment; nothing without live data. Writes only on a change.
    void evaluateCue();
    Q_INVOKABLE void dismissCue();
    // The cue's button: dismiss it, then ask for the clean-up preview.
    Q_INVOKABLE void pressCueButton();

    // ---- celebration -------------------------------------------------------------------
    // After a clean that freed `bytes`, the best single clean before it being `best`.
    void celebrate(std::int64_t bytes, std::int64_t best);
    // The best single clean in the log before the run about to start, kept for its celebration.
    void noteBestBeforeRun(std::int64_t best) { bestBeforeRun_ = best; }
    [[nodiscard]] std::int64_t bestBeforeRun() const { return bestBeforeRun_; }

    // ---- first run ---------------------------------------------------------------------
    // Raised whenever access is checked and the first run is not done: shows the sheet from
    // the welcome (unless it is up already).
    void presentOnboarding(bool accessGranted);
    Q_INVOKABLE void continueFromWelcome();
    Q_INVOKABLE void continueWithAccess();
    Q_INVOKABLE void continueWithoutAccess();
    Q_INVOKABLE void openFirstClean();
    Q_INVOKABLE void backToReport();
    Q_INVOKABLE void setItemSelected(const QString& id, bool selected);
    // "Move to Trash" confirmed: false, with "Choose what to clean.", when nothing is ticked.
    Q_INVOKABLE bool confirmFirstClean();
    // Every way out of the sheet.
    Q_INVOKABLE void closeFirstRun();

    // ---- tour --------------------------------------------------------------------------
    // Help › Take the Tour: the tour by itself, from its first slide.
    Q_INVOKABLE void takeTheTour();
    Q_INVOKABLE void tourNext();
    Q_INVOKABLE void tourBack();
    Q_INVOKABLE void tourSkip();
    Q_INVOKABLE void closeTour();

    // ---- state -------------------------------------------------------------------------
    [[nodiscard]] std::optional<CueKey> activeCueKey() const { return activeCue_; }
    [[nodiscard]] QString activeCue() const;
    [[nodiscard]] QString cueTextForQml() const;
    [[nodiscard]] QString cueButton() const;
    [[nodiscard]] CelebrationTier celebration() const { return celebration_.tier(); }
    [[nodiscard]] QString celebrationText() const { return QString::fromLatin1(celebrationTierName(celebration())); }
    [[nodiscard]] int celebrationID() const { return static_cast<int>(celebration_.id()); }
    [[nodiscard]] int celebrationMilliseconds() const { return kCelebrationMilliseconds; }
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }
    [[nodiscard]] bool isOnboardingPresented() const { return onboarding_; }
    [[nodiscard]] const FirstRunFlow& flow() const { return flow_; }
    [[nodiscard]] QString firstRunStep() const { return QString::fromLatin1(firstRunStepName(flow_.step())); }
    [[nodiscard]] bool firstRunScanning() const { return flow_.scanning(); }
    [[nodiscard]] bool firstRunScanDone() const { return flow_.scanDone(); }
    [[nodiscard]] bool firstRunCleaning() const { return flow_.cleaning(); }
    [[nodiscard]] bool firstRunCleanDone() const { return flow_.cleanDone(); }
    [[nodiscard]] QString firstRunNote() const { return QString::fromStdString(flow_.note()); }
    [[nodiscard]] QVariantList firstRunTotals() const;
    [[nodiscard]] QVariantMap texts() const;
    [[nodiscard]] QString firstRunSummary() const;
    [[nodiscard]] QString firstRunCleanSummary() const;
    [[nodiscard]] bool fullDiskAccessGranted() const { return accessGranted_; }
    [[nodiscard]] KeyedListModel* firstRunItems() const { return items_; }
    [[nodiscard]] int firstRunSelectedCount() const { return static_cast<int>(flow_.selectedItems().size()); }
    [[nodiscard]] bool isTourPresented() const { return tourPresented_; }
    [[nodiscard]] QString tourMode() const {
        return tourMode_ == TourMode::firstRun ? QStringLiteral("firstRun") : QStringLiteral("replay");
    }
    [[nodiscard]] int tourIndex() const { return tour_.index(); }
    [[nodiscard]] int tourSlideCount() const { return TourPlayer::slideCount; }
    [[nodiscard]] QString tourScene() const;
    [[nodiscard]] QString tourTitle() const;
    [[nodiscard]] QString tourText() const;
    [[nodiscard]] QString tourForwardTitle() const;
    [[nodiscard]] bool tourCanGoForward() const { return tour_.canGoForward(tourMode_, flow_.scanDone()); }
    [[nodiscard]] QString tourFooter() const;
    [[nodiscard]] QString tourAccessibleDescription() const;

signals:
    void activeCueChanged();
    void celebrationChanged();
    void firstRunChanged();
    void tourChanged();
    // The cue's button asks for the clean-up preview (the model opens it).
    void cleanupPreviewRequested();
    // The first run closed for good: the model moves a waiting notice out and refreshes.
    void firstRunClosed();

private:
    void applyScanStart(FirstRunFlow::ScanStart start);
    void startFirstRunScan();
    void updateItems();
    void finishTour();
    void setTourPresented(bool on);

    const FeatureContext& ctx_;
    SoundOutput* sound_ = nullptr;
    std::function<CueContext()> contextSource_;
    std::optional<CueKey> activeCue_;
    CueContext lastContext_;
    CelebrationState celebration_;
    const bool reducedMotion_;
    FirstRunFlow flow_;
    bool onboarding_ = false;
    bool accessGranted_ = false;
    KeyedListModel* items_ = nullptr;
    TourPlayer tour_;
    TourMode tourMode_ = TourMode::replay;
    bool tourPresented_ = false;
    int scanToken_ = 0;
    std::int64_t bestBeforeRun_ = 0;
};

} // namespace bv
