#include "core/qt/HistoryListModel.h"

#include "core/DateTextFormatter.h"
#include "core/SymbolIcons.h"
#include "core/qt/QtText.h"
#include "foundation/ByteText.h"

namespace bv {
namespace {

QString homeShortened(const std::string& path, const std::string& home) {
    if (!home.empty() && home != "/" && path.rfind(home, 0) == 0 && (path.size() == home.size() || path[home.size()] == '/'))
        return QStringLiteral("~") + q(path.substr(home.size()));
    return q(path);
}

} // namespace

HistoryListModel::HistoryListModel(QObject* parent)
    : KeyedListModel({"dayTitle", "dayTotalText", "title", "subtitle", "sizeText", "timeText", "iconName", "sourcePath",
                      "destinationPath", "pathsText", "entryID"},
                     parent) {}

void HistoryListModel::setDays(const std::vector<ActivityDay>& days, const CalendarContext& calendar,
                               const std::string& home) {
    std::vector<Row> rows;
    const DateTextFormatter timeText(calendar, "jmm");
    for (const auto& day : days) {
        const QString dayTitle = q(day.title);
        const QString total = day.total >= 1 ? q(byteText(day.total)) : QString();
        for (const auto& e : day.entries) {
            const QString paths = e.destinationPath ? homeShortened(e.sourcePath, home) + QStringLiteral("  →  ") +
                                                          homeShortened(*e.destinationPath, home)
                                                    : homeShortened(e.sourcePath, home);
            rows.push_back({q(e.id.text()),
                            {dayTitle, total, q(e.title), q(e.subtitle),
                             // A move frees nothing; its row shows no size rather than "0 GB".
                             e.bytesReclaimed >= 1 ? q(byteText(e.bytesReclaimed)) : QString(),
                             q(timeText.format(e.date)), q(freedesktopIconName(e.symbolName)), q(e.sourcePath),
                             q(e.destinationPath.value_or(std::string())), paths, q(e.id.text())}});
        }
    }
    setRows(std::move(rows));
}

} // namespace bv
