#include "guidance/qt/GuidanceModel.h"

#include <QCoreApplication>
#include <QFuture>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QtConcurrent/QtConcurrent>

#include "clean/AppLeftovers.h"
#include "clean/Cleaner.h"
#include "clean/CleanupManifest.h"
#include "clean/DevCacheScanner.h"
#include "core/UserDefaults.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/CueBus.h"
#include "core/qt/FolderAccessModel.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "core/qt/WhenDone.h"
#include "foundation/ByteText.h"
#include "guidance/FirstRunClean.h"
#include "guidance/FirstRunItems.h"
#include "guidance/ReducedMotion.h"
#include "guidance/SoundOutput.h"
#include "platform/PlatformWording.h"
#include "sort/FileSample.h"

namespace bv {

namespace {
QString worded(const std::string& text) { return q(platformWording(text)); }
} // namespace

GuidanceModel::GuidanceModel(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context), reducedMotion_(reducedMotionRequested()),
      items_(new KeyedListModel({"itemId", "categoryID", "categoryTitle", "title", "pathText", "sizeText", "safety",
                                 "selected"},
                                this)) {
    connect(&ctx_.cues, &CueBus::cueRequested, this, &GuidanceModel::playCue);
    connect(&ctx_.cues, &CueBus::reevaluationRequested, this, &GuidanceModel::evaluateCue);
}

GuidanceModel::~GuidanceModel() = default;

// ---- cues and sounds -----------------------------------------------------------------------

void GuidanceModel::playCue(const QString& name, double volume) {
    const auto cue = soundCueFromName(name.toStdString());
    if (!cue || !sound_) return;
    // The desktop's interface-sound switch, as stored in the per-user defaults.
    const bool desktopSounds = !ctx_.live || interfaceSoundsOn(UserDefaults().value(kInterfaceSoundsKey));
    // Call sites that give full volume mean "this cue's own level".
    const float base = volume >= 1.0 ? baseVolume(*cue) : static_cast<float>(volume);
    sound_->play(*cue, soundVolume(base, ctx_.settings.value().playSounds, desktopSounds));
}

void GuidanceModel::evaluateCue() {
    if (!ctx_.live || !contextSource_) return;
    CueContext c = contextSource_();
    c.sheetOpen = c.sheetOpen || onboarding_ || tourPresented_;
    c.firstRunDone = ctx_.settings.value().didCompleteFirstRun;
    const auto& seen = ctx_.settings.value().seenCues;
    c.seen = std::set<std::string>(seen.begin(), seen.end());
    const auto next = chooseCue(c);
    const bool textChanged = next && cueText(*next, c) != cueText(*next, lastContext_);
    lastContext_ = std::move(c);
    if (next == activeCue_ && !textChanged) return;
    activeCue_ = next;
    emit activeCueChanged();
}

void GuidanceModel::dismissCue() {
    if (!activeCue_) return;
    const CueKey key = *activeCue_;
    ctx_.settings.update([key](BrimvaleSettings& s) { (void)markCueSeen(s.seenCues, key); });
    evaluateCue();
}

void GuidanceModel::pressCueButton() {
    if (activeCue_ != CueKey::reviewClean) return;
    dismissCue();
    QTimer::singleShot(0, this, [this] { emit cleanupPreviewRequested(); });
}

QString GuidanceModel::activeCue() const { return activeCue_ ? q(cueKeyName(*activeCue_)) : QString(); }

QString GuidanceModel::cueTextForQml() const {
    return activeCue_ ? worded(cueText(*activeCue_, lastContext_).text) : QString();
}

QString GuidanceModel::cueButton() const {
    return activeCue_ ? q(cueText(*activeCue_, lastContext_).button) : QString();
}

// ---- celebration ---------------------------------------------------------------------------

void GuidanceModel::celebrate(std::int64_t bytes, std::int64_t best) {
    const CelebrationTier tier = celebrationTier(bytes, best);
    if (tier == CelebrationTier::none) return;
    const auto id = celebration_.start(tier);
    emit celebrationChanged();
    if (tier != CelebrationTier::none) ctx_.cues.play("sparkle", 1.0);
    QPointer<GuidanceModel> self(this);
    QTimer::singleShot(kCelebrationMilliseconds, this, [self, id] {
        if (self && self->celebration_.expire(id)) emit self->celebrationChanged();
    });
}

// ---- first run -----------------------------------------------------------------------------

void GuidanceModel::presentOnboarding(bool accessGranted) {
    accessGranted_ = accessGranted;
    if (ctx_.settings.value().didCompleteFirstRun) return;
    if (!onboarding_) {
        flow_.reset();
        items_->setRows({});
        onboarding_ = true;
        activeCue_.reset();
        emit activeCueChanged();
    }
    emit firstRunChanged();
}

void GuidanceModel::applyScanStart(FirstRunFlow::ScanStart start) {
    if (start.entered) {
        tour_.restart();
        tourMode_ = TourMode::firstRun;
        emit tourChanged();
    }
    if (start.startScan) startFirstRunScan();
    emit firstRunChanged();
}

void GuidanceModel::continueFromWelcome() { applyScanStart(flow_.continueFromWelcome(accessGranted_)); }

void GuidanceModel::continueWithAccess() { applyScanStart(flow_.continueWithAccess(accessGranted_)); }

void GuidanceModel::continueWithoutAccess() {
    FirstRunFlow::ScanStart start;
    ctx_.settings.update([&](BrimvaleSettings& s) { start = flow_.continueWithoutAccess(s); });
    applyScanStart(start);
}

void GuidanceModel::startFirstRunScan() {
    const int token = ++scanToken_;
    const std::string home = ctx_.folders.home;
    const std::string downloads = ctx_.folderAccess.access().downloads();
    const TimePoint now = ctx_.clock.now();
    const bool live = ctx_.live;
    QPointer<GuidanceModel> self(this);
    auto work = QtConcurrent::run([home, downloads, now, live] {
        std::vector<FirstRunItem> items;
        if (!live) return items;
        items = FirstRunItems::fromDeveloperRows(DevCacheScanner::scan(home).rows);
        // Leftovers of apps that are gone, one item per place they left behind.
        std::vector<FirstRunItems::Leftover> leftovers;
        for (const auto& finding : AppLeftovers::scan(home, {}).findings)
            if (finding.status == OwnerStatus::gone)
                for (const auto& p : finding.paths)
                    leftovers.push_back({finding.ownerName + " \u00B7 " + std::string(LeftoverOwners::label(p.location)),
                                         p.path, p.bytes,
                                         home + "/" + std::string(LeftoverOwners::relativeFolder(p.location))});
        const auto fromLeftovers = FirstRunItems::fromLeftovers(leftovers);
        items.insert(items.end(), fromLeftovers.begin(), fromLeftovers.end());
        const auto samples = gatherSamples(downloads, SortPlace::downloads, false, now);
        const auto fromDownloads = FirstRunItems::fromDownloads(samples, downloads, now);
        items.insert(items.end(), fromDownloads.begin(), fromDownloads.end());
        return items;
    });
    whenDone(work, this, [self, token](std::vector<FirstRunItem> items) {
        if (!self || token != self->scanToken_) return;
        self->flow_.scanFinished(std::move(items));
        self->updateItems();
        emit self->firstRunChanged();
        emit self->tourChanged();
    });
}

void GuidanceModel::updateItems() {
    std::vector<KeyedListModel::Row> rows;
    for (const auto& item : flow_.items())
        rows.push_back({q(item.id),
                        {q(item.id), q(item.categoryID), q(item.categoryTitle), q(item.title),
                         q(pathForPeople(item.path, ctx_.folders.home)), q(byteText(item.bytes)), q(item.safety),
                         item.selected}});
    items_->setRows(std::move(rows));
}

void GuidanceModel::openFirstClean() {
    flow_.openFirstClean();
    emit firstRunChanged();
}

void GuidanceModel::backToReport() {
    flow_.backToReport();
    emit firstRunChanged();
}

void GuidanceModel::setItemSelected(const QString& id, bool selected) {
    flow_.setSelected(id.toStdString(), selected);
    updateItems();
    emit firstRunChanged();
}

bool GuidanceModel::confirmFirstClean() {
    if (!flow_.beginClean()) {
        emit firstRunChanged();
        return false;
    }
    emit firstRunChanged();
    const auto chosen = flow_.selectedItems();
    const std::string home = ctx_.folders.home;
    const std::string logs = ctx_.folders.logs;
    const std::string version = CleanupManifest::versionText(QCoreApplication::applicationVersion().toStdString(), "");
    const TimePoint now = ctx_.clock.now();
    ctx_.cues.play("loading", 0.266);
    QPointer<GuidanceModel> self(this);
    auto work = QtConcurrent::run([chosen, home, logs, version, now] {
        return FirstRunClean::run(chosen, home, logs, version, now);
    });
    whenDone(work, this, [self](FirstRunClean::Result result) {
        if (!self) return;
        if (!result.logs.empty()) {
            self->ctx_.log.addLogEntries(result.logs);
            self->ctx_.cues.play("droplet", 1.0);
        }
        self->flow_.cleanFinished(result.freed, result.failures);
        if (!result.failures.empty()) self->ctx_.cues.play("error", 1.0);
        emit self->firstRunChanged();
    });
    return true;
}

void GuidanceModel::closeFirstRun() {
    if (flow_.cleaning()) return; // the clean in hand finishes first
    ctx_.settings.update([](BrimvaleSettings& s) { FirstRunFlow::close(s); });
    ++scanToken_; // a scan still running has nobody to tell
    onboarding_ = false;
    if (tourMode_ == TourMode::firstRun) tour_.restart();
    emit firstRunChanged();
    emit tourChanged();
    emit firstRunClosed();
    evaluateCue();
}

QVariantList GuidanceModel::firstRunTotals() const {
    QVariantList lines;
    for (const auto& t : FirstRunItems::totals(flow_.items()))
        lines.append(QVariantMap{{"id", q(t.id)}, {"title", q(t.title)}, {"sizeText", q(byteText(t.bytes))},
                                 {"safety", q(t.safety)}});
    return lines;
}

QVariantMap GuidanceModel::texts() const {
    using F = FirstRunFlow;
    const std::pair<const char*, const char*> all[] = {
        {"welcomeTitle", F::kWelcomeTitle}, {"welcomeText", F::kWelcomeText},   {"accessTitle", F::kAccessTitle},
        {"accessText", F::kAccessText},     {"scanTitle", F::kScanTitle},       {"scanStatus", F::kScanStatus},
        {"scanNote", F::kScanNote},         {"reportTitle", F::kReportTitle},   {"libraryMissing", F::kLibraryMissing},
        {"confirmTitle", F::kConfirmTitle}, {"confirmText", F::kConfirmText},
    };
    QVariantMap map;
    for (const auto& [key, text] : all) map.insert(QString::fromLatin1(key), worded(text));
    // The privacy pane where one exists; on a desktop without it the link has no handler.
    map.insert(QStringLiteral("privacyPaneUrl"),
               QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"));
    map.insert(QStringLiteral("accessOn"), q(F::accessStateText(true)));
    map.insert(QStringLiteral("accessOff"), q(F::accessStateText(false)));
    return map;
}

QString GuidanceModel::firstRunSummary() const {
    const auto total = FirstRunItems::sum(flow_.items());
    return total < 1 ? q(FirstRunFlow::kNothingFound) : q(FirstRunFlow::reportSummary(total));
}

QString GuidanceModel::firstRunCleanSummary() const { return q(FirstRunFlow::cleanSummary(flow_.freed())); }

// ---- tour ----------------------------------------------------------------------------------

void GuidanceModel::setTourPresented(bool on) {
    if (tourPresented_ == on) return;
    tourPresented_ = on;
    emit tourChanged();
    if (!on) evaluateCue();
}

void GuidanceModel::takeTheTour() {
    tour_.restart();
    tourMode_ = TourMode::replay;
    setTourPresented(true);
    emit tourChanged();
}

void GuidanceModel::finishTour() {
    ctx_.settings.update([now = ctx_.clock.now()](BrimvaleSettings& s) { s.tourCompletedAt = now; });
    if (tourMode_ == TourMode::firstRun) {
        flow_.tourFinished();
        emit firstRunChanged();
    } else {
        setTourPresented(false);
    }
}

void GuidanceModel::tourNext() {
    const bool finished = tour_.next(tourMode_, flow_.scanDone());
    ctx_.cues.play("page", 1.0);
    emit tourChanged();
    if (finished) finishTour();
}

void GuidanceModel::tourBack() {
    tour_.back();
    emit tourChanged();
}

void GuidanceModel::tourSkip() {
    const bool finished = tour_.skip(tourMode_, flow_.scanDone());
    emit tourChanged();
    if (finished) finishTour();
}

void GuidanceModel::closeTour() { setTourPresented(false); }

QString GuidanceModel::tourScene() const {
    switch (tour_.slide().scene) {
    case TourScene::space: return QStringLiteral("space");
    case TourScene::smartClean: return QStringLiteral("smartClean");
    case TourScene::autoSort: return QStringLiteral("autoSort");
    case TourScene::duplicates: return QStringLiteral("duplicates");
    }
    return {};
}

QString GuidanceModel::tourTitle() const { return worded(tour_.slide().title); }
QString GuidanceModel::tourText() const { return worded(tour_.slide().text); }
QString GuidanceModel::tourForwardTitle() const { return worded(tour_.forwardTitle(tourMode_, flow_.scanDone())); }
QString GuidanceModel::tourFooter() const {
    return worded(TourPlayer::footerText(flow_.scanDone(), FirstRunItems::sum(flow_.items())));
}
QString GuidanceModel::tourAccessibleDescription() const { return q(TourPlayer::accessibleDescription(tour_.index())); }

} // namespace bv
