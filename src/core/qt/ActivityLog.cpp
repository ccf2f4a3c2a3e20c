#include "core/qt/ActivityLog.h"

#include <QVariantMap>

#include "core/ActionLog.h"
#include "core/LogStatistics.h"
#include "core/qt/AppClock.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "foundation/ByteText.h"
#include "foundation/CalendarContext.h"

namespace bv {

ActivityLog::ActivityLog(bool live, AppPersistence store, std::string home, AppClock& clock,
                         const CalendarContext& calendar, Settings& settings, NotificationCenter& notifications,
                         QObject* parent)
    : QObject(parent), live_(live), store_(std::move(store)), home_(std::move(home)), clock_(clock),
      calendar_(calendar), settings_(settings), notifications_(notifications), entries_(this) {
    if (live_) log_ = loadLog(store_);
    connect(&settings_, &Settings::changed, this, &ActivityLog::recompute);
    recompute();
}

void ActivityLog::logChanged() {
    ++logRevision_;
    if (live_) saveLog(store_, log_);
    emit logEntriesChanged();
    recompute();
}

void ActivityLog::addLogEntries(const std::vector<ActionLogEntry>& entries) {
    std::optional<MilestoneNotice> milestone;
    bool changedLog = false;
    settings_.update([&](BrimvaleSettings& s) {
        const LogAddition change = bv::addLogEntries(log_, s, entries, clock_.now(), calendar_);
        changedLog = change.logChanged;
        milestone = change.milestone;
    });
    if (!changedLog) return;
    if (milestone && live_)
        notifications_.postNotification(q(milestone->title), q(milestone->body));
    logChanged();
}

void ActivityLog::clearLog() {
    bv::clearLog(log_);
    logChanged();
}

void ActivityLog::backfillLifetimeCounters() {
    settings_.update([&](BrimvaleSettings& s) { (void)bv::backfillLifetimeCounters(log_, s); });
}

void ActivityLog::setClearNow(bool clear) {
    if (clearNow_ == clear) return;
    clearNow_ = clear;
    recompute();
}

void ActivityLog::recompute() {
    const TimePoint now = clock_.now();
    const qint64 week = bytesFreedThisWeek(log_, now, calendar_);
    const int streak = tidyStreak(log_, clearNow_, now, calendar_);
    QVariantList bars;
    for (const auto& bar : bv::weekBars(log_, now, calendar_))
        bars.push_back(QVariantMap{{QStringLiteral("label"), q(bar.label)},
                                   {QStringLiteral("bytes"), static_cast<double>(bar.bytes)},
                                   {QStringLiteral("text"), bar.bytes >= 1 ? q(byteText(bar.bytes)) : QString()}});
    const auto& s = settings_.value();
    QString lifetime;
    if (s.lifetimeBytesFreed >= 1) {
        const auto n = s.lifetimeCleanups;
        lifetime = q(byteText(s.lifetimeBytesFreed)) + QStringLiteral(" freed across ") +
                   (n == 1 ? QStringLiteral("1 cleanup") : QString::number(n) + QStringLiteral(" cleanups"));
    }
    const auto totalsBefore = dayTotals_;
    const int rowsBefore = entries_.rowCount();
    recomputeList(now);
    if (week == weekBytes_ && streak == streak_ && bars == weekBars_ && lifetime == lifetimeText_ &&
        totalsBefore == dayTotals_ && rowsBefore == entries_.rowCount())
        return;
    weekBytes_ = week;
    streak_ = streak;
    weekBars_ = std::move(bars);
    lifetimeText_ = std::move(lifetime);
    emit changed();
}

void ActivityLog::setQuery(const QString& query) {
    if (query_ == query) return;
    query_ = query;
    emit queryChanged();
    recompute();
}

void ActivityLog::recomputeList(TimePoint now) {
    const ListStamp stamp{logRevision_, query_, calendar_.startOfDay(now)};
    if (listStamp_ == stamp) return;
    listStamp_ = stamp;
    const auto days = activityDays(log_, query_.toStdString(), now, calendar_);
    QVariantMap totals;
    for (const auto& day : days) totals.insert(q(day.title), day.total >= 1 ? q(byteText(day.total)) : QString());
    dayTotals_ = totals;
    entries_.setDays(days, calendar_, home_);
}

QString ActivityLog::weekTotalText() const { return q(byteText(weekBytes_)); }
QString ActivityLog::weekBadge() const { return weekBytes_ >= 1 ? weekTotalText() : QString(); }
QString ActivityLog::streakText() const { return q(tidyStreakText(streak_)); }
QString ActivityLog::lifetimeText() const { return lifetimeText_; }
QString ActivityLog::searchHint() { return QString::fromUtf8(kHistorySearchHint); }
QString ActivityLog::streakCaption() { return QString::fromUtf8(kStreakCaption); }
QString ActivityLog::clearTitle() { return QString::fromUtf8(ClearLogTexts::title); }
QString ActivityLog::clearMessage() { return QString::fromUtf8(ClearLogTexts::message); }
QString ActivityLog::clearButton() { return QString::fromUtf8(ClearLogTexts::confirmButton); }
QString ActivityLog::cancelButton() { return QString::fromUtf8(ClearLogTexts::cancelButton); }

} // namespace bv
