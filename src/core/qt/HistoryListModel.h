#pragma once
#include <vector>

#include "core/LogStatistics.h"
#include "core/qt/KeyedListModel.h"

namespace bv {

// History as one flat list for a ListView: every entry carries its day's title, which the
// view uses as its section, so days show as headers without nested models. Days come
// newest first, entries newest first within a day. Rows are keyed by the entry's id, so a new
// entry is one inserted row and midnight is a change of titles, never a reset.
class HistoryListModel : public KeyedListModel {
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
        entryID,   // the entry's id, for what other rooms know of it (putting it back)
    };

    explicit HistoryListModel(QObject* parent = nullptr);

    // Replaces the content; `calendar` formats each entry's time, `home` is shortened to "~".
    void setDays(const std::vector<ActivityDay>& days, const CalendarContext& calendar, const std::string& home);
};

} // namespace bv
