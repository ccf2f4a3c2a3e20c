#include "space/qt/SpaceMapModel.h"

#include <QDateTime>
#include <QFuture>
#include <QUrl>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <cmath>

#include "core/UserDefaults.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/QtText.h"
#include "core/qt/WhenDone.h"
#include "foundation/ByteText.h"
#include "space/DiskMapScanner.h"
#include "space/DiskMapText.h"
#include "space/MountedVolumes.h"
#include "space/SpaceHistory.h"
#include "space/TreemapLayout.h"

namespace bv {
namespace {

std::string lastComponent(const std::string& path) {
    if (path == "/") return "/";
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

const DiskMapNode* childAt(const DiskMapNode& node, const std::string& path) {
    for (const auto& c : node.children)
        if (c.path == path) return &c;
    return nullptr;
}

QString dateText(TimePoint t) {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(t.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("d MMM yyyy, HH:mm"));
}

// The note on a folder that holds hard links to files another folder counts.
QString sharedText(const DiskMapNode& node) {
    if (node.sharedBytes <= 0) return {};
    return QStringLiteral("Shares ") + q(bv::byteText(node.sharedBytes)) +
           QStringLiteral(" with other folders through hard links");
}

// A path below the map's root, for the comparison list; the root itself by its name.
QString relativeName(const std::string& path, const std::string& root, const std::string& rootName) {
    if (path == root) return q(rootName);
    const std::string prefix = root == "/" ? "/" : root + "/";
    if (path.compare(0, prefix.size(), prefix) == 0) return q(path.substr(prefix.size()));
    return q(path);
}

} // namespace

SpaceMapModel::SpaceMapModel(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context), listVolumes_([] { return MountedVolumes::list(); }),
      children_(new KeyedListModel({"path", "name", "bytes", "bytesText", "filesText", "share", "hasChildren", "colorIndex",
                                  "sharedText"},
                                   this)),
      snapshotList_(new KeyedListModel({"key", "dateText", "rootPath", "countedText", "volumeName", "sameRoot", "selected"},
                                       this)) {
    connect(this, &SpaceMapModel::nodeChanged, this, &SpaceMapModel::updateChildren);
    connect(this, &SpaceMapModel::mapChanged, this, &SpaceMapModel::updateSnapshots);
    connect(this, &SpaceMapModel::snapshotsChanged, this, &SpaceMapModel::updateSnapshots);
    connect(this, &SpaceMapModel::comparisonChanged, this, &SpaceMapModel::updateSnapshots);
    root_ = DiskMapScanner::realPath(ctx_.folders.home.empty() ? std::string("/") : ctx_.folders.home);
    poll_.setInterval(100); // ten readings a second; nothing is signalled per file
    connect(&poll_, &QTimer::timeout, this, &SpaceMapModel::pollProgress);
    if (ctx_.live) {
        timings_ = SpaceMapTimings::load(UserDefaults());
        snapshots_ = MapSnapshots::load(ctx_.store);
        volumes_ = listVolumes_();
    }
    updateSnapshots();
}

void SpaceMapModel::setVolumeLister(std::function<std::vector<MountedVolume>()> lister) {
    listVolumes_ = std::move(lister);
    refreshVolumes();
}

SpaceMapModel::~SpaceMapModel() {
    // A scan still running stops at its next check; its result finds no one to hand to.
    if (cancel_) cancel_->cancel();
}

// ---- choosing and scanning ----------------------------------------------------------------

void SpaceMapModel::chooseRoot(const QString& pathOrUrl) {
    if (scanning_ || pathOrUrl.isEmpty()) return;
    const QUrl url(pathOrUrl);
    const QString local = url.isLocalFile() ? url.toLocalFile() : pathOrUrl;
    const std::string root = DiskMapScanner::realPath(local.toStdString());
    if (root == root_) return;
    root_ = root;
    emit rootChanged();
    emit estimateChanged();
    emit mapChanged(); // the start button's title depends on the root
}

void SpaceMapModel::refreshVolumes() {
    auto fresh = listVolumes_();
    if (fresh == volumes_) return;
    volumes_ = std::move(fresh);
    emit volumesChanged();
    emit estimateChanged();
}

void SpaceMapModel::start() {
    if (scanning_) return;
    scanning_ = true;
    token_ = Uuid::generate();
    cancel_ = std::make_shared<CancellationFlag>();
    progress_ = std::make_shared<DiskMapProgress>();
    scanEstimate_ = currentEstimate();
    progressText_ = QStringLiteral("Starting…");
    countedBytes_ = 0;
    elapsedSeconds_ = 0;
    elapsed_.start();
    poll_.start();
    emit scanningChanged();
    emit progressChanged();
    emit mapChanged();

    const Uuid token = token_;
    const std::string root = root_;
    DiskMapScanner::Options options;
    options.homePath = ctx_.folders.home;
    options.now = ctx_.clock.now();
    auto cancel = cancel_;
    auto progress = progress_;
    auto work = QtConcurrent::run([root, options, cancel, progress] {
        return DiskMapScanner::scan(root, *progress, [cancel] { return cancel->isCancelled(); }, options);
    });
    // The result always arrives through the event loop, so start() returns with the scan in
    // flight whatever its speed.
    whenDone(work, this, [this, token](DiskMap map) {
        if (token != token_) return; // a newer scan has started since
        applyMap(std::move(map), static_cast<double>(elapsed_.elapsed()) / 1000.0);
    });
}

void SpaceMapModel::cancel() {
    if (!scanning_ || !cancel_ || cancel_->isCancelled()) return;
    cancel_->cancel();
    emit scanningChanged();
}

bool SpaceMapModel::stopRequested() const { return scanning_ && cancel_ && cancel_->isCancelled(); }

void SpaceMapModel::pollProgress() {
    if (!progress_) return;
    const DiskMapCounts c = progress_->snapshot();
    elapsedSeconds_ = static_cast<double>(elapsed_.elapsed()) / 1000.0;
    countedBytes_ = c.bytes;
    if (c.files > 0 || !c.current.empty())
        progressText_ = q(groupedCount(c.files)) + QStringLiteral(" files · ") + q(lastComponent(c.current));
    emit progressChanged();
}

void SpaceMapModel::applyMap(DiskMap map, double seconds) {
    poll_.stop();
    if (progress_) pollProgress();
    // A cancelled map is kept on screen but its timing isn't remembered.
    if (SpaceMapTimings::record(timings_, map, seconds) && ctx_.live) SpaceMapTimings::save(UserDefaults(), timings_);
    map_ = std::move(map);
    trail_ = {map_->rootPath};
    scanning_ = false;
    progress_.reset();
    emit scanningChanged();
    emit mapChanged();
    emit nodeChanged();
    emit estimateChanged();
    recompare();
}

std::optional<SpaceMapTimings::Estimate> SpaceMapModel::currentEstimate() const {
    return SpaceMapTimings::estimate(root_, timings_, volumes_);
}

// ---- drilling in and out --------------------------------------------------------------------

const DiskMapNode* SpaceMapModel::currentNode() const {
    if (!map_) return nullptr;
    const DiskMapNode* node = &map_->root;
    for (std::size_t i = 1; i < trail_.size(); ++i) {
        node = childAt(*node, trail_[i]);
        if (!node) return &map_->root;
    }
    return node;
}

void SpaceMapModel::openChild(const QString& path) {
    const DiskMapNode* node = currentNode();
    if (!node || !childAt(*node, path.toStdString())) return;
    trail_.push_back(path.toStdString());
    emit nodeChanged();
}

void SpaceMapModel::goBack() {
    if (trail_.size() <= 1) return;
    trail_.pop_back();
    emit nodeChanged();
}

void SpaceMapModel::goToTrail(int index) {
    if (index < 0 || static_cast<std::size_t>(index) + 1 >= trail_.size()) return;
    trail_.resize(static_cast<std::size_t>(index) + 1);
    emit nodeChanged();
}

// ---- snapshots ----------------------------------------------------------------------------

void SpaceMapModel::saveSnapshot() {
    if (!map_ || scanning_) return;
    const VolumeSnapshot latest = ctx_.latestVolume();
    const SnapshotVolume startup{latest.volumeName, latest.totalBytes, latest.freeBytes, latest.capturedAt};
    const SnapshotVolume volume = MapSnapshots::volumeFor(map_->rootPath, startup, volumes_, ctx_.clock.now());
    auto snapshot = MapSnapshots::make(*map_, volume, Uuid::generate());
    if (!snapshot) return; // a partial map is not saved
    const Uuid id = snapshot->id;
    MapSnapshots::insert(snapshots_, std::move(*snapshot));
    if (ctx_.live) MapSnapshots::save(ctx_.store, snapshots_);
    emit snapshotsChanged();
    selectedSnapshot_ = id;
    recompare();
}

QString SpaceMapModel::snapshotRemovedText(const QString& id) const {
    const auto uuid = Uuid::parse(id.toStdString());
    for (const auto& s : snapshots_)
        if (uuid && s.id == *uuid)
            return QStringLiteral("The snapshot of ") + dateText(s.date) +
                   QStringLiteral(" is removed. The current map is not affected.");
    return {};
}

void SpaceMapModel::deleteSnapshot(const QString& id) {
    const auto uuid = Uuid::parse(id.toStdString());
    if (!uuid || !MapSnapshots::remove(snapshots_, *uuid)) return;
    if (ctx_.live) MapSnapshots::save(ctx_.store, snapshots_);
    emit snapshotsChanged();
    if (selectedSnapshot_ == *uuid) {
        selectedSnapshot_.reset();
        recompare();
    }
}

void SpaceMapModel::compareWith(const QString& id) {
    const auto uuid = Uuid::parse(id.toStdString());
    if (!uuid) return;
    selectedSnapshot_ = *uuid;
    recompare();
}

void SpaceMapModel::stopComparing() {
    selectedSnapshot_.reset();
    recompare();
}

void SpaceMapModel::recompare() {
    deltas_ = selectedSnapshot_ ? MapSnapshots::compare(snapshots_, *selectedSnapshot_, map_ ? &*map_ : nullptr)
                                : std::vector<SnapshotDiffer::Delta>{};
    emit comparisonChanged();
    emit snapshotsChanged(); // each row shows whether it is the one compared
}

// ---- texts and lists for the screen ---------------------------------------------------------

QString SpaceMapModel::byteText(qint64 bytes) const { return q(bv::byteText(bytes)); }
QString SpaceMapModel::rootPath() const { return q(root_); }
QString SpaceMapModel::rootName() const { return q(DiskMapScanner::displayName(root_, ctx_.folders.home, {})); }
QString SpaceMapModel::estimateText() const { return q(SpaceMapTimings::estimateText(currentEstimate())); }

QString SpaceMapModel::startTitle() const {
    return map_ && map_->rootPath == root_ ? QStringLiteral("Map again") : QStringLiteral("Map it");
}

QString SpaceMapModel::countedText() const { return q(bv::byteText(countedBytes_)); }

QString SpaceMapModel::elapsedText() const {
    const auto s = static_cast<long long>(elapsedSeconds_);
    return QStringLiteral("%1:%2").arg(s / 60).arg(s % 60, 2, 10, QLatin1Char('0'));
}

QString SpaceMapModel::timeLeftText() const {
    const auto left = SpaceMapTimings::timeLeft(scanEstimate_, countedBytes_, elapsedSeconds_);
    if (!left) return {};
    return q(SpaceMapTimings::durationText(*left)) + QStringLiteral(" left");
}

double SpaceMapModel::progressFraction() const {
    if (!scanEstimate_ || scanEstimate_->bytes <= 0) return -1;
    return std::min(1.0, static_cast<double>(countedBytes_) / static_cast<double>(scanEstimate_->bytes));
}

QString SpaceMapModel::mapSummary() const {
    if (!map_) return {};
    return q(bv::byteText(map_->totalBytes)) + QStringLiteral(" in ") + q(groupedCount(map_->fileCount)) +
           QStringLiteral(" files · mapped ") + dateText(map_->scannedAt);
}

QString SpaceMapModel::partialText() const {
    return map_ && map_->truncated ? QStringLiteral("This map is partial. The scan was cancelled before it finished.")
                                   : QString();
}

QString SpaceMapModel::unreadableText() const {
    if (!map_ || map_->unreadableCount <= 0) return {};
    return q(groupedCount(map_->unreadableCount)) + QStringLiteral(" could not be read.");
}

// Linux has no protected-folder grant: folders the user's account may not open are what stays out.
QString SpaceMapModel::unreadableHint() const {
    return QStringLiteral("Folders your account has no permission to open are left out.");
}

QVariantList SpaceMapModel::trail() const {
    QVariantList out;
    if (!map_) return out;
    for (std::size_t i = 0; i < trail_.size(); ++i)
        out.push_back(QVariantMap{{"index", static_cast<int>(i)},
                                  {"name", i == 0 ? q(map_->root.name) : q(lastComponent(trail_[i]))}});
    return out;
}

QString SpaceMapModel::nodeName() const {
    const DiskMapNode* n = currentNode();
    return n ? q(n->name) : QString();
}

QString SpaceMapModel::nodeBytesText() const {
    const DiskMapNode* n = currentNode();
    return n ? q(bv::byteText(n->bytes)) : QString();
}

QString SpaceMapModel::nodeSharedText() const {
    const DiskMapNode* n = currentNode();
    return n ? sharedText(*n) : QString();
}

QAbstractItemModel* SpaceMapModel::nodeChildren() const { return children_; }

void SpaceMapModel::updateChildren() {
    std::vector<KeyedListModel::Row> rows;
    if (const DiskMapNode* n = currentNode()) {
        int i = 0;
        for (const auto& c : n->children)
            rows.push_back({q(c.path),
                            {q(c.path), q(c.name), static_cast<qint64>(c.bytes), q(bv::byteText(c.bytes)),
                             q(groupedCount(c.fileCount)) + QStringLiteral(" files"),
                             n->bytes > 0 ? static_cast<double>(c.bytes) / static_cast<double>(n->bytes) : 0.0,
                             !c.children.empty(), i++, sharedText(c)}});
    }
    children_->setRows(std::move(rows));
}

QString SpaceMapModel::emptyNodeText() const {
    const DiskMapNode* n = currentNode();
    return n && n->children.empty() ? QStringLiteral("No folder here is large enough to list on its own.") : QString();
}

QVariantList SpaceMapModel::treemap(double width, double height) const {
    QVariantList out;
    const DiskMapNode* n = currentNode();
    if (!n || width <= 0 || height <= 0) return out;
    std::vector<double> weights;
    std::int64_t listed = 0;
    for (const auto& c : n->children) {
        weights.push_back(static_cast<double>(c.bytes));
        listed += c.bytes;
    }
    const std::int64_t rest = n->bytes - listed;
    if (rest > 0) weights.push_back(static_cast<double>(rest));
    const auto rects = TreemapLayout::squarify(weights, TreemapLayout::Rect{0, 0, width, height});
    for (std::size_t i = 0; i < rects.size(); ++i) {
        const bool isRest = i == n->children.size();
        const auto bytes = isRest ? rest : n->children[i].bytes;
        out.push_back(QVariantMap{{"x", rects[i].x},
                                  {"y", rects[i].y},
                                  {"width", rects[i].width},
                                  {"height", rects[i].height},
                                  {"name", isRest ? QStringLiteral("Smaller items") : q(n->children[i].name)},
                                  {"path", isRest ? QString() : q(n->children[i].path)},
                                  {"bytesText", q(bv::byteText(bytes))},
                                  {"isRest", isRest},
                                  {"colorIndex", static_cast<int>(i)}});
    }
    return out;
}

QVariantList SpaceMapModel::volumes() const {
    QVariantList out;
    for (const auto& v : volumes_)
        out.push_back(QVariantMap{{"path", q(v.path)},
                                  {"name", q(v.name)},
                                  {"freeText", q(bv::byteText(v.freeBytes))},
                                  {"totalText", q(bv::byteText(v.totalBytes))}});
    return out;
}

QAbstractItemModel* SpaceMapModel::snapshots() const { return snapshotList_; }

void SpaceMapModel::updateSnapshots() {
    std::vector<KeyedListModel::Row> rows;
    for (const auto& s : snapshots_) {
        const QString key = q(s.id.text());
        rows.push_back({key,
                        {key, dateText(s.date), q(s.rootPath), q(bv::byteText(s.countedBytes)), q(s.volumeName),
                         map_ && map_->rootPath == s.rootPath, selectedSnapshot_ && *selectedSnapshot_ == s.id}});
    }
    snapshotList_->setRows(std::move(rows));
}

QString SpaceMapModel::selectedSnapshotId() const { return selectedSnapshot_ ? q(selectedSnapshot_->text()) : QString(); }

QVariantList SpaceMapModel::deltas() const {
    QVariantList out;
    if (!map_) return out;
    for (const auto& d : deltas_) {
        const std::int64_t change = d.newBytes - d.oldBytes;
        out.push_back(QVariantMap{{"path", q(d.path)},
                                  {"name", relativeName(d.path, map_->rootPath, map_->root.name)},
                                  {"oldText", q(bv::byteText(d.oldBytes))},
                                  {"newText", q(bv::byteText(d.newBytes))},
                                  {"changeText", QString(change > 0 ? "+" : "−") + q(bv::byteText(std::llabs(change)))},
                                  {"grew", d.grew()},
                                  {"symbol", d.grew() ? QStringLiteral("arrow.up.right") : QStringLiteral("arrow.down.right")}});
    }
    return out;
}

QString SpaceMapModel::comparisonText() const {
    if (!selectedSnapshot_ || !MapSnapshots::canCompare(snapshots_, *selectedSnapshot_, map_ ? &*map_ : nullptr))
        return QStringLiteral("Select a snapshot to compare it with the current map.");
    if (deltas_.empty()) return QStringLiteral("No folder changed size since this snapshot.");
    return {};
}

} // namespace bv
