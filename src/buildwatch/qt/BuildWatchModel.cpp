#include "buildwatch/qt/BuildWatchModel.h"

#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

#include "buildwatch/BuildWatchCatalog.h"
#include "buildwatch/BuildWatchService.h"
#include "clean/Cleaner.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/Messages.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "core/qt/WhenDone.h"
#include "foundation/ByteText.h"

namespace bv {
namespace {

using Service = BuildWatchService;

constexpr const char* kFromLinkNote = "A link asked Brimvale to watch this folder.";

std::int64_t totalOf(const std::vector<BuildTarget>& targets) {
    std::int64_t total = 0;
    for (const auto& t : targets)
        total += t.bytes;
    return total;
}

QStringList stackLabels(const std::vector<BuildStack>& stacks) {
    QStringList out;
    for (const auto s : stacks)
        out << q(label(s));
    return out;
}

QVariantList targetRows(const std::vector<BuildTarget>& targets) {
    QVariantList out;
    for (const auto& t : targets)
        out << QVariantMap{{"path", q(t.path)}, {"title", q(t.title)}, {"bytesText", q(byteText(t.bytes))}};
    return out;
}

} // namespace

BuildWatchModel::BuildWatchModel(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context) {
    if (ctx_.live) {
        if (auto loaded = ctx_.store.load(kBuildWatchFileName, decodeBuildWatchState)) {
            state_ = std::move(*loaded);
        } else if (ctx_.store.exists(kBuildWatchFileName)) {
            // A file that no longer decodes is kept aside, never overwritten unseen.
            ctx_.store.preserveCorruptCopy(kBuildWatchFileName, ctx_.clock.now());
        }
    }
    connect(&ctx_.clock, &AppClock::ticked, this, [this] { checkDue(false); });
    for (auto signal : {&BuildWatchModel::watchesChanged, &BuildWatchModel::suggestionsChanged})
        connect(this, signal, this, &BuildWatchModel::badgeChanged);
    connect(&ctx_.settings, &Settings::changed, this, &BuildWatchModel::openAtLoginChanged);
}

bool BuildWatchModel::openAtLogin() const { return ctx_.settings.value().launchAtLogin; }

void BuildWatchModel::setOpenAtLogin(bool on) {
    if (on != openAtLogin() && ctx_.live) ctx_.settings.setLaunchAtLogin(on);
}

void BuildWatchModel::save() {
    if (ctx_.live)
        ctx_.store.saveJson(kBuildWatchFileName, encodeBuildWatchState(state_));
}

void BuildWatchModel::showToast(const std::string& text) {
    toast_ = q(text);
    emit toastChanged();
}

void BuildWatchModel::clearToast() {
    if (toast_.isEmpty())
        return;
    toast_.clear();
    emit toastChanged();
}

// ---- the draft --------------------------------------------------------------------------------

void BuildWatchModel::startDraft(const QString& pathIn, bool fromLink) {
    emit draftStarted();
    const std::string path = pathIn.toStdString();
    const Uuid token = draftToken_ = Uuid::generate();
    QPointer<BuildWatchModel> self(this);
    // Links resolved and the path standardised (what exists of it), off the GUI thread.
    auto work = QtConcurrent::run([path] {
        return BuildWatchCatalog::standardizedPath(path);
    });
    whenDone(work, this, [self, token, fromLink](std::string resolved) {
        if (self && token == self->draftToken_)
            self->openDraft(resolved, fromLink);
    });
}

void BuildWatchModel::openDraft(const std::string& path, bool fromLink) {
    const bool loginItemOn = ctx_.settings.value().launchAtLogin;
    auto start = Service::startDraft(state_, path, std::nullopt, fromLink, loginItemOn, ctx_.folders.home);
    if (start.toast) {
        showToast(*start.toast);
        return;
    }
    draft_ = std::move(start.draft);
    emit draftChanged();
    if (!start.needsScan)
        return;
    const Uuid token = draftToken_;
    const std::string home = ctx_.folders.home;
    QPointer<BuildWatchModel> self(this);
    auto work = QtConcurrent::run([path, home] {
        return BuildWatchScanner::scanProject(path, home, std::nullopt, true);
    });
    whenDone(work, this, [self, token, path](BuildWatchScanner::ProjectScan scan) {
        if (!self || token != self->draftToken_ || !self->draft_ || self->draft_->path != path)
            return;
        Service::applyDraftScan(*self->draft_, scan, self->ctx_.folders.home);
        emit self->draftChanged();
    });
}

void BuildWatchModel::setDraftField(const QString& key, const QVariant& value) {
    if (!draft_)
        return;
    BuildWatchDraft& d = *draft_;
    if (key == "cadence")
        d.cadence = buildWatchCadenceFromRaw(value.toString().toStdString()).value_or(d.cadence);
    else if (key == "limitStep")
        d.limitBytes = Service::stepLimit(d.limitBytes, value.toInt());
    else if (key == "autoClean")
        d.autoClean = value.toBool();
    else if (key == "removesPermanently")
        d.removesPermanently = value.toBool();
    else if (key == "openAtLogin")
        d.openAtLogin = value.toBool();
    else
        return;
    emit draftChanged();
}

void BuildWatchModel::confirmDraft() {
    if (!draft_)
        return;
    const bool loginItemOn = ctx_.settings.value().launchAtLogin;
    auto confirmed = Service::confirmDraft(state_, *draft_, loginItemOn, ctx_.clock.now());
    if (!confirmed)
        return;
    targets_[confirmed->id] = confirmed->targets;
    std::erase_if(suggestions_, [&](const BuildSuggestion& s) { return s.path == draft_->path; });
    draft_.reset();
    draftToken_ = Uuid::generate();
    save();
    if (confirmed->enableLoginItem && ctx_.live)
        ctx_.settings.setLaunchAtLogin(true);
    ctx_.messages.setBanner(confirmed->toast);
    showToast(confirmed->toast);
    emit draftChanged();
    emit watchesChanged();
    emit suggestionsChanged();
}

void BuildWatchModel::cancelDraft() {
    if (!draft_)
        return;
    draft_.reset();
    draftToken_ = Uuid::generate();
    emit draftChanged();
}

// ---- changing a watch -------------------------------------------------------------------------

void BuildWatchModel::changeWatch(const QString& id, const std::function<void(BuildWatch&)>& change) {
    const auto uuid = Uuid::parse(id.toStdString());
    BuildWatch* w = uuid ? state_.find(*uuid) : nullptr;
    if (!w)
        return;
    change(*w);
    save();
    emit watchesChanged();
}

void BuildWatchModel::setCadence(const QString& id, const QString& cadence) {
    const auto c = buildWatchCadenceFromRaw(cadence.toStdString());
    if (!c)
        return;
    const TimePoint now = ctx_.clock.now();
    changeWatch(id, [&](BuildWatch& w) { Service::setCadence(w, *c, now); });
}

void BuildWatchModel::stepLimit(const QString& id, int direction) {
    changeWatch(id, [&](BuildWatch& w) { w.limitBytes = Service::stepLimit(w.limitBytes, direction); });
}

void BuildWatchModel::setAutoClean(const QString& id, bool on) {
    changeWatch(id, [&](BuildWatch& w) { w.autoClean = on; });
}

void BuildWatchModel::setRemovesPermanently(const QString& id, bool on) {
    changeWatch(id, [&](BuildWatch& w) { w.removesPermanently = on; });
}

void BuildWatchModel::setEnabled(const QString& id, bool on) {
    const TimePoint now = ctx_.clock.now();
    changeWatch(id, [&](BuildWatch& w) { Service::setEnabled(w, on, now); });
}

void BuildWatchModel::stopWatching(const QString& id) {
    const auto uuid = Uuid::parse(id.toStdString());
    if (!uuid)
        return;
    const auto line = Service::stopWatching(state_, *uuid);
    if (!line)
        return;
    targets_.erase(*uuid);
    save();
    showToast(*line);
    emit watchesChanged();
}

void BuildWatchModel::dismissSuggestion(const QString& path) {
    Service::dismiss(state_, suggestions_, path.toStdString());
    save();
    emit suggestionsChanged();
}

// ---- what QML reads ---------------------------------------------------------------------------

QVariantList BuildWatchModel::watchesForQml() const {
    QVariantList out;
    const TimePoint now = ctx_.clock.now();
    for (const auto& w : state_.watches) {
        QVariantMap row;
        row["id"] = q(w.id.text());
        row["name"] = q(w.name);
        row["path"] = q(pathForPeople(w.path, ctx_.folders.home));
        row["stacks"] = stackLabels(w.stacks).join(QStringLiteral(", "));
        const std::int64_t size = w.samples.empty() ? 0 : w.samples.back().bytes;
        row["sizeText"] = w.samples.empty() ? QStringLiteral("Not measured yet") : q(byteText(size));
        row["limitText"] = q(byteText(w.limitBytes));
        row["overLimit"] = Service::isOverLimit(size, w.limitBytes, false);
        row["fraction"] = w.limitBytes > 0
                              ? std::min(1.0, static_cast<double>(size) / static_cast<double>(w.limitBytes))
                              : 0.0;
        const auto growth = Service::growth(w.samples, 7, now);
        row["growthText"] = growth ? q(Service::growthText(*growth)) : QString();
        row["note"] = q(w.lastNote);
        row["cadence"] = q(rawValue(w.cadence));
        row["cadenceLabel"] = q(label(w.cadence));
        row["autoClean"] = w.autoClean;
        row["removesPermanently"] = w.removesPermanently;
        row["isEnabled"] = w.isEnabled;
        row["freedText"] =
            w.totalFreed >= 1 ? QStringLiteral("Freed ") + q(byteText(w.totalFreed)) + " so far" : QString();
        row["busy"] = busyIDs_.contains(w.id);
        const auto t = targets_.find(w.id);
        row["targets"] = t == targets_.end() ? QVariantList() : targetRows(t->second);
        out << row;
    }
    return out;
}

QVariantList BuildWatchModel::suggestionsForQml() const {
    QVariantList out;
    for (const auto& s : suggestions_) {
        QVariantMap row;
        row["path"] = q(s.path);
        row["pathText"] = q(pathForPeople(s.path, ctx_.folders.home));
        row["name"] = q(s.name);
        row["stacks"] = stackLabels(s.stacks).join(QStringLiteral(", "));
        row["bytesText"] = q(byteText(s.bytes));
        row["mostly"] = s.targets.empty() ? QString() : q(s.targets.front().title);
        out << row;
    }
    return out;
}

QString BuildWatchModel::refusedNote() const {
    if (refusedFolders_.empty())
        return {};
    QStringList shown;
    for (const auto& f : refusedFolders_)
        shown << q(pathForPeople(f, ctx_.folders.home));
    return QStringLiteral("Some folders couldn\u2019t be checked: ") + shown.join(QStringLiteral(", "));
}

QVariantMap BuildWatchModel::draftForQml() const {
    QVariantMap m;
    if (!draft_)
        return m;
    const BuildWatchDraft& d = *draft_;
    m["name"] = q(d.name);
    m["path"] = q(pathForPeople(d.path, ctx_.folders.home));
    m["scanning"] = !d.scan && !d.problem;
    m["problem"] = q(d.problem);
    m["fromLinkNote"] = d.fromLink ? QString::fromUtf8(kFromLinkNote) : QString();
    m["stacks"] = d.scan ? stackLabels(d.scan->stacks).join(QStringLiteral(", ")) : QString();
    m["sizeText"] = d.scan ? q(byteText(totalOf(d.scan->targets))) : QString();
    m["targets"] = d.scan ? targetRows(d.scan->targets) : QVariantList();
    m["cadence"] = q(rawValue(d.cadence));
    m["limitText"] = q(byteText(d.limitBytes));
    m["autoClean"] = d.autoClean;
    m["removesPermanently"] = d.removesPermanently;
    m["openAtLogin"] = d.openAtLogin;
    m["showsOpenAtLogin"] = !ctx_.settings.value().launchAtLogin;
    m["runsWhileOpen"] = QString::fromUtf8(Service::kRunsWhileOpen);
    m["canConfirm"] = Service::canConfirm(d);
    return m;
}

QString BuildWatchModel::badge() const {
    std::int64_t bytes = 0;
    for (const auto& s : suggestions_)
        bytes += s.bytes;
    if (!suggestions_.empty())
        return q(byteText(bytes));
    return state_.watches.empty() ? QString() : QString::number(state_.watches.size());
}

} // namespace bv
