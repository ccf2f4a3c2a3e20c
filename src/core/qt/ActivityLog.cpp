#include "core/qt/ActivityLog.h"

#include <QVariantMap>

#include "core/ActionLog.h"
#include "foundation/ByteText.h"

namespace bv {

ActivityLog::ActivityLog(QObject* parent) : QObject(parent), entries_(this) {}

void ActivityLog::update(Inputs inputs) {
    inputs_ = std::move(inputs);
    const auto& cal = inputs_.calendar;
    weekBytes_ = bytesFreedThisWeek(inputs_.log, inputs_.now, cal);
    streak_ = tidyStreak(inputs_.log, inputs_.clearNow, inputs_.now, cal);
    QVariantList bars;
    for (const auto& bar : bv::weekBars(inputs_.log, inputs_.now, cal)) {
        QVariantMap m;
        m.insert(QStringLiteral("label"), QString::fromStdString(bar.label));
        m.insert(QStringLiteral("bytes"), static_cast<double>(bar.bytes));
        m.insert(QStringLiteral("text"), bar.bytes >= 1 ? QString::fromStdString(byteText(bar.bytes)) : QString());
        bars.push_back(m);
    }
    weekBars_ = bars;
    recomputeList();
    emit changed();
}

void ActivityLog::setQuery(const QString& query) {
    if (query_ == query) return;
    query_ = query;
    emit queryChanged();
    recomputeList();
    emit changed();
}

void ActivityLog::recomputeList() {
    const auto days = activityDays(inputs_.log, query_.toStdString(), inputs_.now, inputs_.calendar);
    QVariantMap totals;
    for (const auto& day : days)
        totals.insert(QString::fromStdString(day.title),
                      day.total >= 1 ? QString::fromStdString(byteText(day.total)) : QString());
    dayTotals_ = totals;
    entries_.setDays(days, inputs_.calendar);
}

QString ActivityLog::weekTotalText() const { return QString::fromStdString(byteText(weekBytes_)); }

QString ActivityLog::weekBadge() const { return weekBytes_ >= 1 ? weekTotalText() : QString(); }

QString ActivityLog::streakText() const { return QString::fromStdString(tidyStreakText(streak_)); }

QString ActivityLog::lifetimeText() const {
    if (inputs_.lifetimeBytes < 1) return {};
    const auto n = inputs_.lifetimeCleanups;
    return QString::fromStdString(byteText(inputs_.lifetimeBytes)) + QStringLiteral(" freed across ") +
           (n == 1 ? QStringLiteral("1 cleanup") : QString::number(n) + QStringLiteral(" cleanups"));
}

QString ActivityLog::searchHint() { return QString::fromUtf8(kHistorySearchHint); }
QString ActivityLog::streakCaption() { return QString::fromUtf8(kStreakCaption); }
QString ActivityLog::clearTitle() { return QString::fromUtf8(ClearLogTexts::title); }
QString ActivityLog::clearMessage() { return QString::fromUtf8(ClearLogTexts::message); }
QString ActivityLog::clearButton() { return QString::fromUtf8(ClearLogTexts::confirmButton); }
QString ActivityLog::cancelButton() { return QString::fromUtf8(ClearLogTexts::cancelButton); }

} // namespace bv
