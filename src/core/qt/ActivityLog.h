#pragma once
#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <vector>

#include "core/ActionLogEntry.h"
#include "core/qt/HistoryListModel.h"
#include "foundation/CalendarContext.h"

namespace bv {

// What the History screen, the Overview's week card and the sidebar badge show of the log.
// Owned by AppModel (AppModel.activityLog in QML), which feeds it the log and the inputs of
// the streak whenever they change; everything here is computed from those on the main
// thread. The search text is view state kept here so the list follows it.
class ActivityLog : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
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
    explicit ActivityLog(QObject* parent = nullptr);

    struct Inputs {
        std::vector<ActionLogEntry> log; // newest first
        bool clearNow = false;
        TimePoint now;
        CalendarContext calendar = CalendarContext::current();
        std::int64_t lifetimeBytes = 0;
        std::int64_t lifetimeCleanups = 0;
    };
    // Recomputes every figure and the list; signals only what changed.
    void update(Inputs inputs);

    [[nodiscard]] QString query() const { return query_; }
    void setQuery(const QString& query);
    [[nodiscard]] HistoryListModel* entries() { return &entries_; }
    [[nodiscard]] bool isEmpty() const { return inputs_.log.empty(); }
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

private:
    void recomputeList();

    Inputs inputs_;
    QString query_;
    HistoryListModel entries_;
    qint64 weekBytes_ = 0;
    QVariantList weekBars_;
    QVariantMap dayTotals_;
    int streak_ = 0;
};

} // namespace bv
