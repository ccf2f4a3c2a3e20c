#pragma once
#include <QAbstractItemModel>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <cstdint>
#include <string>
#include <vector>

#include "clean/DevCacheScanner.h"
#include "clean/DevScanRow.h"

namespace bv {

struct FeatureContext;
class KeyedListModel;
class NestedListModel;
class SmartCleanFinds;

// Smart Clean: the developer cache scan, its rows and the user's choice among them, on the
// GUI thread. The scan runs on the pool with plain copies; its rows replace both lists and
// clear every tick. Cards and totals follow the rows; the preview goes through the run.
class SmartCleanModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Smart Clean belongs to AppModel.")
    // Rows: key, title, rows (the card's rows, small ones last), hiddenCount, keptLine, safety,
    // totalBytes, totalText, choosableCount, allTicked. A row: key, title, path, bytes,
    // sizeText, note, group, badge, selectable, selected, recommended, blockedReason, toolCommand.
    Q_PROPERTY(QAbstractItemModel* cards READ cards CONSTANT)
    Q_PROPERTY(QAbstractItemModel* reviewRows READ reviewRows CONSTANT)
    Q_PROPERTY(bool scanning READ scanning NOTIFY scanningChanged)
    Q_PROPERTY(QString progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(bool showSmallItems READ showSmallItems WRITE setShowSmallItems NOTIFY rowsChanged)
    Q_PROPERTY(bool hasScanned READ hasScanned NOTIFY rowsChanged)
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY rowsChanged)
    Q_PROPERTY(QString selectedText READ selectedText NOTIFY rowsChanged)
    Q_PROPERTY(int recommendedCount READ recommendedCount NOTIFY rowsChanged)
    Q_PROPERTY(double reclaimableBytes READ reclaimableBytesForQml NOTIFY rowsChanged)
    Q_PROPERTY(QString reclaimableText READ reclaimableText NOTIFY rowsChanged)
    // Old project files and app leftovers, ticked and previewed together with the caches.
    Q_PROPERTY(bv::SmartCleanFinds* finds READ finds CONSTANT)

public:
    explicit SmartCleanModel(const FeatureContext& context, QObject* parent = nullptr);

    // Starts the developer cache scan, then the leftovers and the old project files; does
    // nothing without live data or while one runs.
    Q_INVOKABLE void scan();
    // A finished scan: both lists replaced, nothing selected. Public for tests.
    void setScanResult(DevCacheScanner::Result result);
    // Seam for tests: how the scanner finds unavailable simulator devices.
    void setScanOptions(DevCacheScanner::Options options) { scanOptions_ = std::move(options); }
    // The progress line once the scan is done: the storage survey's steps.
    void setFollowingProgress(const QString& text);

    // Ticks every recommended row (the ones that come back by themselves) and every leftover
    // whose app is gone; other ticks stay.
    Q_INVOKABLE void selectRecommended();
    // One row by id; a row that can't be chosen stays unticked.
    Q_INVOKABLE void setRowSelected(const QString& id, bool selected);
    // "Select this group" / "Clear this group": every choosable row of one card.
    Q_INVOKABLE void setCardSelected(const QString& cardId, bool selected);
    void setShowSmallItems(bool on);
    // The preview of the ticked rows: entries and refusals in one plan, through the run
    // (which says so when nothing is ticked).
    Q_INVOKABLE void preview();
    // The Overview's "Review & Clean": with nothing ticked the recommended rows are ticked
    // first, so the button always previews what the Overview counted.
    Q_INVOKABLE void reviewAndClean();

    [[nodiscard]] bool scanning() const { return scanning_; }
    [[nodiscard]] QString progress() const { return progress_; }
    [[nodiscard]] const std::vector<DevScanRow>& rows() const { return rows_; }
    [[nodiscard]] const std::vector<DevScanRow>& reviewRowValues() const { return reviewRows_; }
    [[nodiscard]] QAbstractItemModel* cards() const;
    [[nodiscard]] QAbstractItemModel* reviewRows() const;
    [[nodiscard]] SmartCleanFinds* finds() const { return finds_; }
    [[nodiscard]] bool showSmallItems() const { return showSmallItems_; }
    [[nodiscard]] bool hasScanned() const { return hasScanned_; }
    [[nodiscard]] int selectedCount() const;
    [[nodiscard]] QString selectedText() const;
    [[nodiscard]] int recommendedCount() const;
    // What Smart Clean would offer now: the recommended rows plus anything else ticked.
    [[nodiscard]] std::int64_t reclaimableBytes() const;
    [[nodiscard]] double reclaimableBytesForQml() const { return static_cast<double>(reclaimableBytes()); }
    [[nodiscard]] QString reclaimableText() const;

signals:
    void rowsChanged();
    void scanningChanged();
    void progressChanged();
    // A scan's rows are in; the storage survey measures again after it.
    void scanFinished();

private:
    void rebuild();
    void setScanning(bool on);
    void setProgress(const QString& text);

    const FeatureContext& ctx_;
    NestedListModel* cards_;
    KeyedListModel* reviewList_;
    SmartCleanFinds* finds_;
    std::vector<DevScanRow> rows_;
    std::vector<DevScanRow> reviewRows_;
    DevCacheScanner::Options scanOptions_;
    bool scanning_ = false;
    QString progress_;
    QString followingProgress_;
    bool showSmallItems_ = false;
    bool hasScanned_ = false;
};

} // namespace bv
