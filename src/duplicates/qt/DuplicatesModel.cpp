#include "duplicates/qt/DuplicatesModel.h"

#include <QFuture>
#include <QPointer>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>

#include "clean/DevCacheCatalog.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/Messages.h"
#include "core/qt/QtText.h"
#include "core/qt/WhenDone.h"
#include "duplicates/DuplicateScanner.h"
#include "foundation/ByteText.h"
#include "foundation/CalendarContext.h"

namespace bv {
namespace {

std::string nameOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string folderOf(const std::string& path, const std::string& home) {
    const auto slash = path.rfind('/');
    std::string folder = slash == std::string::npos || slash == 0 ? std::string("/") : path.substr(0, slash);
    if (!home.empty() && home != "/" && (folder == home || folder.rfind(home + "/", 0) == 0))
        folder = "~" + folder.substr(home.size());
    return folder;
}

} // namespace

DuplicatesModel::DuplicatesModel(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context),
      groupList_(new NestedListModel({"key", "title", "detail", "reclaimableBytes", "files"},
                                     {"path", "name", "folder", "sizeText", "dateText", "isKept", "sharesStorage"}, this)) {
    poll_.setInterval(300);
    connect(&poll_, &QTimer::timeout, this, &DuplicatesModel::pollProgress);
    connect(this, &DuplicatesModel::groupsChanged, this, &DuplicatesModel::groupsUpdated);
    if (ctx_.live)
        roots_ = ctx_.store.load(kDuplicateRootsFileName, decodeDuplicateRoots).value_or(std::vector<DuplicateRoot>{});
}

DuplicatesModel::~DuplicatesModel() {
    // A scan still running finds its flag set and ends early; its answer is then dropped.
    if (cancel_) cancel_->cancel();
}

void DuplicatesModel::saveRoots() const {
    if (ctx_.live) ctx_.store.saveJson(kDuplicateRootsFileName, encodeDuplicateRoots(roots_));
}

std::vector<std::string> DuplicatesModel::rootPaths() const {
    std::vector<std::string> paths;
    for (const auto& r : roots_) paths.push_back(r.path);
    return paths;
}

void DuplicatesModel::addRoot(const QUrl& folder) {
    if (folder.isEmpty()) return;
    addRootPath(folder.isLocalFile() ? folder.toLocalFile() : folder.toString());
}

void DuplicatesModel::addRootPath(const QString& path) {
    if (path.isEmpty()) return;
    const std::string standard = duplicateStandardPath(path.toStdString());
    for (const auto& r : roots_)
        if (r.path == standard) return;
    roots_.push_back(DuplicateRoot{Uuid::generate(), standard, std::nullopt});
    saveRoots();
    emit rootsChanged();
}

void DuplicatesModel::removeRoot(const QString& id) {
    const auto uuid = Uuid::parse(id.toStdString());
    if (!uuid) return;
    const auto before = roots_.size();
    std::erase_if(roots_, [&](const DuplicateRoot& r) { return r.id == *uuid; });
    if (roots_.size() == before) return;
    saveRoots();
    emit rootsChanged();
}

void DuplicatesModel::setMinimumBytes(qint64 bytes) {
    if (bytes == minimumBytes_) return;
    minimumBytes_ = bytes;
    emit minimumBytesChanged();
}

void DuplicatesModel::setProgress(const QString& text) {
    if (text == progress_) return;
    progress_ = text;
    emit progressChanged();
}

void DuplicatesModel::setScanning(bool on) {
    if (on == scanning_) return;
    scanning_ = on;
    emit scanningChanged();
}

void DuplicatesModel::startScan() {
    if (scanning_) return;
    if (roots_.empty()) {
        ctx_.messages.setErrorMessage(std::string(kNoRoots));
        return;
    }
    token_ = Uuid::generate();
    cancel_ = std::make_shared<CancellationFlag>();
    scanProgress_ = std::make_shared<DuplicateScanProgress>();
    setScanning(true);
    setProgress(QString::fromUtf8(kDuplicateScanStartText));
    // Folder access on this platform is a plain path lookup: nothing to take or give back.
    const auto roots = rootPaths();
    const auto minimum = effectiveDuplicateMinimum(minimumBytes_);
    const auto token = token_;
    const auto flag = cancel_;
    const auto progress = scanProgress_;
    poll_.start();
    QPointer<DuplicatesModel> self(this);
    auto work = QtConcurrent::run([roots, minimum, flag, progress] {
        // Utility priority: the scan yields to the user's own work.
        QThread::currentThread()->setPriority(QThread::LowPriority);
        DuplicateScanner scanner(minimum, *flag, *progress);
        auto groups = scanner.run(roots);
        QThread::currentThread()->setPriority(QThread::NormalPriority);
        return groups;
    });
    whenDone(work, this, [self, token, flag](std::vector<DuplicateGroup> groups) {
        if (self) self->finishScan(token, flag, std::move(groups));
    });
}

void DuplicatesModel::stopScan() {
    if (cancel_) cancel_->cancel();
}

void DuplicatesModel::pollProgress() {
    if (!scanProgress_ || (cancel_ && cancel_->isCancelled())) return;
    setProgress(q(duplicateProgressText(scanProgress_->snapshot())));
}

void DuplicatesModel::finishScan(const Uuid& token, const std::shared_ptr<CancellationFlag>& flag,
                                 std::vector<DuplicateGroup> groups) {
    if (token != token_) return; // a newer scan has started: this answer is stale
    poll_.stop();
    scanProgress_.reset();
    setScanning(false);
    setProgress(QString());
    if (flag && flag->isCancelled()) return; // stopped: the earlier groups stay
    hasScanned_ = true;
    groups_ = std::move(groups);
    keep_ = initialDuplicateKeep(groups_);
    emit groupsChanged();
}

void DuplicatesModel::keepCopy(const QString& groupId, const QString& path) {
    const std::string id = groupId.toStdString();
    const std::string p = path.toStdString();
    for (const auto& g : groups_) {
        if (g.id != id) continue;
        for (const auto& f : g.files) {
            if (f.path != p) continue;
            if (keep_[id] == p) return;
            keep_[id] = p;
            emit groupsChanged();
            return;
        }
    }
}

void DuplicatesModel::present(const DuplicateReview& review) {
    if (review.error) {
        ctx_.messages.setErrorMessage(*review.error);
        return;
    }
    if (review.plan) (void)ctx_.presentPlan(*review.plan, CleanupSheetMode::clean);
}

void DuplicatesModel::reviewAll() {
    present(reviewDuplicates({DuplicateReviewRequest::Scope::all, {}, {}}, groups_, keep_, rootPaths(), ctx_.folders.home));
}

void DuplicatesModel::reviewGroup(const QString& groupId) {
    present(reviewDuplicates({DuplicateReviewRequest::Scope::group, groupId.toStdString(), {}}, groups_, keep_,
                             rootPaths(), ctx_.folders.home));
}

void DuplicatesModel::reviewCopy(const QString& groupId, const QString& path) {
    present(reviewDuplicates({DuplicateReviewRequest::Scope::oneCopy, groupId.toStdString(), path.toStdString()},
                             groups_, keep_, rootPaths(), ctx_.folders.home));
}

QVariantList DuplicatesModel::rootList() const {
    QVariantList list;
    const std::string home = DevCacheCatalog::standardizedPath(ctx_.folders.home);
    for (const auto& r : roots_) {
        std::string shown = r.path;
        if (!home.empty() && home != "/" && (shown == home || shown.rfind(home + "/", 0) == 0))
            shown = "~" + shown.substr(home.size());
        list.push_back(QVariantMap{{"id", q(r.id.text())}, {"path", q(r.path)}, {"shownPath", q(shown)}});
    }
    return list;
}

QAbstractItemModel* DuplicatesModel::groups() const { return groupList_; }

void DuplicatesModel::groupsUpdated() {
    const std::string home = DevCacheCatalog::standardizedPath(ctx_.folders.home);
    std::vector<KeyedListModel::Row> rows;
    for (const auto& g : groups_) {
        const QString key = q(g.id);
        const DuplicateFile* keeper = duplicateKeeper(g, keep_);
        std::vector<KeyedListModel::Row> files;
        for (const auto& f : g.files)
            files.push_back({q(f.path),
                             {q(f.path), q(nameOf(f.path)), q(folderOf(f.path, home)), q(byteText(f.bytes)),
                              f.modified ? q(ctx_.calendar.format(*f.modified, "yMMMd")) : QString(), &f == keeper,
                              f.sharesStorage}});
        KeyedListModel* fileList = groupList_->child(key);
        fileList->setRows(std::move(files));
        const QString frees = g.reclaimableBytes > 0 ? q(byteText(g.reclaimableBytes)) + " to free" : QString("Nothing to free");
        rows.push_back({key,
                        {key, q(nameOf(g.files.empty() ? std::string() : g.files.front().path)),
                         QString::number(g.files.size()) + " copies of " + q(byteText(g.fileSize)) + " · " + frees,
                         static_cast<qint64>(g.reclaimableBytes), QVariant::fromValue<QObject*>(fileList)}});
    }
    groupList_->setRowsAndChildren(std::move(rows));
}

QVariantList DuplicatesModel::minimumChoices() const {
    QVariantList list;
    for (const std::int64_t bytes : {100000LL, 1000000LL, 10000000LL, 100000000LL})
        list.push_back(QVariantMap{{"bytes", static_cast<qint64>(bytes)}, {"text", q(byteText(bytes))}});
    return list;
}

QString DuplicatesModel::badge() const {
    if (groups_.empty()) return {};
    std::int64_t total = 0;
    for (const auto& g : groups_) total += g.reclaimableBytes;
    return q(byteText(total));
}

QString DuplicatesModel::summary() const {
    if (!hasScanned_) return {};
    if (groups_.empty()) return QStringLiteral("No copies found");
    return QString::number(groups_.size()) + (groups_.size() == 1 ? " group · " : " groups · ") + badge() + " to free";
}

} // namespace bv

namespace bv {

QVariantMap DuplicatesModel::texts() const {
    namespace t = duplicateTexts;
    const auto u = [](const char* text) { return QString::fromUtf8(text); };
    return {{"chooseFolder", u(kChooseFolderTitle)},     {"removeRoot", u(kRemoveRootHelp)},
            {"minimumCaption", u(kMinimumCaption)},      {"heading", u(kHeading)},
            {"reviewAll", u(t::kReviewAll)},             {"previewCaption", u(t::kPreviewCaption)},
            {"cleanGroup", u(t::kCleanGroup)},           {"cleanGroupCaption", u(t::kCleanGroupCaption)},
            {"trashOne", u(t::kTrashOneCopy)},           {"trashOneCaption", u(t::kTrashOneCopyCaption)},
            {"keeperMark", u(t::kKeeperMark)},           {"notKeptMark", u(t::kNotKeptMark)},
            {"keepThis", u(t::kKeepThisCopy)},           {"keepInstead", u(t::kKeepThisCopyInstead)}};
}

} // namespace bv
