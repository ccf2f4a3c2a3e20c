#include "autopilot/qt/FolderRulesModel.h"

#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include "autopilot/AutopilotRun.h"
#include "autopilot/FolderRuleParser.h"
#include "autopilot/FolderRuleSaving.h"
#include "clean/DevCacheCatalog.h"
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

constexpr const char* kKeptSafe =
    "That folder is kept safe. Choose a project folder instead. Your home folder, whole drives, Desktop, Documents, "
    "Downloads, Pictures, Movies, Music, and Library can\u2019t be cleaned automatically.";

} // namespace

FolderRulesModel::FolderRulesModel(const FeatureContext& context, QObject* parent) : QObject(parent), ctx_(context) {
    if (ctx_.live) rules_ = loadFolderRules(ctx_.store);
    draft_.schedule = ctx_.settings.value().defaultFolderSchedule;
    // The open builder follows a new default schedule at once.
    connect(&ctx_.settings, &Settings::defaultFolderScheduleChanged, this, [this] {
        draft_.schedule = ctx_.settings.value().defaultFolderSchedule;
        emit draftChanged();
    });
    connect(&ctx_.clock, &AppClock::ticked, this, &FolderRulesModel::runDue);
}

void FolderRulesModel::setFolderRules(std::vector<FolderWatchRule> rules) {
    if (rules == rules_) return;
    rules_ = std::move(rules);
    if (ctx_.live) saveFolderRules(ctx_.store, rules_);
    emit folderRulesChanged();
}

void FolderRulesModel::setDraft(FolderRuleDraft draft) {
    if (draft == draft_) return;
    draft_ = std::move(draft);
    previewed_.reset();
    emit draftChanged();
}

void FolderRulesModel::chooseFolder(const QString& path) {
    const std::string folder = DevCacheCatalog::standardizedPath(path.toStdString());
    if (DevCacheCatalog::isUnsafeRuleFolder(folder, ctx_.folders.home)) {
        ctx_.messages.setErrorMessage(std::string(kKeptSafe));
        return;
    }
    FolderRuleDraft d = draft_;
    d.parentPath = folder;
    setDraft(std::move(d));
}

void FolderRulesModel::setSentence(const QString& phrase) {
    FolderRuleDraft d = draft_;
    d.phrase = phrase.toStdString();
    if (const auto parsed = FolderRuleParser::parse(d.phrase)) {
        d.apply(*parsed);
    } else {
        d.parsed.reset();
        d.parseError = d.phrase.empty() ? std::nullopt : std::optional<std::string>(kFolderRuleUnrecognized);
    }
    setDraft(std::move(d));
}

void FolderRulesModel::setDraftField(const QString& key, const QVariant& value) {
    FolderRuleDraft d = draft_;
    if (key == "namesText") d.namesText = value.toString().toStdString();
    else if (key == "extensionsText") d.extensionsText = value.toString().toStdString();
    else if (key == "glob") d.glob = value.toString().toStdString();
    else if (key == "minimumAgeDays") d.minimumAgeDays = std::max<qlonglong>(1, value.toLongLong());
    else if (key == "keepNewest") d.keepNewest = std::max<qlonglong>(0, value.toLongLong());
    else if (key == "useAge") d.useAge = value.toBool();
    else if (key == "useKeepNewest") d.useKeepNewest = value.toBool();
    else if (key == "directoriesOnly") d.directoriesOnly = value.toBool();
    else if (key == "includeSubfolders") d.scope = value.toBool() ? FolderScope::recursive : FolderScope::children;
    else if (key == "permanent") d.disposition = value.toBool() ? CleanupDisposition::permanent : CleanupDisposition::trash;
    else if (key == "schedule") d.schedule = cleanScheduleFromName(value.toString().toStdString()).value_or(d.schedule);
    setDraft(std::move(d));
}

