// Build Watch's background work: the due check on the tick, "Measure now", "Clean now" and
// its crediting after the preview's clean, and the look for projects.
#include <QCoreApplication>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include "buildwatch/BuildWatchRun.h"
#include "buildwatch/BuildWatchService.h"
#include "buildwatch/qt/BuildWatchModel.h"
#include "clean/CleanupManifest.h"
#include "clean/CleanupPlan.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/CueBus.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "core/qt/WhenDone.h"

namespace bv {
namespace {

using Service = BuildWatchService;

struct DueOutcome {
    BuildWatchState state;
    BuildWatchRun::Result result;
};

// What a run changed in a watch, laid over the watch as it stands now: the user may have
// changed its settings or paused it while the run measured.
void takeRunFields(BuildWatch& current, const BuildWatch& measured) {
    BuildWatch merged = measured;
    merged.name = current.name;
    merged.cadence = current.cadence;
    merged.limitBytes = current.limitBytes;
    merged.autoClean = current.autoClean;
    merged.removesPermanently = current.removesPermanently;
    merged.isEnabled = current.isEnabled && measured.isEnabled;
    current = std::move(merged);
}

std::int64_t totalOf(const std::vector<BuildTarget>& targets) {
    std::int64_t total = 0;
    for (const auto& t : targets)
        total += t.bytes;
    return total;
}

} // namespace

void BuildWatchModel::checkDue(bool forceLook) {
    if (!ctx_.live)
        return; // a model without live data starts nothing by itself
    runDue();
    lookForProjects(forceLook);
}

void BuildWatchModel::runDue() {
    if (runInFlight_ || cleanBusy_())
        return;
    const TimePoint now = ctx_.clock.now();
    const auto due = Service::dueWatches(state_, now);
    if (due.empty())
        return;
    runInFlight_ = true;
    emit watchesChanged();

    BuildWatchRun::Environment env;
    env.home = ctx_.folders.home;
    env.now = now;
    env.diskIsLow = diskIsLow_();
    const std::string logs = ctx_.folders.logs;
    const std::string version =
        CleanupManifest::versionText(QCoreApplication::applicationVersion().toStdString(), "");
    QPointer<BuildWatchModel> self(this);
    auto work = QtConcurrent::run([state = state_, env, logs, version]() mutable {
        DueOutcome out{std::move(state), {}};
        out.result = BuildWatchRun::run(out.state, env);
        if (out.result.cleanerRan && !logs.empty())
            (void)CleanupManifest::write("build-watch", out.result.logs, out.result.failures, env.now, logs,
                                         version);
        return out;
    });
    whenDone(work, this, [self, due](DueOutcome out) {
        if (!self)
            return;
        BuildWatchModel& m = *self;
        for (const Uuid& id : due) {
            BuildWatch* current = m.state_.find(id);
            const BuildWatch* measured = out.state.find(id);
            if (current && measured)
                takeRunFields(*current, *measured);
        }
        for (auto& [id, targets] : out.result.targets)
            if (m.state_.find(id))
                m.targets_[id] = std::move(targets);
        m.save();
        if (!out.result.logs.empty())
            m.ctx_.log.addLogEntries(out.result.logs);
        for (const auto& n : out.result.notices)
            m.ctx_.notifications.postNotification(q(n.title), q(n.body));
        if (out.result.freedBytes >= 1) {
            if (m.ctx_.settings.value().playSounds)
                m.ctx_.cues.play("success", 1.0);
            emit m.spaceFreed();
        }
        m.runInFlight_ = false;
        emit m.watchesChanged();
    });
}

void BuildWatchModel::scanInPool(const QString& idText,
                                 std::function<void(const Uuid&, const BuildWatchScanner::ProjectScan&)> then) {
    const auto uuid = Uuid::parse(idText.toStdString());
    const BuildWatch* w = uuid ? state_.find(*uuid) : nullptr;
    if (!w || busyIDs_.contains(*uuid))
        return;
    busyIDs_.insert(*uuid);
    emit watchesChanged();
    // The targets are measured afresh: what the screen shows is what is on disk now.
    const std::string path = w->path, home = ctx_.folders.home;
    QPointer<BuildWatchModel> self(this);
    auto work = QtConcurrent::run([path, home] {
        return BuildWatchScanner::scanProject(path, home, std::nullopt, true);
    });
    whenDone(work, this, [self, id = *uuid, then = std::move(then)](BuildWatchScanner::ProjectScan scan) {
        if (!self)
            return;
        self->busyIDs_.erase(id);
        then(id, scan);
        emit self->watchesChanged();
    });
}

void BuildWatchModel::measureNow(const QString& idText) {
    scanInPool(idText, [this](const Uuid& id, const BuildWatchScanner::ProjectScan& scan) {
        BuildWatch* watch = state_.find(id);
        if (!watch)
            return;
        targets_[id] = scan.targets;
        if (scan.blocked) {
            watch->lastNote = Service::unreadableProblem(watch->path, ctx_.folders.home);
        } else {
            Service::recordSample(*watch, totalOf(scan.targets), ctx_.clock.now());
            watch->lastNote.reset();
        }
        save();
    });
}

void BuildWatchModel::cleanNow(const QString& idText) {
    scanInPool(idText, [this](const Uuid& id, const BuildWatchScanner::ProjectScan& scan) { startCleanPreview(id, scan); });
}

void BuildWatchModel::startCleanPreview(const Uuid& id, const BuildWatchScanner::ProjectScan& scan) {
    const BuildWatch* w = state_.find(id);
    if (!w)
        return;
    targets_[id] = scan.targets;
    if (scan.blocked) {
        showToast(Service::unreadableProblem(w->path, ctx_.folders.home));
        return;
    }
    auto built = Service::buildEntries(*w, scan.targets, ctx_.clock.now());
    if (built.entries.empty() && built.notes.empty()) {
        showToast(Service::nothingToCleanToast(w->name));
        return;
    }
    previewed_ = built.entries;
    logBefore_.clear();
    for (const auto& e : ctx_.log.logEntries())
        logBefore_.insert(e.id);
    (void)ctx_.presentPlan(CleanupPlan{std::move(built.entries), std::move(built.notes)},
                           CleanupSheetMode::clean);
}

void BuildWatchModel::creditFinishedClean() {
    if (previewed_.empty())
        return;
    std::map<std::string, std::int64_t> freedByPath;
    for (const auto& e : ctx_.log.logEntries())
        if (!logBefore_.contains(e.id) && e.bytesReclaimed >= 1)
            freedByPath[e.sourcePath] += e.bytesReclaimed;
    Service::creditClean(state_, targets_, previewed_, freedByPath, ctx_.clock.now());
    previewed_.clear();
    logBefore_.clear();
    save();
    emit watchesChanged();
}

void BuildWatchModel::lookForProjects(bool force) {
    if (!ctx_.live || suggestionsScanning_)
        return;
    const TimePoint now = ctx_.clock.now();
    if (!Service::lookIsDue(state_, force, now))
        return;
    suggestionsScanning_ = true;
    emit suggestionsChanged();
    const std::string home = ctx_.folders.home;
    std::set<std::string> watched;
    for (const auto& w : state_.watches)
        watched.insert(w.path);
    QPointer<BuildWatchModel> self(this);
    auto work = QtConcurrent::run([named = searchRoots_, watched, home] {
        const auto roots = named ? *named : BuildWatchScanner::searchRoots(home, {}, true);
        return BuildWatchScanner::lookForProjects(roots, watched, home);
    });
    whenDone(work, this, [self](BuildWatchScanner::LookResult look) {
        if (!self)
            return;
        BuildWatchModel& m = *self;
        const TimePoint at = m.ctx_.clock.now();
        m.suggestions_ = Service::visibleSuggestions(m.state_, std::move(look.suggestions));
        // A project watched while the look ran is no suggestion.
        std::erase_if(m.suggestions_, [&](const BuildSuggestion& s) {
            for (const auto& w : m.state_.watches)
                if (w.path == s.path)
                    return true;
            return false;
        });
        m.refusedFolders_ = std::move(look.refusedFolders);
        m.state_.lastSuggestionScan = at;
        if (auto notice = Service::suggestionNotice(m.state_, m.suggestions_, at))
            m.ctx_.notifications.postNotification(q(notice->title), q(notice->body));
        m.save();
        m.suggestionsScanning_ = false;
        emit m.suggestionsChanged();
    });
}

} // namespace bv
