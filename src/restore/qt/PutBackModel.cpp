#include "restore/qt/PutBackModel.h"

#include <QPointer>

#include <algorithm>
#include <map>
#include <QtConcurrent/QtConcurrentRun>

#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/QtText.h"
#include "core/qt/WhenDone.h"
#include "platform/SafeFileSystem.h"
#include "restore/PutBack.h"

namespace bv {
namespace {

struct RunResult {
    std::vector<ActionLogEntry> logs;
    std::vector<std::string> remade;   // folders made again on the way
    std::vector<std::string> failures; // the refusals' sentences
    std::string firstName;
};

RunResult putBackAll(const std::vector<ActionLogEntry>& entries, const std::string& home) {
    RunResult r;
    const PutBack putBack;
    for (const auto& e : entries) {
        if (r.firstName.empty()) r.firstName = splitPath(e.sourcePath).name;
        try {
            auto outcome = putBack.putBack(e, home);
            if (outcome.remadeFolder) r.remade.push_back(*outcome.remadeFolder);
            r.logs.push_back(std::move(outcome.log));
        } catch (const std::exception& ex) {
            r.failures.push_back(ex.what());
        }
    }
    return r;
}

QString items(std::size_t n) { return n == 1 ? QStringLiteral("1 item") : QString::number(n) + QStringLiteral(" items"); }

} // namespace

PutBackModel::PutBackModel(FeatureContext& context, QObject* parent) : QObject(parent), ctx_(context) {
    connect(&ctx_.log, &ActivityLog::logEntriesChanged, this, &PutBackModel::refresh);
    // Something emptied or restored elsewhere shows within a minute.
    connect(&ctx_.clock, &AppClock::ticked, this, &PutBackModel::refresh);
    refresh();
}

QString PutBackModel::notInTrashText() { return q(PutBack::kNotInTrash); }

int PutBackModel::stateOf(const QString& id) const { return states_.value(id, None); }

std::vector<QString> PutBackModel::runMembers(const QString& id) const {
    std::vector<QString> out;
    const auto& log = ctx_.log.logEntries();
    const auto it = std::find_if(log.begin(), log.end(), [&](const ActionLogEntry& e) { return q(e.id.text()) == id; });
    if (it == log.end()) return out;
    if (!it->runID) {
        if (stateOf(id) == Available) out.push_back(id);
        return out;
    }
    for (const auto& e : log)
        if (e.runID == it->runID && stateOf(q(e.id.text())) == Available) out.push_back(q(e.id.text()));
    return out;
}

QString PutBackModel::runButtonText(const QString& id) const { return runButtons_.value(id).toString(); }

void PutBackModel::putBack(const QString& id) {
    if (stateOf(id) != Available) return;
    std::vector<ActionLogEntry> chosen;
    for (const auto& e : ctx_.log.logEntries())
        if (q(e.id.text()) == id) chosen.push_back(e);
    start(std::move(chosen));
}

void PutBackModel::putBackRun(const QString& id) {
    const auto members = runMembers(id);
    std::vector<ActionLogEntry> chosen;
    for (const auto& e : ctx_.log.logEntries())
        if (std::find(members.begin(), members.end(), q(e.id.text())) != members.end()) chosen.push_back(e);
    start(std::move(chosen));
}

void PutBackModel::start(std::vector<ActionLogEntry> entries) {
    if (busy_ || entries.empty()) return;
    busy_ = true;
    emit busyChanged();
    const std::string home = ctx_.folders.home;
    const std::size_t asked = entries.size();
    QPointer<PutBackModel> self(this);
    auto work = QtConcurrent::run([entries = std::move(entries), home] { return putBackAll(entries, home); });
    whenDone(work, this, [self, asked](RunResult r) {
        if (!self) return;
        PutBackModel& m = *self;
        if (!r.logs.empty()) m.ctx_.log.addLogEntries(r.logs);
        QString text;
        if (asked == 1 && r.failures.empty()) text = QStringLiteral("Put back “%1”.").arg(q(r.firstName));
        else if (asked == 1) text = q(r.failures.front());
        else if (r.failures.empty()) text = QStringLiteral("Put back %1.").arg(items(r.logs.size()));
        else {
            text = QStringLiteral("Put back %1 of %2. ").arg(r.logs.size()).arg(items(asked)) + q(r.failures.front());
            if (r.failures.size() > 1) text += QStringLiteral(" %1 need attention.").arg(items(r.failures.size()));
        }
        for (const auto& folder : r.remade)
            text += QStringLiteral(" The folder “%1” was gone, so it was made again.").arg(q(folder));
        m.setMessage(text, !r.failures.empty());
        m.busy_ = false;
        emit m.busyChanged();
        emit m.finished();
        m.refresh();
    });
}

void PutBackModel::refresh() {
    token_ = Uuid::generate();
    const auto token = token_;
    auto log = ctx_.log.logEntries();
    QPointer<PutBackModel> self(this);
    auto work = QtConcurrent::run([log = std::move(log)] { return PutBack::states(log); });
    whenDone(work, this, [self, token](std::map<Uuid, PutBack::State> states) {
        if (!self || token != self->token_) return; // a newer look has started
        QHash<QString, int> next;
        for (const auto& [id, state] : states) next.insert(q(id.text()), static_cast<int>(state));
        if (next == self->states_) return;
        self->states_ = std::move(next);
        self->statesMap_.clear();
        for (auto it = self->states_.cbegin(); it != self->states_.cend(); ++it) self->statesMap_.insert(it.key(), it.value());
        // Each clean's entries still in the Trash, newest first: the button goes on the first.
        std::map<Uuid, std::vector<QString>> runs;
        for (const auto& e : self->ctx_.log.logEntries())
            if (e.runID && self->stateOf(q(e.id.text())) == Available) runs[*e.runID].push_back(q(e.id.text()));
        self->runButtons_.clear();
        for (const auto& [run, ids] : runs)
            if (ids.size() >= 2) self->runButtons_.insert(ids.front(), QStringLiteral("Put back all %1 items").arg(ids.size()));
        emit self->statesChanged();
    });
}

void PutBackModel::setMessage(const QString& text, bool refusal) {
    message_ = text;
    messageIsRefusal_ = refusal;
    emit messageChanged();
}

void PutBackModel::dismissMessage() { setMessage(QString(), false); }

} // namespace bv
