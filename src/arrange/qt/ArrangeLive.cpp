#include "arrange/qt/ArrangeLive.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <QtConcurrent/QtConcurrent>

#include <algorithm>

#include "arrange/ArrangePatterns.h"
#include "arrange/ArrangeTexts.h"
#include "arrange/NamePattern.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/QtText.h"
#include "core/qt/WhenDone.h"
#include "platform/XdgPaths.h"
#include "sort/RuleMatcher.h"
#include "sort/RuleRunEngine.h"

namespace bv {
namespace {

constexpr std::size_t kPreviewRows = 50;

std::chrono::milliseconds untilDeadline(TimePoint deadline, TimePoint now) {
    return std::max(std::chrono::milliseconds(0), std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now));
}

} // namespace

ArrangeLive::ArrangeLive(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context), downloads_(XdgPaths::downloads()), desktop_(XdgPaths::desktop()) {
    deadline_ = new QTimer(this);
    deadline_->setSingleShot(true);
    connect(deadline_, &QTimer::timeout, this, &ArrangeLive::wake);
    if (watcher_.fd() >= 0) {
        notifier_ = new QSocketNotifier(watcher_.fd(), QSocketNotifier::Read, this);
        connect(notifier_, &QSocketNotifier::activated, this, &ArrangeLive::readEvents);
    }
    // Each tick catches up: a file that arrived while nothing watched, or whose event was
    // missed, is taken up within a minute; the sweep also brings the watcher in line.
    connect(&ctx_.clock, &AppClock::ticked, this, [this] {
        if (arrangeWatchedPlaces(rules_).empty() && !isWatching()) return;
        timers_.noteTick(ctx_.clock.now());
        wake();
    });
}

ArrangeLive::~ArrangeLive() = default;

void ArrangeLive::setRules(std::vector<SortRule> rules) {
    if (rules == rules_) return;
    rules_ = std::move(rules);
    alignWatcher();
    emit patternsChanged();
}

void ArrangeLive::editRules(std::vector<SortRule> rules) {
    if (rules == rules_) return;
    rules_ = std::move(rules);
    emit rulesEdited(rules_);
    alignWatcher();
    emit patternsChanged();
}

void ArrangeLive::start() {
    started_ = true;
    alignWatcher();
}

void ArrangeLive::alignWatcher() {
    if (!ctx_.live || !started_) return;
    const bool wasWatching = isWatching();
    if (arrangeWatchedPlaces(rules_).empty()) {
        watcher_.stop();
        timers_.clear();
        deadline_->stop();
    } else if (!watcher_.isArmed()) {
        (void)watcher_.start(downloads_);
        if (!wasWatching && isWatching()) {
            timers_.noteTick(ctx_.clock.now());
            schedule();
        }
    }
    if (wasWatching != isWatching()) emit watchingChanged();
}

void ArrangeLive::readEvents() {
    const TimePoint now = ctx_.clock.now();
    for (const DirectoryEvent& e : watcher_.readEvents()) timers_.noteEntryEvent(now, e.name, e.left);
    // Rest a moment before reading again: a folder filling fast wakes us ten times a second,
    // not once per file.
    notifier_->setEnabled(false);
    QTimer::singleShot(ArrangeTimers::kReadPause, this, [this] { notifier_->setEnabled(true); });
    schedule();
}

void ArrangeLive::schedule() {
    if (const auto next = timers_.nextDeadline())
        deadline_->start(untilDeadline(*next, ctx_.clock.now()));
    else
        deadline_->stop();
}

void ArrangeLive::wake() {
    if (timers_.takeDue(ctx_.clock.now())) startSweep();
    schedule();
}

void ArrangeLive::sweepNow() {
    if (timers_.begin()) startSweep();
}

