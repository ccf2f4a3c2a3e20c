#pragma once
#include <QAbstractItemModel>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/CancellationFlag.h"
#include "foundation/Uuid.h"
#include "space/DiskMap.h"
#include "space/MapSnapshots.h"
#include "space/SpaceMapTimings.h"

namespace bv {

struct FeatureContext;
class KeyedListModel;

// The Space Map's state for the screen: the chosen root, the scan in flight with its progress,
// the current map and the folder being looked at, the mounted volumes, the timings that give
// the estimate, and the saved snapshots with the comparison. Owned by AppModel and confined
// to the GUI thread; the scan runs on the pool with plain copies and hands back a DiskMap,
// which a token comparison drops when a newer scan has started since.
class SpaceMapModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The space map belongs to AppModel.")
    Q_PROPERTY(QString rootPath READ rootPath NOTIFY rootChanged)
    Q_PROPERTY(QString rootName READ rootName NOTIFY rootChanged)
    Q_PROPERTY(QString estimateText READ estimateText NOTIFY estimateChanged)
    Q_PROPERTY(bool scanning READ scanning NOTIFY scanningChanged)
    Q_PROPERTY(bool stopRequested READ stopRequested NOTIFY scanningChanged)
    Q_PROPERTY(QString startTitle READ startTitle NOTIFY mapChanged)
    Q_PROPERTY(QString progressText READ progressText NOTIFY progressChanged)
    Q_PROPERTY(qint64 countedBytes READ countedBytes NOTIFY progressChanged)
    Q_PROPERTY(QString countedText READ countedText NOTIFY progressChanged)
    Q_PROPERTY(QString elapsedText READ elapsedText NOTIFY progressChanged)
    Q_PROPERTY(QString timeLeftText READ timeLeftText NOTIFY progressChanged)
    Q_PROPERTY(double progressFraction READ progressFraction NOTIFY progressChanged)
    Q_PROPERTY(bool hasMap READ hasMap NOTIFY mapChanged)
    Q_PROPERTY(QString mapSummary READ mapSummary NOTIFY mapChanged)
    Q_PROPERTY(QString partialText READ partialText NOTIFY mapChanged)
    Q_PROPERTY(QString unreadableText READ unreadableText NOTIFY mapChanged)
    Q_PROPERTY(QString unreadableHint READ unreadableHint CONSTANT)
    Q_PROPERTY(QVariantList trail READ trail NOTIFY nodeChanged)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY nodeChanged)
    Q_PROPERTY(QString nodeName READ nodeName NOTIFY nodeChanged)
    Q_PROPERTY(QString nodeBytesText READ nodeBytesText NOTIFY nodeChanged)
    // Empty unless the folder in view holds hard links to files counted in another folder.
    Q_PROPERTY(QString nodeSharedText READ nodeSharedText NOTIFY nodeChanged)
    // Rows keyed by path: path, name, bytes, bytesText, filesText, share, hasChildren, colorIndex,
    // sharedText (as nodeSharedText, for that folder).
    Q_PROPERTY(QAbstractItemModel* nodeChildren READ nodeChildren CONSTANT)
    Q_PROPERTY(QString emptyNodeText READ emptyNodeText NOTIFY nodeChanged)
    Q_PROPERTY(QVariantList volumes READ volumes NOTIFY volumesChanged)
    // Rows keyed by id: key, dateText, rootPath, countedText, volumeName, sameRoot, selected.
    Q_PROPERTY(QAbstractItemModel* snapshots READ snapshots CONSTANT)
    Q_PROPERTY(bool canSaveSnapshot READ canSaveSnapshot NOTIFY mapChanged)
    Q_PROPERTY(QString selectedSnapshotId READ selectedSnapshotId NOTIFY comparisonChanged)
    Q_PROPERTY(bool comparing READ comparing NOTIFY comparisonChanged)
    Q_PROPERTY(QVariantList deltas READ deltas NOTIFY comparisonChanged)
    Q_PROPERTY(QString comparisonText READ comparisonText NOTIFY comparisonChanged)

