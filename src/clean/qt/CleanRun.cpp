#include "clean/qt/CleanRun.h"

#include <QElapsedTimer>
#include <QFuture>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent/QtConcurrent>

#include <QCoreApplication>

#include <algorithm>

#include "clean/CleanupManifest.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/CueBus.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/Messages.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "core/qt/WhenDone.h"
#include "foundation/ByteText.h"

namespace bv {
namespace {

std::string itemWord(std::int64_t n) { return n == 1 ? "item" : "items"; }

} // namespace

CleanRun::CleanRun(const FeatureContext& context, QObject* parent) : QObject(parent), ctx_(context) {}

void CleanRun::notify(const std::string& body) {
    lastNotification_ = body;
    emit notificationPosted("Brimvale", q(body));
    if (ctx_.live) ctx_.notifications.postNotification(QStringLiteral("Brimvale"), q(body));
}

bool CleanRun::presentPlan(CleanupPlan plan, CleanupSheetMode mode) {
    if (phase_ == Phase::running || closing_) return false;
    // A rule's preview may match nothing yet: the sheet still opens so the rule can be saved.
    if (auto error = preview::previewError(plan); error && mode != CleanupSheetMode::saveFolderRule) {
        ctx_.messages.setErrorMessage(*error);
        return false;
    }
    const bool changed = !plan_ || !(*plan_ == plan) || mode_ != mode || !excluded_.empty();

    plan_ = std::move(plan);
    mode_ = mode;
    excluded_.clear();
    if (changed) emit planChanged();
    if (!sheetPresented_) {
        sheetPresented_ = true;
        emit sheetPresentedChanged();
    }
    return true;
}

void CleanRun::setEntryTicked(const QString& id, bool ticked) {
    if (phase_ == Phase::running) return;
    const std::string key = id.toStdString();
    const bool changed = ticked ? excluded_.erase(key) > 0 : excluded_.insert(key).second;
    if (changed) emit planChanged();
}

void CleanRun::dismissSheet() {
    if (phase_ == Phase::running) return;
    if (sheetPresented_) {
        sheetPresented_ = false;
        emit sheetPresentedChanged();
    }
    if (deferredNotice_) {
        ctx_.messages.setCleanupNotice(*deferredNotice_);
        deferredNotice_.reset();
    }
}

void CleanRun::setPhase(Phase p) {
    if (phase_ == p) return;
    phase_ = p;
    emit progressChanged();
}

void CleanRun::raiseFraction(double value) {
    const double v = std::clamp(value, 0.0, 1.0);
    if (v > fraction_) {
        fraction_ = v;
        emit progressChanged();
    }
}

void CleanRun::confirm() {
    if (phase_ == Phase::running || closing_ || !plan_) return;
    auto entries = preview::entriesToClean(*plan_, excluded_);
    if (entries.empty()) {
        ctx_.messages.setErrorMessage(preview::kNothingSelectedToClean);
        return;
    }
    stop_ = std::make_shared<CancellationFlag>();
    stopRequested_ = false;
    failed_ = false;
    step_ = 0;
    fraction_ = 0;
    statusLine_ = "Checking the paths";
    phase_ = Phase::running;
    emit progressChanged();

    run_ = std::make_unique<Run>();
    run_->entries = std::move(entries);
    run_->baseline = ctx_.readVolume();
    for (const auto& e : run_->entries) run_->estimate += e.bytes;
    // The loop begins on the next turn of the event loop, so a stop pressed at once is
    // seen before the first item.
    QMetaObject::invokeMethod(this, &CleanRun::runNext, Qt::QueuedConnection);
}

void CleanRun::requestStop() {
    if (phase_ != Phase::running || !stop_) return;
    stop_->cancel();
    stopRequested_ = true;
    statusLine_ = "Stopping after this item…";
    emit progressChanged();
}

void CleanRun::runNext() {
    if (!run_) return;
    Run& r = *run_;
    const size_t n = r.entries.size();
    if (r.next >= n || stop_->isCancelled()) {
        finish();
        return;
    }
    const size_t i = r.next;
    step_ = 1;
    raiseFraction(static_cast<double>(i) / static_cast<double>(n));
    if (!stopRequested_) statusLine_ = "Moving " + std::to_string(i + 1) + " of " + std::to_string(n);
    emit progressChanged();

    const CleanupEntry entry = r.entries[i];
    const std::string home = ctx_.folders.home;
    const Cleaner::Environment env = cleanerEnv_;
    QFuture<Cleaner::ListResult> task = QtConcurrent::run(QThreadPool::globalInstance(), [entry, home, env] {
        return Cleaner(env).applyList({entry}, home);
    });
    whenDone(task, this, [this, i, n](Cleaner::ListResult result) {
        if (!run_) return;
        Run& run = *run_;
        const CleanupEntry& done = run.entries[i];
        if (!result.logs.empty()) {
            run.cleaned.push_back(&done);
            if (!run.landed && done.disposition != CleanupDisposition::permanent) {
                run.landed = true;
                ++trashLandings_;
                emit trashLandingsChanged();
                ctx_.cues.play("droplet", 1.0);
            }
        }
        run.logs.insert(run.logs.end(), result.logs.begin(), result.logs.end());
        run.failures.insert(run.failures.end(), result.failures.begin(), result.failures.end());
        raiseFraction(static_cast<double>(i + 1) / static_cast<double>(n));
        run.next = i + 1;
        runNext();
    });
}

void CleanRun::finish() {
    Run& r = *run_;
    const size_t started = r.next;
    std::vector<std::string> manifestErrors = r.failures;
    for (size_t k = started; k < r.entries.size(); ++k)
        manifestErrors.push_back("Not started (stopped): " + r.entries[k].title);

    step_ = 2;
    statusLine_ = "Updating History";
    emit progressChanged();
    if (!r.logs.empty()) ctx_.log.addLogEntries(r.logs);

    const std::string version =
        CleanupManifest::versionText(QCoreApplication::applicationVersion().toStdString(), "");
    (void)CleanupManifest::write("clean", r.logs, manifestErrors, ctx_.clock.now(), ctx_.folders.logs, version);

    std::int64_t freed = 0;
    for (const auto& l : r.logs) freed += l.bytesReclaimed;
    step_ = 3;
    fraction_ = std::max(fraction_, 1.0);
    lastFreed_ = freed;
    if (freed > 0) reclaimed_ = freed;
    emit progressChanged();

    const auto count = static_cast<std::int64_t>(r.logs.size());
    if (!r.logs.empty()) {
        setPhase(Phase::success);
        bool measure = false;
        for (size_t k = 0; k < started; ++k) {
            const auto& e = r.entries[k];
            measure = measure || e.disposition == CleanupDisposition::permanent || e.id == "npm" || e.id == "sim-unavailable";
        }
        if (measure) {
            startMeasurement(count, r.estimate, r.baseline.freeBytes);
        } else {
            notify("Moved " + byteText(freed) + " from " + std::to_string(count) + " " + itemWord(count) +
                                         " to the Trash. Empty the Trash to get the space back.");
        }
    } else {
        setPhase(Phase::idle);
    }

    // The notices: a stopped run, else the first move to the Trash.
    CleanupRunCounts counts;
    counts.cleanedCount = count;
    counts.cleanedBytes = freed;
    counts.notStartedCount = static_cast<std::int64_t>(r.entries.size() - started);
    counts.failureCount = static_cast<std::int64_t>(r.failures.size());
    for (const CleanupEntry* e : r.cleaned)
        if (e->disposition != CleanupDisposition::permanent && e->id != "npm") ++counts.trashedCount;
    bool noticeShown = false;
    if (auto n = stoppedNotice(counts)) {
        postNotice(*n);
        noticeShown = true;
    } else if (auto first = firstTrashNotice(counts, ctx_.settings.value().didExplainTrashUndo)) {
        postNotice(*first);
        ctx_.settings.update([](BrimvaleSettings& s) { s.didExplainTrashUndo = true; });
        noticeShown = true;
    }
    if (!r.failures.empty()) {
        if (!noticeShown) {
            std::string line = r.failures.front();
            if (r.failures.size() > 1) line += " " + std::to_string(r.failures.size()) + " items need attention.";
            ctx_.messages.setErrorMessage(line);
        }
        failed_ = r.logs.empty();
        emit progressChanged();
        ctx_.cues.play("error", 1.0);
    }

    const bool cleanedSomething = !r.logs.empty();
    // Until the sheet has closed, the finished run stays in charge: a second confirm or a
    // new plan in this wait would be torn down by the close below.
    closing_ = true;
    emit progressChanged();
    QTimer::singleShot(cleanedSomething ? timing_.closeAfterCleanMs : timing_.closeAfterNothingMs, this,
                       [this, cleanedSomething] { closeSheetAndRefresh(cleanedSomething); });
}

void CleanRun::postNotice(const CleanupNotice& notice) {
    // The sheet is still up when the run ends: the notice waits for it to close.
    if (sheetPresented_) deferredNotice_ = notice;
    else ctx_.messages.setCleanupNotice(notice);
}

void CleanRun::closeSheetAndRefresh(bool cleanedSomething) {
    run_.reset();
    closing_ = false;
    emit progressChanged();
    if (phase_ == Phase::success) setPhase(Phase::idle);
    if (sheetPresented_) {
        sheetPresented_ = false;
        emit sheetPresentedChanged();
    }
    if (plan_) {
        plan_.reset();
        excluded_.clear();
        emit planChanged();
    }
    if (deferredNotice_) {
        ctx_.messages.setCleanupNotice(*deferredNotice_);
        deferredNotice_.reset();
    }
    if (cleanedSomething) ctx_.cues.play("success", 1.0);
    emit runFinished();
}

void CleanRun::startMeasurement(std::int64_t count, std::int64_t estimate, std::int64_t baselineFree) {
    verifying_ = true;
    lastVerifiedFreed_.reset();
    emit progressChanged();
    struct State {
        QElapsedTimer clock;
        std::vector<std::int64_t> samples;
    };
    auto state = std::make_shared<State>();
    state->clock.start();
    auto timer = new QTimer(this);
    timer->setInterval(timing_.sampleEveryMs);
    connect(timer, &QTimer::timeout, this, [this, timer, state, count, estimate, baselineFree] {
        const VolumeSnapshot v = ctx_.readVolume();
        state->samples.push_back(std::clamp<std::int64_t>(v.freeBytes, 0, std::max<std::int64_t>(v.totalBytes, 0)));
        const qint64 elapsed = state->clock.elapsed();
        const auto& s = state->samples;
        const bool steady = s.size() >= 3 && s[s.size() - 1] == s[s.size() - 2] && s[s.size() - 2] == s[s.size() - 3];
        if (elapsed < timing_.measureAtMostMs && !(elapsed >= timing_.steadyAfterMs && steady)) return;
        timer->stop();
        timer->deleteLater();
        const std::int64_t freed = s.empty() ? 0 : std::max<std::int64_t>(0, s.back() - baselineFree);
        verifying_ = false;
        lastVerifiedFreed_ = freed;
        emit progressChanged();
        if (freed >= 1)
            notify("Freed " + byteText(freed) + " from " + std::to_string(count) + " " + itemWord(count) +
                                         ", measured on disk.");
        else
            notify("Cleaned " + std::to_string(count) + " " + itemWord(count) + " (" + byteText(estimate) +
                                         " estimated). Free space has not changed yet.");
        emit measurementFinished();
    });
    timer->start();
}

QVariantList CleanRun::entriesForQml() const {
    QVariantList out;
    if (!plan_) return out;
    for (const auto& e : plan_->entries) {
        QVariantMap m;
        m["id"] = q(e.id);
        m["title"] = q(e.title);
        m["sizeText"] = q(byteText(e.bytes));
        m["note"] = q(e.note);
        m["group"] = q(e.group);
        m["badge"] = q(std::string(badgeWord(e.tier)));
        m["permanent"] = e.disposition == CleanupDisposition::permanent;
        m["symbolName"] = q(e.symbolName);
        m["ticked"] = excluded_.count(e.id) == 0;
        out.push_back(m);
    }
    return out;
}

QStringList CleanRun::refusalsForQml() const {
    QStringList out;
    if (plan_)
        for (const auto& r : plan_->refusals) out << q(r);
    return out;
}

QString CleanRun::selectedTotalText() const {
    std::int64_t total = 0;
    if (plan_)
        for (const auto& e : plan_->entries)
            if (!excluded_.count(e.id)) total += e.bytes;
    return q(byteText(total));
}

int CleanRun::selectedCount() const {
    int n = 0;
    if (plan_)
        for (const auto& e : plan_->entries)
            if (!excluded_.count(e.id)) ++n;
    return n;
}

bool CleanRun::selectionHasPermanent() const {
    if (plan_)
        for (const auto& e : plan_->entries)
            if (!excluded_.count(e.id) && e.disposition == CleanupDisposition::permanent) return true;
    return false;
}

QString CleanRun::afterCleanLine() const {
    if (verifying_) return QStringLiteral("Measuring the space that came back\u2026");
    if (!lastVerifiedFreed_) return {};
    if (*lastVerifiedFreed_ >= 1) return q(byteText(*lastVerifiedFreed_)) + QStringLiteral(" back on disk, measured");
    return QStringLiteral("Trash holds the space until you empty it");
}

QString CleanRun::sheetMode() const { return q(std::string(textValue(mode_))); }

QString CleanRun::phaseText() const {
    switch (phase_) {
    case Phase::idle: return "idle";
    case Phase::running: return "running";
    case Phase::success: return "success";
    }
    return "idle";
}

} // namespace bv
