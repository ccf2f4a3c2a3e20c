#pragma once
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

#include "core/ActionLogEntry.h"
#include "core/AppPersistence.h"
#include "core/qt/HistoryListModel.h"
#include "foundation/Dates.h"

namespace bv {

class AppClock;
class CalendarContext;
class NotificationCenter;
class Settings;

// The activity log and what the History screen, the Overview's week card and the sidebar
// badge show of it. Owns the list ("log.json"); addLogEntries is the only way in. The figures
// follow the log, the clock and whether the disk is clear now; the list is rebuilt only when
// the log, the search text or the day changes, and then row by row.
class ActivityLog : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The activity log belongs to AppModel.")
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(bv::HistoryListModel* entries READ entries CONSTANT)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY changed)
    Q_PROPERTY(bool hasMatches READ hasMatches NOTIFY changed)
    Q_PROPERTY(qint64 weekBytes READ weekBytes NOTIFY changed)
    Q_PROPERTY(QString weekTotalText READ weekTotalText NOTIFY changed)
    Q_PROPERTY(QString weekBadge READ weekBadge NOTIFY changed)
    Q_PROPERTY(QVariantList weekBars READ weekBars NOTIFY changed)
    // Day title to its total's byte text ("" when nothing was freed), for section headers.
    Q_PROPERTY(QVariantMap dayTotals READ dayTotals NOTIFY changed)
    Q_PROPERTY(int streak READ streak NOTIFY changed)
    Q_PROPERTY(QString streakText READ streakText NOTIFY changed)
    Q_PROPERTY(QString lifetimeText READ lifetimeText NOTIFY changed)
    Q_PROPERTY(QString searchHint READ searchHint CONSTANT)
    Q_PROPERTY(QString weekCaption READ weekCaption CONSTANT)
    Q_PROPERTY(QString streakCaption READ streakCaption CONSTANT)
    Q_PROPERTY(QString clearTitle READ clearTitle CONSTANT)
    Q_PROPERTY(QString clearMessage READ clearMessage CONSTANT)
    Q_PROPERTY(QString clearButton READ clearButton CONSTANT)
    Q_PROPERTY(QString cancelButton READ cancelButton CONSTANT)

public:
    // `live` false: the log starts empty and is never written; milestones are not posted.
    ActivityLog(bool live, AppPersistence store, std::string home, AppClock& clock, const CalendarContext& calendar,
                Settings& settings, NotificationCenter& notifications, QObject* parent = nullptr);

    // The one way into the log: newest first, capped, saved, counted in the lifetime
    // figures; a newly reached milestone is posted as a notification.
    void addLogEntries(const std::vector<ActionLogEntry>& entries);
    // Empties History and saves "log.json"; the lifetime counters stay.
    Q_INVOKABLE void clearLog();
    // Once per start: counters from a log written before they existed.
    void backfillLifetimeCounters();
    // Whether the disk counts as clear now (nothing to clean, no scan running, refreshed),
    // which the streak counts as a tidy day.
    void setClearNow(bool clear);
    // Brings the figures up to the clock (after a refresh; carries them over midnight).
    void recompute();

    [[nodiscard]] const std::vector<ActionLogEntry>& logEntries() const { return log_; }
    [[nodiscard]] QString query() const { return query_; }
    void setQuery(const QString& query);
    [[nodiscard]] HistoryListModel* entries() { return &entries_; }
    [[nodiscard]] bool isEmpty() const { return log_.empty(); }
    [[nodiscard]] bool hasMatches() const { return entries_.rowCount() > 0; }
    [[nodiscard]] qint64 weekBytes() const { return weekBytes_; }
    [[nodiscard]] QString weekTotalText() const;
    // The sidebar's badge: the week's total when at least one byte, else nothing.
    [[nodiscard]] QString weekBadge() const;
    [[nodiscard]] QVariantList weekBars() const { return weekBars_; }
    [[nodiscard]] QVariantMap dayTotals() const { return dayTotals_; }
    [[nodiscard]] int streak() const { return streak_; }
    [[nodiscard]] QString streakText() const;
    [[nodiscard]] QString lifetimeText() const;

    [[nodiscard]] static QString searchHint();
    [[nodiscard]] static QString weekCaption() { return QStringLiteral("freed since Monday"); }
    [[nodiscard]] static QString streakCaption();
    [[nodiscard]] static QString clearTitle();
    [[nodiscard]] static QString clearMessage();
    [[nodiscard]] static QString clearButton();
    [[nodiscard]] static QString cancelButton();

signals:
    void queryChanged();
    void changed();
    void logEntriesChanged();

private:
    void logChanged();
    void recomputeList(TimePoint now);

    const bool live_;
    AppPersistence store_;
    const std::string home_;
    AppClock& clock_;
    const CalendarContext& calendar_;
    Settings& settings_;
    NotificationCenter& notifications_;

    std::vector<ActionLogEntry> log_;
    bool clearNow_ = false;
    QString query_;
    HistoryListModel entries_;
    // What the list was last built from: a revision of the log, the query, the day.
    int logRevision_ = 0;
    struct ListStamp {
        int revision = -1;
        QString query;
        TimePoint day;
        bool operator==(const ListStamp&) const = default;
    };
    std::optional<ListStamp> listStamp_;
    qint64 weekBytes_ = 0;
    QVariantList weekBars_;
    QVariantMap dayTotals_;
    int streak_ = 0;
    QString lifetimeText_;
};

} // namespace bv