public:
    explicit SpaceMapModel(const FeatureContext& context, QObject* parent = nullptr);
    // Seam for tests: where the mounted drives come from (default: the mount table).
    void setVolumeLister(std::function<std::vector<MountedVolume>()> lister);
    ~SpaceMapModel() override;

    // ---- operations --------------------------------------------------------------------
    // Takes a local path or a file: URL; ignored while scanning.
    Q_INVOKABLE void chooseRoot(const QString& pathOrUrl);
    Q_INVOKABLE void start();   // "Map it" / "Map again"; does nothing while a scan runs
    Q_INVOKABLE void cancel();  // Stop: the scan ends soon with a partial map
    Q_INVOKABLE void openChild(const QString& path);
    Q_INVOKABLE void goBack();
    Q_INVOKABLE void goToTrail(int index); // 0 is the map's root
    Q_INVOKABLE void refreshVolumes();
    Q_INVOKABLE void saveSnapshot();
    Q_INVOKABLE void deleteSnapshot(const QString& id);
    Q_INVOKABLE void compareWith(const QString& id);
    Q_INVOKABLE void stopComparing();
    Q_INVOKABLE QString snapshotRemovedText(const QString& id) const;
    // Tiles for the treemap of the folder in view, in a w x h box: the listed children and,
    // when there is any, one tile for everything too small to list.
    Q_INVOKABLE QVariantList treemap(double width, double height) const;
    Q_INVOKABLE QString byteText(qint64 bytes) const;

    // Results; public so tests can hand a map in directly.
    void applyMap(DiskMap map, double seconds);

    // ---- state -------------------------------------------------------------------------
    [[nodiscard]] const std::optional<DiskMap>& map() const { return map_; }
    [[nodiscard]] const std::vector<SpaceSnapshot>& snapshotList() const { return snapshots_; }
    [[nodiscard]] const SpaceMapTimings::Table& timings() const { return timings_; }
    [[nodiscard]] const Uuid& token() const { return token_; }

    [[nodiscard]] QString rootPath() const;
    [[nodiscard]] QString rootName() const;
    [[nodiscard]] QString estimateText() const;
    [[nodiscard]] bool scanning() const { return scanning_; }
    [[nodiscard]] bool stopRequested() const;
    [[nodiscard]] QString startTitle() const;
    [[nodiscard]] QString progressText() const { return progressText_; }
    [[nodiscard]] qint64 countedBytes() const { return countedBytes_; }
    [[nodiscard]] QString countedText() const;
    [[nodiscard]] QString elapsedText() const;
    [[nodiscard]] QString timeLeftText() const;
    [[nodiscard]] double progressFraction() const;
    [[nodiscard]] bool hasMap() const { return map_.has_value(); }
    [[nodiscard]] QString mapSummary() const;
    [[nodiscard]] QString partialText() const;
    [[nodiscard]] QString unreadableText() const;
    [[nodiscard]] QString unreadableHint() const;
    [[nodiscard]] QVariantList trail() const;
    [[nodiscard]] bool canGoBack() const { return trail_.size() > 1; }
    [[nodiscard]] QString nodeName() const;
    [[nodiscard]] QString nodeBytesText() const;
    [[nodiscard]] QString nodeSharedText() const;
    [[nodiscard]] QAbstractItemModel* nodeChildren() const;
    [[nodiscard]] QString emptyNodeText() const;
    [[nodiscard]] QVariantList volumes() const;
    [[nodiscard]] QAbstractItemModel* snapshots() const;
    [[nodiscard]] bool canSaveSnapshot() const { return map_ && !map_->truncated && !scanning_; }
    [[nodiscard]] QString selectedSnapshotId() const;
    [[nodiscard]] bool comparing() const { return selectedSnapshot_.has_value(); }
    [[nodiscard]] QVariantList deltas() const;
    [[nodiscard]] QString comparisonText() const;

signals:
    void rootChanged();
    void estimateChanged();
    void scanningChanged();
    void progressChanged();
    void mapChanged();
    void nodeChanged();
    void volumesChanged();
    void snapshotsChanged();
    void comparisonChanged();

private:
    void pollProgress();
    void recompare();
    void updateChildren();
    void updateSnapshots();
    [[nodiscard]] const DiskMapNode* currentNode() const;
    [[nodiscard]] std::optional<SpaceMapTimings::Estimate> currentEstimate() const;

    const FeatureContext& ctx_;
    std::function<std::vector<MountedVolume>()> listVolumes_;
    KeyedListModel* children_;
    KeyedListModel* snapshotList_;
    std::string root_;
    bool scanning_ = false;
    Uuid token_ = Uuid::generate();
    std::shared_ptr<CancellationFlag> cancel_;
    std::shared_ptr<DiskMapProgress> progress_;
    std::optional<SpaceMapTimings::Estimate> scanEstimate_;
    QElapsedTimer elapsed_;
    QTimer poll_;
    QString progressText_;
    qint64 countedBytes_ = 0;
    double elapsedSeconds_ = 0;

    std::optional<DiskMap> map_;
    std::vector<std::string> trail_; // paths from the map's root to the folder in view
    std::vector<MountedVolume> volumes_;
    SpaceMapTimings::Table timings_;
    std::vector<SpaceSnapshot> snapshots_;
    std::optional<Uuid> selectedSnapshot_;
    std::vector<SnapshotDiffer::Delta> deltas_;
};

} // namespace bv
