#pragma once
#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>
#include <vector>

#include "core/LogStatistics.h"

namespace bv {

// History as one flat list for a ListView: every entry carries its day's title, which the
// view uses as its section, so days show as headers without nested models. Days come
// newest first, entries newest first within a day.
class HistoryListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
public:
    enum class Role {
        dayTitle = Qt::UserRole + 1,
        dayTotalText,
        title,
        subtitle,
        sizeText,
        timeText,
        iconName,
        sourcePath,
        destinationPath,
        pathsText, // "~/Downloads/a.pdf → ~/Documents/a.pdf", the home folder shortened
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // Replaces the content; `calendar` formats each entry's time.
    void setDays(const std::vector<ActivityDay>& days, const CalendarContext& calendar);

private:
    struct Row {
        QString dayTitle, dayTotalText, title, subtitle, sizeText, timeText, iconName, sourcePath, destinationPath, pathsText;
    };
    std::vector<Row> rows_;
};

} // namespace bv
