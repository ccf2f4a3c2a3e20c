#include "core/qt/HistoryListModel.h"

#include "core/DateTextFormatter.h"
#include "core/SymbolIcons.h"
#include "foundation/ByteText.h"
#include "platform/XdgPaths.h"

namespace bv {
namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

QString homeShortened(const std::string& path, const std::string& home) {
    if (!home.empty() && home != "/" && path.rfind(home, 0) == 0 && (path.size() == home.size() || path[home.size()] == '/'))
        return QStringLiteral("~") + q(path.substr(home.size()));
    return q(path);
}

} // namespace

int HistoryListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant HistoryListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
    const Row& r = rows_[static_cast<std::size_t>(index.row())];
    switch (static_cast<Role>(role)) {
    case Role::dayTitle: return r.dayTitle;
    case Role::dayTotalText: return r.dayTotalText;
    case Role::title: return r.title;
    case Role::subtitle: return r.subtitle;
    case Role::sizeText: return r.sizeText;
    case Role::timeText: return r.timeText;
    case Role::iconName: return r.iconName;
    case Role::sourcePath: return r.sourcePath;
    case Role::destinationPath: return r.destinationPath;
    case Role::pathsText: return r.pathsText;
    }
    if (role == Qt::DisplayRole) return r.title;
    return {};
}

QHash<int, QByteArray> HistoryListModel::roleNames() const {
    return {{int(Role::dayTitle), "dayTitle"},     {int(Role::dayTotalText), "dayTotalText"},
            {int(Role::title), "title"},           {int(Role::subtitle), "subtitle"},
            {int(Role::sizeText), "sizeText"},     {int(Role::timeText), "timeText"},
            {int(Role::iconName), "iconName"},     {int(Role::sourcePath), "sourcePath"},
            {int(Role::destinationPath), "destinationPath"}, {int(Role::pathsText), "pathsText"}};
}

void HistoryListModel::setDays(const std::vector<ActivityDay>& days, const CalendarContext& calendar) {
    std::vector<Row> rows;
    const std::string home = XdgPaths::home();
    const DateTextFormatter timeText(calendar, "jmm");
    for (const auto& day : days) {
        const QString dayTitle = q(day.title);
        const QString total = day.total >= 1 ? q(byteText(day.total)) : QString();
        for (const auto& e : day.entries) {
            rows.push_back({dayTitle, total, q(e.title), q(e.subtitle),
                            // A move frees nothing; its row shows no size rather than "0 GB".
                            e.bytesReclaimed >= 1 ? q(byteText(e.bytesReclaimed)) : QString(),
                            q(timeText.format(e.date)), q(freedesktopIconName(e.symbolName)), q(e.sourcePath),
                            q(e.destinationPath.value_or(std::string())),
                            e.destinationPath ? homeShortened(e.sourcePath, home) + QStringLiteral("  →  ") +
                                                    homeShortened(*e.destinationPath, home)
                                              : homeShortened(e.sourcePath, home)});
        }
    }
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

} // namespace bv