void ArrangeLive::startSweep() {
    alignWatcher();
    if (!ctx_.live || !isWatching()) {
        timers_.finish(ctx_.clock.now(), false);
        return;
    }
    QPointer<ArrangeLive> self(this);
    auto work = QtConcurrent::run([downloads = downloads_, desktop = desktop_, calendar = ctx_.calendar, rules = rules_,
                       tracker = tracker_, leftAlone = leftAlone_, now = ctx_.clock.now()] {
        QThread::currentThread()->setPriority(QThread::LowPriority);
        const RuleRunEngine engine(downloads, desktop, calendar);
        auto outcome = runArrangeSweep(downloads, rules, tracker, leftAlone, now, engine);
        QThread::currentThread()->setPriority(QThread::NormalPriority);
        return outcome;
    });
    whenDone(work, this, [self](ArrangeSweepOutcome outcome) {
        if (self) self->finishSweep(std::move(outcome));
    });
}

void ArrangeLive::finishSweep(ArrangeSweepOutcome outcome) {
    tracker_ = std::move(outcome.tracker);
    leftAlone_ = std::move(outcome.leftAlone);
    waiting_ = std::move(outcome.waiting);
    takeMoves(outcome.moved);
    if (const auto body = arrange_text::notificationBody(outcome.moved, rules_))
        ctx_.notifications.postNotification(q(arrange_text::kNotificationTitle), q(*body));
    // A pattern just saved offers the files that were there before it, once they have
    // settled (a sweep still waiting on some file keeps the offer pending).
    for (auto it = offerOnNextSweep_.begin(); it != offerOnNextSweep_.end();) {
        if (waiting_.count(*it) && !waiting_[*it].empty()) {
            offer_ = *it;
            emit offerChanged();
            it = offerOnNextSweep_.erase(it);
        } else {
            ++it;
        }
    }
    if (!outcome.stillSettling) offerOnNextSweep_.clear();
    unfinished_ = std::move(outcome.unfinished);
    timers_.finish(ctx_.clock.now(), outcome.stillSettling, outcome.movedNames());
    schedule();
    emit patternsChanged();
    emit sweepFinished();
}

void ArrangeLive::takeMoves(const std::vector<ArrangeMoved>& moved) {
    if (moved.empty()) return;
    std::vector<SortRule> rules = rules_;
    if (recordArrangeMoves(rules, moved)) editRules(std::move(rules));
    std::vector<ActionLogEntry> entries;
    for (const ArrangeMoved& m : moved) entries.push_back(m.entry);
    ctx_.log.addLogEntries(entries);
}

QString ArrangeLive::savePattern(const QString& glob, const QString& folder) {
    std::vector<SortRule> rules = rules_;
    const auto saved = saveArrangePatterns({{glob.toStdString(), folder.toStdString()}}, rules, ctx_.clock.now());
    if (saved.message) return q(*saved.message);
    for (const SortRule& rule : saved.rules) {
        offerOnNextSweep_.insert(rule.id);
        rules.push_back(rule);
    }
    editRules(std::move(rules));
    sweepNow();
    return {};
}

void ArrangeLive::previewPattern(const QString& glob) {
    previewToken_ = Uuid::generate();
    const auto pattern = NamePattern::parse(glob.toStdString());
    if (!pattern) {
        sheetPreview_ = QVariantMap{{"valid", false}, {"matchLine", q("Matching files appear here as you type.")}};
        emit sheetPreviewChanged();
        return;
    }
    const SortRule draft = makeArrangeRule(glob.toStdString(), *pattern, {}, ctx_.clock.now());
    QPointer<ArrangeLive> self(this);
    const QString description = q(describeNamePattern(*pattern));
    auto work = QtConcurrent::run([downloads = downloads_, draft, now = ctx_.clock.now()] {
        const RuleMatcher matcher(draft);
        std::vector<std::string> names;
        for (const FileSample& s : finishedDownloads(gatherSamples(downloads, SortPlace::downloads, true, now)))
            if (matcher.matches(s, now)) names.push_back(s.name);
        std::sort(names.begin(), names.end());
        return names;
    });
    whenDone(work, this, [self, token = previewToken_, description](std::vector<std::string> names) {
        if (!self || token != self->previewToken_) return;
        QStringList shown;
        for (std::size_t i = 0; i < names.size() && i < kPreviewRows; ++i) shown << q(names[i]);
        self->sheetPreview_ = QVariantMap{{"valid", true},
                                          {"description", description},
                                          {"matchLine", q(arrange_text::sheetMatchLine(names.size()))},
                                          {"matches", shown}};
        emit self->sheetPreviewChanged();
    });
}

