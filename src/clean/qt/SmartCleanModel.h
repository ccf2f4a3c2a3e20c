#pragma once
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <cstdint>
#include <string>
#include <vector>

#include "clean/DevCacheScanner.h"
#include "clean/DevScanRow.h"

namespace bv {

class AppModel;

// Smart Clean's rows and the user's choice among them, owned by AppModel and touched on the
// GUI thread only. A scan replaces both lists and clears every tick; the cards, the totals
// and the preview are computed from the rows each time they are asked for.
class SmartCleanModel : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QVariantList cards READ cardList NOTIFY rowsChanged)
    Q_PROPERTY(QVariantList reviewRows READ reviewRowList NOTIFY rowsChanged)
    Q_PROPERTY(bool showSmallItems READ showSmallItems WRITE setShowSmallItems NOTIFY rowsChanged)
    Q_PROPERTY(bool hasScanned READ hasScanned NOTIFY rowsChanged)
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY rowsChanged)
    Q_PROPERTY(QString selectedText READ selectedText NOTIFY rowsChanged)
    Q_PROPERTY(int recommendedCount READ recommendedCount NOTIFY rowsChanged)
    Q_PROPERTY(double reclaimableBytes READ reclaimableBytesForQml NOTIFY rowsChanged)
    Q_PROPERTY(QString reclaimableText READ reclaimableText NOTIFY rowsChanged)

public:
    explicit SmartCleanModel(AppModel& model);

    // A finished scan: both lists replaced, nothing selected.
    void setScanResult(DevCacheScanner::Result result);

    // Ticks every recommended row (the ones that come back by themselves); other ticks stay.
    Q_INVOKABLE void selectRecommended();
    // One row by id; a row that can't be chosen stays unticked.
    Q_INVOKABLE void setRowSelected(const QString& id, bool selected);
    // "Select this group" / "Clear this group": every choosable row of one card.
    Q_INVOKABLE void setCardSelected(const QString& cardId, bool selected);
    void setShowSmallItems(bool on);
    // The preview of the ticked rows: entries and refusals in one plan, through the one
    // preview path of the model (which says so when nothing is ticked).
    Q_INVOKABLE void preview();
    // The Overview's "Review & Clean": with nothing ticked the recommended rows are ticked
    // first, so the button always previews what the Overview counted.
    Q_INVOKABLE void reviewAndClean();

    [[nodiscard]] const std::vector<DevScanRow>& rows() const { return rows_; }
    [[nodiscard]] const std::vector<DevScanRow>& reviewRows() const { return reviewRows_; }
    [[nodiscard]] bool showSmallItems() const { return showSmallItems_; }
    [[nodiscard]] bool hasScanned() const { return hasScanned_; }
    [[nodiscard]] int selectedCount() const;
    [[nodiscard]] QString selectedText() const;
    [[nodiscard]] int recommendedCount() const;
    // What Smart Clean would offer now: the recommended rows plus anything else ticked.
    [[nodiscard]] std::int64_t reclaimableBytes() const;
    [[nodiscard]] double reclaimableBytesForQml() const { return static_cast<double>(reclaimableBytes()); }
    [[nodiscard]] QString reclaimableText() const;
    [[nodiscard]] QVariantList cardList() const { return cards_; }
    [[nodiscard]] QVariantList reviewRowList() const { return reviewRowMaps_; }

signals:
    void rowsChanged();

private:
    void rebuild();
    [[nodiscard]] QVariantList buildCards() const;
    [[nodiscard]] QVariantList buildReviewRows() const;

    AppModel& model_;
    QVariantList cards_;
    QVariantList reviewRowMaps_;
    std::vector<DevScanRow> rows_;
    std::vector<DevScanRow> reviewRows_;
    bool showSmallItems_ = false;
    bool hasScanned_ = false;
};

} // namespace bv