void FolderRulesModel::editRule(int index) {
    if (index < 0 || index >= static_cast<int>(rules_.size())) return;
    const FolderWatchRule& r = rules_[static_cast<size_t>(index)];
    FolderRuleDraft d = FolderRuleDraft::fresh(r.schedule);
    d.phrase = r.phrase;
    d.parentPath = r.parentPath;
    d.parentBookmark = r.parentBookmark;
    d.namesText.clear();
    for (const auto& n : r.names) d.namesText += (d.namesText.empty() ? "" : ", ") + n;
    for (const auto& e : r.extensions) d.extensionsText += (d.extensionsText.empty() ? "" : ", ") + e;
    d.glob = r.glob.value_or("");
    d.useAge = r.minimumAgeDays.has_value();
    d.minimumAgeDays = r.minimumAgeDays.value_or(7);
    d.useKeepNewest = r.keepNewest.has_value();
    d.keepNewest = r.keepNewest.value_or(5);
    d.directoriesOnly = r.directoriesOnly;
    d.scope = r.scope;
    d.disposition = r.disposition;
    editing_ = r.id;
    setDraft(std::move(d));
}

void FolderRulesModel::continueToPreview() {
    if (auto problem = previewCheckMessage(draft_, ctx_.folders.home)) {
        ctx_.messages.setErrorMessage(*problem);
        return;
    }
    const FolderWatchRule rule = FolderRuleSaving::ruleFromDraft(draft_, ctx_.clock.now());
    const std::string home = ctx_.folders.home;
    const TimePoint now = ctx_.clock.now();
    previewToken_ = Uuid::generate();
    const Uuid token = previewToken_;
    QPointer<FolderRulesModel> self(this);
    auto work = QtConcurrent::run([rule, now, home] { return FolderRuleRunner::plan(rule, now, home); });
    whenDone(work, this, [self, token](std::optional<CleanupPlan> plan) {
        if (!self || token != self->previewToken_) return;
        if (!plan) {
            self->ctx_.messages.setErrorMessage(std::string("Choose a folder first."));
            return;
        }
        std::int64_t bytes = 0;
        for (const auto& e : plan->entries) bytes += e.bytes;
        self->previewed_ = {static_cast<std::int64_t>(plan->entries.size()), bytes};
        (void)self->ctx_.presentPlan(std::move(*plan), CleanupSheetMode::saveFolderRule);
    });
}

void FolderRulesModel::confirmRule() {
    if (!previewed_) return;
    const auto saved = FolderRuleSaving::save(rules_, draft_, editing_, previewed_->first, previewed_->second,
                                              ctx_.clock.now(), ctx_.calendar, ctx_.settings.value().defaultFolderSchedule,
                                              ctx_.live ? ctx_.store : AppPersistence());
    editing_.reset();
    rules_ = saved.rules;
    emit folderRulesChanged();
    setDraft(saved.draft);
    ctx_.messages.setBanner(saved.message);
}

void FolderRulesModel::removeRule(int index) {
    if (index < 0 || index >= static_cast<int>(rules_.size())) return;
    auto rules = rules_;
    rules.erase(rules.begin() + index);
    setFolderRules(std::move(rules));
}

void FolderRulesModel::runNow(int index) {
    if (running_ || index < 0 || index >= static_cast<int>(rules_.size())) return;
    startRun({rules_[static_cast<size_t>(index)]});
}

void FolderRulesModel::runDue() {
    if (running_ || !ctx_.live) return; // a model without live data starts nothing by itself
    const TimePoint now = ctx_.clock.now();
    const auto due = AutopilotRun::dueRules(rules_, now);
    if (due.empty()) return;
    // The next run moves before any work, so a failing rule does not retry on every tick.
    auto rules = rules_;
    AutopilotRun::advanceDue(rules, due, now, ctx_.calendar);
    std::vector<FolderWatchRule> work;
    for (size_t i : due) work.push_back(rules_[i]);
    setFolderRules(std::move(rules));
    startRun(std::move(work));
}

