#include "sort/qt/AutoSortModel.h"

#include <QPointer>
#include <QThread>
#include <QtConcurrent/QtConcurrent>

#include <algorithm>

#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/FolderAccessModel.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "core/qt/WhenDone.h"
#include "foundation/ByteText.h"
#include "sort/CleanupRuleRunner.h"
#include "sort/SortAutoRun.h"
#include "sort/SortPreview.h"
#include "sort/SortScreenTexts.h"
#include "sort/qt/SortRulesModel.h"

namespace bv {
namespace {

// What a preview depends on: a rule's next run or its Auto-Arrange tallies move on their own
// and don't make a preview stale.
bool samePreviewRule(SortRule a, SortRule b) {
    for (SortRule* r : {&a, &b}) {
        r->nextRun.reset();
        r->arrangedCount = 0;
        r->lastArranged.reset();
    }
    return a == b;
}

struct GatheredSamples {
    std::vector<FileSample> samples;
    bool downloadsReadable = true;
};

struct AutoRunResult {
    SortAutoRun::Plan plan;
    ApplyOutcome outcome;
};

constexpr const char* kStalePreview = "The rule changed after this preview. Preview it again before running it.";

} // namespace

AutoSortModel::AutoSortModel(const FeatureContext& context, SortRulesModel& rules, QObject* parent)
    : QObject(parent), ctx_(context), rules_(rules) {
    connect(&rules_, &SortRulesModel::sortRulesChanged, this, &AutoSortModel::afterRulesChanged);
    connect(&rules_, &SortRulesModel::draftChanged, this, [this] {
        // A change to the draft voids its preview.
        if (mode_ == Mode::draft && !isRunningRules_) {
            const auto& draft = rules_.draftSort();
            if (!draft || previewSortRules_.size() != 1 || !(draft->rule == previewSortRules_.front())) clearPreview();
        }
        retouch();
    });
    connect(&ctx_.clock, &AppClock::ticked, this, &AutoSortModel::runDue);
}

std::string AutoSortModel::downloads() const { return ctx_.folderAccess.access().downloads(); }
std::string AutoSortModel::desktop() const { return ctx_.folderAccess.access().desktop(); }
RuleRunEngine AutoSortModel::engine() const { return RuleRunEngine(downloads(), desktop(), ctx_.calendar); }

// ---- the run preview ------------------------------------------------------------------------

void AutoSortModel::clearPreview() {
    previewToken_ = Uuid::generate();
    simulation_.reset();
    mode_ = Mode::none;
    fingerprint_.clear();
    previewSortRules_.clear();
    previewCleanupRule_.reset();
    excluded_.clear();
    isPreviewing_ = false;
    isRunningRules_ = false;
    lastRun_.reset();
    emit previewChanged();
}

void AutoSortModel::beginPreview(Mode mode, std::vector<SortRule> rules, std::string fingerprint,
                                 std::optional<Uuid> olderRule) {
    clearPreview();
    mode_ = mode;
    previewCleanupRule_ = olderRule;
    previewSortRules_ = std::move(rules);
    fingerprint_ = std::move(fingerprint);
    isPreviewing_ = true;
    emit previewChanged();
    QPointer<AutoSortModel> self(this);
    const auto finish = [self, token = previewToken_](SimulationResult result) {
        if (!self || token != self->previewToken_) return; // a newer preview took over
        self->simulation_ = std::move(result);
        self->isPreviewing_ = false;
        emit self->previewChanged();
    };
    const TimePoint now = ctx_.clock.now();
    if (previewCleanupRule_) {
        const auto& older = rules_.rules();
        const auto found = std::find_if(older.begin(), older.end(), [&](const CleanupRule& r) { return r.id == *previewCleanupRule_; });
        auto work = QtConcurrent::run([older = *found, folder = downloads(), now] {
            return SortPreview::previewCleanupRule(older, folder, now);
        });
        whenDone(work, this, finish);
    } else {
        auto work = QtConcurrent::run([shown = previewSortRules_, dl = downloads(), dt = desktop(), now] {
            return SortPreview::preview(shown, dl, dt, now);
        });
        whenDone(work, this, finish);
    }
}

void AutoSortModel::startPreview(const QStringList& ruleIDs) {
    std::vector<SortRule> chosen;
    for (const SortRule& rule : rules_.sortRules()) {
        if (rule.kind != SortRuleKind::sort) continue;
        if (ruleIDs.isEmpty() ? rule.isEnabled : ruleIDs.contains(q(rule.id.text()))) chosen.push_back(rule);
    }
    std::string fingerprint = SortPreview::rulesFingerprint(chosen);
    beginPreview(Mode::runSaved, std::move(chosen), std::move(fingerprint));
}

void AutoSortModel::previewDraft() {
    const auto& draft = rules_.draftSort();
    if (!draft) return;
    beginPreview(Mode::draft, {draft->rule},
                 SortPreview::draftFingerprint(rules_.draftPhrase(), rules_.draftDestinationPath()));
}

void AutoSortModel::previewRule(const QString& cleanupRuleID) {
    const auto& older = rules_.rules();
    const auto found = std::find_if(older.begin(), older.end(), [&](const CleanupRule& r) { return q(r.id.text()) == cleanupRuleID; });
    if (found == older.end()) return;
    beginPreview(Mode::runSaved, {sortRuleFromCleanupRule(*found)}, SortPreview::cleanupRuleFingerprint(found->id), found->id);
}

void AutoSortModel::setActionTicked(const QString& actionID, bool ticked) {
    if (!simulation_) return;
    for (const PlannedAction& a : simulation_->actions) {
        if (q(a.id.text()) != actionID) continue;
        const bool changed = ticked ? excluded_.erase(a.id) > 0 : excluded_.insert(a.id).second;
        if (changed) emit previewChanged();
    }
}

std::string AutoSortModel::currentFingerprint() const {
    switch (mode_) {
    case Mode::none: return {};
    case Mode::draft: return SortPreview::draftFingerprint(rules_.draftPhrase(), rules_.draftDestinationPath());
    case Mode::runSaved: break;
    }
    if (previewCleanupRule_) {
        const auto& older = rules_.rules();
        const bool exists = std::any_of(older.begin(), older.end(), [&](const CleanupRule& r) { return r.id == *previewCleanupRule_; });
        return exists ? SortPreview::cleanupRuleFingerprint(*previewCleanupRule_) : std::string();
    }
    std::vector<SortRule> still;
    for (const SortRule& shown : previewSortRules_)
        for (const SortRule& rule : rules_.sortRules())
            if (rule.id == shown.id) still.push_back(rule);
    return SortPreview::rulesFingerprint(still);
}

bool AutoSortModel::canRun() const {
    if (!simulation_ || mode_ == Mode::none || isPreviewing_ || isRunningRules_ || lastRun_) return false;
    return std::any_of(simulation_->actions.begin(), simulation_->actions.end(),
                       [&](const PlannedAction& a) { return !excluded_.count(a.id); });
}

bool AutoSortModel::runPreview() {
    if (!canRun()) return false;
    if (currentFingerprint() != fingerprint_) {
        lastRun_ = ApplyOutcome{{}, {kStalePreview}};
        emit previewChanged();
        return false;
    }
    isRunningRules_ = true;
    emit previewChanged();
    const TimePoint now = ctx_.clock.now();
    QPointer<AutoSortModel> self(this);
    const auto finish = [self, token = previewToken_](ApplyOutcome outcome) {
        if (!self) return;
        if (token == self->previewToken_) {
            self->finishRun(outcome);
        } else if (!outcome.entries.empty()) {
            // The preview was closed meanwhile; what moved still goes into History.
            self->ctx_.log.addLogEntries(outcome.entries);
            emit self->filesChanged();
        }
    };
    if (previewCleanupRule_) {
        const auto& older = rules_.rules();
        const auto found = std::find_if(older.begin(), older.end(), [&](const CleanupRule& r) { return r.id == *previewCleanupRule_; });
        auto work = QtConcurrent::run([runner = CleanupRuleRunner(downloads(), ctx_.calendar), sim = *simulation_, skip = excluded_,
                           chosen = *found, now] { return runner.apply(sim, skip, chosen, now); });
        whenDone(work, this, finish);
        return true;
    }
    // Saved rules are taken as they stand now: one deleted since the preview leaves its steps alone.
    std::vector<SortRule> rules = previewSortRules_;
    if (mode_ == Mode::runSaved) {
        rules.clear();
        for (const SortRule& rule : rules_.sortRules())
            if (std::any_of(previewSortRules_.begin(), previewSortRules_.end(), [&](const SortRule& r) { return r.id == rule.id; }))
                rules.push_back(rule);
    }
    auto work = QtConcurrent::run([runner = engine(), sim = *simulation_, skip = excluded_, rules, now] {
        return runner.apply(sim, skip, rules, runner.gatherFresh(rules, now), now);
    });
    whenDone(work, this, finish);
    return true;
}

void AutoSortModel::finishRun(const ApplyOutcome& outcome) {
    isRunningRules_ = false;
    lastRun_ = outcome;
    if (!outcome.entries.empty()) {
        ctx_.log.addLogEntries(outcome.entries);
        emit filesChanged();
    }
    emit previewChanged();
    refreshSamples();
}

QString AutoSortModel::previewMode() const {
    switch (mode_) {
    case Mode::none: return {};
    case Mode::draft: return QStringLiteral("draft");
    case Mode::runSaved: return QStringLiteral("runSaved");
    }
    return {};
}

QVariantList AutoSortModel::previewActions() const {
    QVariantList out;
    if (!simulation_) return out;
    for (const PlannedAction& a : simulation_->actions)
        out << QVariantMap{{"id", q(a.id.text())},       {"fileName", q(a.fileName)},     {"summary", q(a.summary)},
                           {"detail", q(a.detail)},      {"symbolName", q(a.symbolName)}, {"ticked", !excluded_.count(a.id)}};
    return out;
}

QStringList AutoSortModel::previewWarnings() const {
    QStringList out;
    if (simulation_)
        for (const auto& w : simulation_->warnings) out << q(w);
    return out;
}

QString AutoSortModel::previewFootnote() const { return simulation_ ? q(bv::previewFootnote(*simulation_)) : QString(); }

QString AutoSortModel::emptyPreviewText() const {
    if (!simulation_ || !simulation_->actions.empty()) return {};
    const bool desktopOnly = !previewSortRules_.empty() &&
                             std::all_of(previewSortRules_.begin(), previewSortRules_.end(),
                                         [](const SortRule& r) { return placeNameFor(r) == "Desktop"; });
    return q(SortScreenTexts::noActionsIn(desktopOnly ? "Desktop" : simulation_->scopeName));
}

QString AutoSortModel::confirmQuestion() const {
    return simulation_ ? q(confirmationQuestion(*simulation_, excluded_, previewSortRules_)) : QString();
}

QString AutoSortModel::ruleRunSuccess() const {
    if (!lastRun_ || (lastRun_->entries.empty() && lastRun_->errors.size() == 1 && lastRun_->errors[0] == kStalePreview))
        return {};
    return q(runResultSentence(*lastRun_));
}

QStringList AutoSortModel::ruleRunErrors() const {
    QStringList out;
    if (lastRun_)
        for (const auto& e : lastRun_->errors) out << q(e);
    return out;
}

// ---- the automatic runs ---------------------------------------------------------------------

void AutoSortModel::runDue() {
    if (!ctx_.live || autoRunInFlight_ || mode_ != Mode::none || isRunningRules_) return;
    if (busyElsewhere_ && busyElsewhere_()) return;
    const TimePoint now = ctx_.clock.now();
    std::vector<SortRule> rules = rules_.sortRules();
    if (!SortAutoRun::anyDue(rules, now)) return;
    autoRunInFlight_ = true;
    emit autoRunChanged();
    QPointer<AutoSortModel> self(this);
    auto work = QtConcurrent::run([runner = engine(), dl = downloads(), dt = desktop(), calendar = ctx_.calendar,
                       all = std::move(rules), now] {
        QThread::currentThread()->setPriority(QThread::LowPriority);
        std::vector<SortRule> due;
        for (const SortRule& r : all)
            if (SortAutoRun::isDue(r, now)) due.push_back(r);
        AutoRunResult result;
        result.plan = SortAutoRun::plan(all, SortPreview::gather(due, dl, dt, now), now, calendar);
        if (!result.plan.simulation.actions.empty())
            result.outcome = runner.apply(result.plan.simulation, {}, result.plan.rules,
                                          runner.gatherFresh(result.plan.rules, now), now);
        QThread::currentThread()->setPriority(QThread::NormalPriority);
        return result;
    });
    whenDone(work, this, [self](AutoRunResult result) {
        if (!self) return;
        if (result.plan.rulesChanged) {
            // Only the next runs are taken back: the list may have changed while the run went on.
            std::vector<SortRule> kept = self->rules_.sortRules();
            for (SortRule& rule : kept)
                for (const SortRule& planned : result.plan.rules)
                    if (planned.id == rule.id && planned.nextRun) rule.nextRun = planned.nextRun;
            self->rules_.setSortRules(std::move(kept));
        }
        const auto& entries = result.outcome.entries;
        if (!entries.empty()) {
            self->ctx_.log.addLogEntries(entries);
            self->ctx_.notifications.postNotification(q(SortAutoRun::kNotificationTitle),
                                                      q(SortAutoRun::notificationBody(entries.size())));
            emit self->filesChanged();
            self->refreshSamples();
        }
        self->autoRunInFlight_ = false;
        emit self->autoRunChanged();
        emit self->autoRunFinished();
    });
}

// ---- counts, suggestions, what the draft touches --------------------------------------------

void AutoSortModel::refreshSamples() {
    if (!ctx_.live) return;
    samplesToken_ = Uuid::generate();
    QPointer<AutoSortModel> self(this);
    auto work = QtConcurrent::run([dl = downloads(), dt = desktop(), now = ctx_.clock.now()] {
        GatheredSamples g;
        g.downloadsReadable = FolderAccess::isReadableFolder(dl);
        g.samples = gatherSamples(dl, SortPlace::downloads, false, now);
        auto more = gatherSamples(dt, SortPlace::desktop, false, now);
        g.samples.insert(g.samples.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
        return g;
    });
    whenDone(work, this, [self, token = samplesToken_](GatheredSamples g) {
        if (!self || token != self->samplesToken_) return;
        self->samples_ = std::move(g.samples);
        self->downloadsReadable_ = g.downloadsReadable;
        self->recount();
        self->retouch();
    });
}

void AutoSortModel::afterRulesChanged() {
    if (mode_ == Mode::runSaved && !previewCleanupRule_ && !isRunningRules_) {
        for (const SortRule& shown : previewSortRules_) {
            const auto& current = rules_.sortRules();
            const auto same = std::find_if(current.begin(), current.end(), [&](const SortRule& r) { return r.id == shown.id; });
            if (same == current.end() || !samePreviewRule(*same, shown)) {
                clearPreview();
                break;
            }
        }
    }
    recount();
}

void AutoSortModel::recount() {
    const TimePoint now = ctx_.clock.now();
    std::vector<SortRule> sortOnly;
    for (const SortRule& r : rules_.sortRules())
        if (r.kind == SortRuleKind::sort) sortOnly.push_back(r);
    matchCounts_ = RuleSuggestions::matchCounts(sortOnly, samples_, now);
    std::vector<FileSample> inDownloads;
    for (const FileSample& s : samples_)
        if (s.location == SortPlace::downloads) inDownloads.push_back(s);
    suggestions_ = RuleSuggestions::refresh(inDownloads, now, ctx_.settings.value().dismissedSuggestions);
    emit samplesChanged();
}

void AutoSortModel::retouch() {
    std::vector<FileSample> touching;
    const auto& draft = rules_.draftSort();
    if (draft && SortScreenTexts::namesFiles(draft->rule)) {
        SortRule rule = draft->rule;
        rule.isEnabled = true;
        touching = rule.matching(samples_, ctx_.clock.now());
    }
    if (touching == touching_) return;
    touching_ = std::move(touching);
    emit touchChanged();
}

void AutoSortModel::dismissSuggestion(const QString& id) {
    const std::string key = id.toStdString();
    ctx_.settings.update([&](BrimvaleSettings& s) { s.dismissedSuggestions = RuleSuggestions::dismissing(s.dismissedSuggestions, key); });
    recount();
}

void AutoSortModel::useSuggestion(const QString& id) {
    for (const RuleSuggestion& s : suggestions_) {
        if (q(s.id) != id) continue;
        const SortRule rule = s.rule;
        rules_.newDraft();
        rules_.setDraftPhrase(q(rule.phrase));
        if (rules_.editorLineCount() > 0) rules_.setLineOverride(0, rule);
        return;
    }
}

QVariantMap AutoSortModel::matchCountsMap() const {
    QVariantMap out;
    for (const auto& [id, count] : matchCounts_) out.insert(q(id), static_cast<qint64>(count));
    return out;
}

QString AutoSortModel::tidyCountLine() const {
    std::int64_t total = 0;
    for (const auto& [id, count] : matchCounts_) total += count;
    return q(SortScreenTexts::tidyCountLine(total));
}

QVariantList AutoSortModel::suggestionsList() const {
    QVariantList out;
    for (const RuleSuggestion& s : suggestions_)
        out << QVariantMap{{"id", q(s.id)},
                           {"title", q(s.title)},
                           {"evidence", q(s.evidence)},
                           {"bytesText", q(byteText(s.bytes))},
                           {"fileCount", static_cast<qint64>(s.fileCount)}};
    return out;
}

QVariantList AutoSortModel::touchRows() const {
    QVariantList out;
    for (std::size_t i = 0; i < touching_.size() && i < SortScreenTexts::kTouchRows; ++i) {
        const FileSample& s = touching_[i];
        out << QVariantMap{{"name", q(s.name)},
                           {"detail", q(std::string(s.location == SortPlace::desktop ? "Desktop" : "Downloads") +
                                        " \u00B7 " + byteText(s.size))}};
    }
    return out;
}

} // namespace bv