void ArrangeLive::arrangeNow(const QString& ruleID, const QStringList& paths) {
    const SortRule* rule = ruleByID(ruleID);
    if (!rule || !ctx_.live) return;
    std::set<std::string> chosen;
    for (const QString& p : paths) chosen.insert(p.toStdString());
    QPointer<ArrangeLive> self(this);
    auto work = QtConcurrent::run([downloads = downloads_, desktop = desktop_, calendar = ctx_.calendar, pattern = *rule, chosen,
                       now = ctx_.clock.now()] {
        return bv::arrangeNow(downloads, pattern, chosen, now, RuleRunEngine(downloads, desktop, calendar));
    });
    whenDone(work, this, [self, id = rule->id](ArrangeSweepOutcome outcome) {
        if (!self) return;
        const bool found = !outcome.moved.empty() || !outcome.errors.empty();
        self->notes_[id] = arrange_text::arrangeNowResult(outcome.moved.size(), found);
        auto& waiting = self->waiting_[id];
        for (const ArrangeMoved& m : outcome.moved)
            std::erase_if(waiting, [&](const FileSample& s) { return s.path == m.entry.sourcePath; });
        self->takeMoves(outcome.moved);
        emit self->patternsChanged();
    });
}

void ArrangeLive::setPatternEnabled(const QString& ruleID, bool on) {
    std::vector<SortRule> rules = rules_;
    for (SortRule& rule : rules)
        if (q(rule.id.text()) == ruleID) rule.isEnabled = on;
    editRules(std::move(rules));
}

void ArrangeLive::removePattern(const QString& ruleID) {
    const SortRule* rule = ruleByID(ruleID);
    if (!rule) return;
    const Uuid id = rule->id;
    waiting_.erase(id);
    notes_.erase(id);
    if (offer_ == id) clearOffer();
    editRules(withoutRule(rules_, id));
}

QString ArrangeLive::removeExplanation(const QString& ruleID) const {
    const SortRule* rule = ruleByID(ruleID);
    return rule ? q(removePatternExplanation(*rule)) : QString();
}

void ArrangeLive::clearOffer() {
    if (!offer_) return;
    offer_.reset();
    emit offerChanged();
}

QString ArrangeLive::offer() const { return offer_ ? q(offer_->text()) : QString(); }

QStringList ArrangeLive::settling() const {
    QStringList out;
    for (const std::string& name : unfinished_) out << q(name);
    return out;
}

QVariantList ArrangeLive::patterns() const {
    QVariantList out;
    for (const SortRule& rule : rules_) {
        if (rule.kind != SortRuleKind::arrange) continue;
        QVariantList waiting;
        if (const auto found = waiting_.find(rule.id); found != waiting_.end())
            for (const FileSample& s : found->second) waiting << QVariantMap{{"name", q(s.name)}, {"path", q(s.path)}};
        const auto note = notes_.find(rule.id);
        out << QVariantMap{{"id", q(rule.id.text())},
                           {"glob", q(arrangeGlob(rule))},
                           {"folder", q(rule.action.argument)},
                           {"folderName", q(rule.destinationName().value_or("a folder"))},
                           {"isEnabled", rule.isEnabled},
                           {"status", q(arrange_text::statusLine(rule))},
                           {"note", note != notes_.end() ? q(note->second) : QString()},
                           {"waiting", waiting}};
    }
    return out;
}

const SortRule* ArrangeLive::ruleByID(const QString& id) const {
    const auto found = std::find_if(rules_.begin(), rules_.end(), [&](const SortRule& r) { return q(r.id.text()) == id; });
    return found != rules_.end() ? &*found : nullptr;
}

} // namespace bv
