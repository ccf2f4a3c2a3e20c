#pragma once
#include <QAbstractItemModel>
#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QVariantList>
#include <QVariantMap>

#include <cstdint>
#include <memory>
#include <vector>

#include "duplicates/DuplicateCleanup.h"
#include "duplicates/DuplicateGroup.h"
#include "duplicates/DuplicateRoot.h"
#include "duplicates/DuplicateScanProgress.h"
#include "foundation/CancellationFlag.h"
#include "foundation/Uuid.h"

namespace bv {

struct FeatureContext;
class NestedListModel;

// The Duplicates section's state and actions, owned by AppModel and touched on the GUI
// thread only. A scan leaves for a pool thread with copies of the roots and the minimum,
// sharing only its CancellationFlag and DuplicateScanProgress; a 0.3 s timer turns the
// progress into text. A newer scan voids an older one through its token; a stopped scan
// leaves the earlier groups as they were.
class DuplicatesModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Duplicates belong to AppModel.")
    Q_PROPERTY(QVariantList roots READ rootList NOTIFY rootsChanged)
    // Rows: key (the group's id), title, detail, reclaimableBytes, files (a list with path,
    // name, folder, sizeText, dateText, isKept, sharesStorage, keyed by path).
    Q_PROPERTY(QAbstractItemModel* groups READ groups CONSTANT)
    Q_PROPERTY(bool scanning READ duplicatesScanning NOTIFY scanningChanged)
    Q_PROPERTY(bool hasScanned READ hasScannedDuplicates NOTIFY groupsChanged)
    Q_PROPERTY(QString progress READ progressText NOTIFY progressChanged)
    Q_PROPERTY(qint64 minimumBytes READ minimumBytes WRITE setMinimumBytes NOTIFY minimumBytesChanged)
    Q_PROPERTY(QVariantList minimumChoices READ minimumChoices CONSTANT)
    Q_PROPERTY(QString badge READ badge NOTIFY groupsChanged)
    Q_PROPERTY(QString summary READ summary NOTIFY groupsChanged)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

public:
    explicit DuplicatesModel(const FeatureContext& context, QObject* parent = nullptr);
    ~DuplicatesModel() override;

    static constexpr const char* kChooseFolderTitle = "Choose a folder to search for duplicates.";
    static constexpr const char* kRemoveRootHelp = "Stop searching this folder";
    static constexpr const char* kNoRoots = "Choose at least one folder to search.";
    static constexpr const char* kMinimumCaption = "Files smaller than this are not compared";
    static constexpr const char* kHeading = "EXTRA COPIES · LARGEST FIRST";

    // The folder chooser's answer; an empty URL means the user cancelled. A folder already
    // in the list is not added twice. Saves "duplicate-roots.json".
    Q_INVOKABLE void addRoot(const QUrl& folder);
    Q_INVOKABLE void addRootPath(const QString& path);
    Q_INVOKABLE void removeRoot(const QString& id);
    Q_INVOKABLE void startScan();
    Q_INVOKABLE void stopScan();
    // "Keep this copy" / "Keep this copy instead": a path not in the group is ignored.
    Q_INVOKABLE void keepCopy(const QString& groupId, const QString& path);
    Q_INVOKABLE void reviewAll();
    Q_INVOKABLE void reviewGroup(const QString& groupId);
    Q_INVOKABLE void reviewCopy(const QString& groupId, const QString& path);

    [[nodiscard]] const std::vector<DuplicateRoot>& duplicateRoots() const { return roots_; }
    [[nodiscard]] const std::vector<DuplicateGroup>& duplicateGroups() const { return groups_; }
    [[nodiscard]] const DuplicateKeepMap& duplicateKeep() const { return keep_; }
    [[nodiscard]] bool duplicatesScanning() const { return scanning_; }
    [[nodiscard]] bool hasScannedDuplicates() const { return hasScanned_; }
    [[nodiscard]] const Uuid& duplicatesToken() const { return token_; }
    [[nodiscard]] QString progressText() const { return progress_; }
    [[nodiscard]] qint64 minimumBytes() const { return minimumBytes_; }
    void setMinimumBytes(qint64 bytes);
    [[nodiscard]] QVariantList rootList() const;
    [[nodiscard]] QAbstractItemModel* groups() const;
    [[nodiscard]] QVariantList minimumChoices() const;
    [[nodiscard]] QString badge() const;   // byte text of what the groups free; empty before a scan
    [[nodiscard]] QString summary() const; // "<n> groups · <bytes> to free"
    [[nodiscard]] QVariantMap texts() const; // the screen's fixed words, kept in one place

    // A finished scan's answer, as the background task hands it back. Public for tests.
    void finishScan(const Uuid& token, const std::shared_ptr<CancellationFlag>& flag, std::vector<DuplicateGroup> groups);

signals:
    void rootsChanged();
    void groupsChanged();
    void scanningChanged();
    void progressChanged();
    void minimumBytesChanged();

private:
    void saveRoots() const;
    void setProgress(const QString& text);
    void setScanning(bool on);
    void pollProgress();
    void present(const DuplicateReview& review);
    void groupsUpdated(); // the list follows groups_ and keep_
    [[nodiscard]] std::vector<std::string> rootPaths() const;

    const FeatureContext& ctx_;
    NestedListModel* groupList_;
    std::vector<DuplicateRoot> roots_;
    std::vector<DuplicateGroup> groups_;
    DuplicateKeepMap keep_;
    bool scanning_ = false;
    bool hasScanned_ = false;
    QString progress_;
    qint64 minimumBytes_ = 1000000;
    Uuid token_ = Uuid::generate();
    std::shared_ptr<CancellationFlag> cancel_;           // duplicateScanCancel
    std::shared_ptr<DuplicateScanProgress> scanProgress_;
    QTimer poll_;
};

} // namespace bv
