#include "space/qt/SpaceStatus.h"

#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/QtText.h"
#include "foundation/ByteText.h"
#include "foundation/CalendarContext.h"
#include "space/SpaceDeltaText.h"

namespace bv {

SpaceStatus::SpaceStatus(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context),
      newToday_(new KeyedListModel({"path", "name", "size", "sizeText", "kind", "addedText", "location", "coveredBy"}, this)) {
    if (!ctx_.live) return;
    bool replaced = false;
    history_ = SpaceHistory::accepting(ctx_.store.load(SpaceHistory::fileName(), SpaceHistory::fromJson), replaced);
    if (replaced) saveHistory();
    sessionBaseline_ = history_.lastQuit;
}

void SpaceStatus::saveHistory() const {
    if (ctx_.live) ctx_.store.saveJson(SpaceHistory::fileName(), history_.toJson());
}

bool SpaceStatus::applySnapshot(const VolumeSnapshot& snapshot) {
    const TimePoint now = ctx_.clock.now();
    const bool usable = snapshot.isUsable();
    if (usable) {
        if (!(latest_ == snapshot)) {
            latest_ = snapshot;
            emit latestChanged();
        }
        history_.record(snapshot);
        saveHistory();
        emit historyChanged();
        const SpaceDelta midnight = history_.midnightDelta(snapshot, now, ctx_.calendar);
        const SpaceDelta lastOpen = bv::lastOpenDelta(snapshot, sessionBaseline_);
        if (!(midnight == midnightDelta_) || !(lastOpen == lastOpenDelta_)) {
            midnightDelta_ = midnight;
            lastOpenDelta_ = lastOpen;
            emit deltasChanged();
        }
    }
    lastRefresh_ = now;
    emit lastRefreshChanged();
    return usable;
}

void SpaceStatus::applyFileLists(std::vector<TrackedFile> desktop, std::vector<TrackedFile> downloads,
                                 std::map<std::string, std::string> coverage) {
    if (desktop == desktopFiles_ && downloads == downloadFiles_ && coverage == coverage_) return;
    desktopFiles_ = std::move(desktop);
    downloadFiles_ = std::move(downloads);
    coverage_ = std::move(coverage);
    std::vector<KeyedListModel::Row> rows;
    for (const auto* list : {&desktopFiles_, &downloadFiles_})
        for (const auto& f : *list)
            rows.push_back({q(f.path),
                            {q(f.path), q(f.name), static_cast<qint64>(f.size), q(byteText(f.size)), q(f.kind),
                             q(ctx_.calendar.shortTime(f.added)),
                             f.location == WatchedLocation::desktop ? QStringLiteral("Desktop") : QStringLiteral("Downloads"),
                             coverage_.count(f.path) ? q(coverage_.at(f.path)) : QString()}});
    newToday_->setRows(std::move(rows));
    emit fileListsChanged();
}

void SpaceStatus::noteSessionEnd() {
    if (!ctx_.live || !latest_.isUsable()) return;
    history_.lastQuit = latest_;
    saveHistory();
}

QAbstractItemModel* SpaceStatus::newTodayFiles() const { return newToday_; }
QString SpaceStatus::volumeName() const { return q(latest_.volumeName); }
QString SpaceStatus::freeText() const { return q(byteText(latest_.freeBytes)); }
QString SpaceStatus::totalText() const { return q(byteText(latest_.totalBytes)); }
QString SpaceStatus::midnightDeltaText() const { return q(deltaSentence(midnightDelta_, ctx_.clock.now(), ctx_.calendar)); }
QString SpaceStatus::lastOpenDeltaText() const { return q(deltaSentence(lastOpenDelta_, ctx_.clock.now(), ctx_.calendar)); }
QString SpaceStatus::lastRefreshText() const { return lastRefresh_ ? q(ctx_.calendar.shortTime(*lastRefresh_)) : QString(); }

} // namespace bv