void FolderRulesModel::startRun(std::vector<FolderWatchRule> rules) {
    running_ = true;
    emit runningChanged();
    ctx_.messages.setBanner(std::string(AutopilotRun::kRunningStatus));
    ctx_.cues.play("start", 1.0);
    AutopilotRun::Environment env;
    env.home = ctx_.folders.home;
    env.logsFolder = ctx_.folders.logs;
    const TimePoint now = ctx_.clock.now();
    QPointer<FolderRulesModel> self(this);
    auto work = QtConcurrent::run([rules = std::move(rules), now, env] { return AutopilotRun::run(rules, now, env); });
    whenDone(work, this, [self](AutopilotRun::Result result) {
        if (!self) return;
        FolderRulesModel& m = *self;
        m.running_ = false;
        emit m.runningChanged();
        if (m.ctx_.messages.banner() == std::optional<std::string>(AutopilotRun::kRunningStatus))
            m.ctx_.messages.setBanner(std::nullopt);
        auto updated = m.rules_;
        for (auto& r : updated)
            for (const auto& id : result.turnedOff)
                if (r.id == id) r.isEnabled = false;
        m.setFolderRules(std::move(updated));
        std::vector<ActionLogEntry> logs = result.cleaned.logs;
        for (const auto& s : result.skips) logs.push_back(s.log);
        if (!logs.empty()) m.ctx_.log.addLogEntries(logs);
        if (result.freedMessage)
            m.ctx_.notifications.postNotification(q(AutopilotRun::kFreedTitle), q(*result.freedMessage));
        for (const auto& s : result.skips) m.ctx_.notifications.postNotification(q(AutopilotRun::kSkipTitle), q(s.text));
    });
}

QVariantList FolderRulesModel::rulesForQml() const {
    QVariantList out;
    for (const auto& r : rules_) {
        QVariantMap row;
        row["id"] = q(r.id.text());
        row["name"] = q(folderRuleName(r));
        row["folder"] = q(r.parentPath);
        QStringList lines;
        for (const auto& l : r.detailLines()) lines << q(l);
        row["detailLines"] = lines;
        row["isEnabled"] = r.isEnabled;
        row["scheduleNote"] = r.schedule == CleanSchedule::off ? QStringLiteral("Runs when you press Run now") : QString();
        row["boundText"] = r.confirmedCount && r.confirmedBytes
                               ? QStringLiteral("Bounded by preview: ") + QString::number(*r.confirmedCount) +
                                     (*r.confirmedCount == 1 ? " item, " : " items, ") + q(byteText(*r.confirmedBytes))
                               : QString();
        out << row;
    }
    return out;
}

QString FolderRulesModel::countText() const {
    qsizetype n = 0;
    for (const auto& r : rules_) n += r.isEnabled && r.schedule != CleanSchedule::off ? 1 : 0;
    return QString::number(n) + (n == 1 ? " rule running on its own" : " rules running on their own");
}

QVariantMap FolderRulesModel::draftForQml() const {
    QVariantMap m;
    m["phrase"] = q(draft_.phrase);
    m["folder"] = q(draft_.parentPath);
    m["parseError"] = q(draft_.parseError);
    m["interpretation"] = draft_.parsed ? q(draft_.parsed->interpretation) : QString();
    m["namesText"] = q(draft_.namesText);
    m["extensionsText"] = q(draft_.extensionsText);
    m["glob"] = q(draft_.glob);
    m["minimumAgeDays"] = static_cast<qlonglong>(draft_.minimumAgeDays);
    m["keepNewest"] = static_cast<qlonglong>(draft_.keepNewest);
    m["useAge"] = draft_.useAge;
    m["useKeepNewest"] = draft_.useKeepNewest;
    m["directoriesOnly"] = draft_.directoriesOnly;
    m["includeSubfolders"] = draft_.scope == FolderScope::recursive;
    m["permanent"] = draft_.disposition == CleanupDisposition::permanent;
    m["schedule"] = q(cleanScheduleName(draft_.schedule));
    m["editing"] = editing_.has_value();
    return m;
}

} // namespace bv
