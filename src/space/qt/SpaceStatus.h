#pragma once
#include <QAbstractItemModel>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <map>
#include <optional>
#include <vector>

#include "space/NewToday.h"
#include "space/SpaceHistory.h"

namespace bv {

struct FeatureContext;
class KeyedListModel;

// The disk as the Overview shows it: the latest good reading of the start-up volume, the
// history of readings with the changes since midnight and since the last visit, and the files
// new today in Desktop and Downloads. The model's refresh reads in the background and hands
// the results in here; nothing here reads the disk.
class SpaceStatus : public QObject {
    Q_OBJECT
    Q_MOC_INCLUDE("core/qt/KeyedListModel.h")
    QML_ELEMENT
    QML_UNCREATABLE("Space status belongs to AppModel.")
    Q_PROPERTY(QString volumeName READ volumeName NOTIFY latestChanged)
    Q_PROPERTY(double freeBytes READ freeBytesForQml NOTIFY latestChanged)
    Q_PROPERTY(double totalBytes READ totalBytesForQml NOTIFY latestChanged)
    Q_PROPERTY(QString freeText READ freeText NOTIFY latestChanged)
    Q_PROPERTY(QString totalText READ totalText NOTIFY latestChanged)
    Q_PROPERTY(QString midnightDeltaText READ midnightDeltaText NOTIFY deltasChanged)
    Q_PROPERTY(QString lastOpenDeltaText READ lastOpenDeltaText NOTIFY deltasChanged)
    Q_PROPERTY(QString lastRefreshText READ lastRefreshText NOTIFY lastRefreshChanged)
    // Rows keyed by path, newest first, Desktop then Downloads: path, name, size, sizeText,
    // kind, addedText, location ("Desktop" or "Downloads"), coveredBy (the rule that would
    // already deal with the file, or "").
    Q_PROPERTY(bv::KeyedListModel* newTodayFiles READ newTodayList CONSTANT)

public:
    // Reads "space-history.json" (a live model only); a history of an older metric version is
    // replaced by an empty one and written back.
    explicit SpaceStatus(const FeatureContext& context, QObject* parent = nullptr);

    // A reading from a refresh. One with no total is ignored (false) and changes nothing but
    // the refresh time; a good one becomes `latest`, joins the history and moves the deltas.
    bool applySnapshot(const VolumeSnapshot& snapshot);
    // `coverage` names, by path, the rule that would already deal with a file.
    void applyFileLists(std::vector<TrackedFile> desktop, std::vector<TrackedFile> downloads,
                        std::map<std::string, std::string> coverage = {});
    // The window went to the background or the program ends: the latest reading becomes the
    // baseline of "since your last visit" at the next start.
    void noteSessionEnd();

    [[nodiscard]] const VolumeSnapshot& latest() const { return latest_; }
    [[nodiscard]] const SpaceHistory& history() const { return history_; }
    [[nodiscard]] const std::optional<VolumeSnapshot>& sessionBaseline() const { return sessionBaseline_; }
    [[nodiscard]] const SpaceDelta& midnightDelta() const { return midnightDelta_; }
    [[nodiscard]] const SpaceDelta& lastOpenDelta() const { return lastOpenDelta_; }
    [[nodiscard]] const std::optional<TimePoint>& lastRefresh() const { return lastRefresh_; }
    [[nodiscard]] const std::vector<TrackedFile>& desktopFiles() const { return desktopFiles_; }
    [[nodiscard]] const std::vector<TrackedFile>& downloadFiles() const { return downloadFiles_; }

    [[nodiscard]] QString volumeName() const;
    [[nodiscard]] double freeBytesForQml() const { return static_cast<double>(latest_.freeBytes); }
    [[nodiscard]] double totalBytesForQml() const { return static_cast<double>(latest_.totalBytes); }
    [[nodiscard]] QString freeText() const;
    [[nodiscard]] QString totalText() const;
    [[nodiscard]] QString midnightDeltaText() const;
    [[nodiscard]] QString lastOpenDeltaText() const;
    [[nodiscard]] QString lastRefreshText() const;
    [[nodiscard]] QAbstractItemModel* newTodayFiles() const;
    [[nodiscard]] KeyedListModel* newTodayList() const { return newToday_; }

signals:
    void latestChanged();
    void deltasChanged();
    void historyChanged();
    void lastRefreshChanged();
    void fileListsChanged();

private:
    void saveHistory() const;

    const FeatureContext& ctx_;
    VolumeSnapshot latest_;
    SpaceHistory history_;
    std::optional<VolumeSnapshot> sessionBaseline_;
    SpaceDelta midnightDelta_;
    SpaceDelta lastOpenDelta_;
    std::optional<TimePoint> lastRefresh_;
    std::vector<TrackedFile> desktopFiles_;
    std::vector<TrackedFile> downloadFiles_;
    std::map<std::string, std::string> coverage_;
    KeyedListModel* newToday_;
};

} // namespace bv
