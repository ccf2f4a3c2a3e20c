#include "clean/qt/SmartCleanModel.h"

#include <QFuture>
#include <QtConcurrent/QtConcurrentRun>

#include "clean/Cleaner.h"
#include "clean/CleanupKinds.h"
#include "clean/SmartCleanLayout.h"
#include "clean/qt/SmartCleanFinds.h"
#include "core/qt/CueBus.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/QtText.h"
#include "core/qt/WhenDone.h"
#include "foundation/ByteText.h"

namespace bv {
namespace {

CleanupTier tierOf(const DevScanRow& row) {
    if (!row.optIn) return CleanupTier::regenerable;
    return row.id.starts_with("node-") ? CleanupTier::abandonedTool : CleanupTier::userData;
}

const QList<QByteArray> kRowRoles{"key",  "title",      "path",        "bytes",         "sizeText",   "note",       "group",
                                  "badge", "selectable", "selected", "recommended", "blockedReason", "toolCommand"};

KeyedListModel::Row rowOf(const DevScanRow& row, const std::string& home) {
    return {q(row.id),
            {q(row.id), q(row.title), q(pathForPeople(row.path, home)), static_cast<double>(row.bytes), q(byteText(row.bytes)),
             q(row.note), q(row.group),
             row.kind == DevRowKind::cleanable ? q(std::string(badgeWord(tierOf(row)))) : QString(), row.selectable,
             row.selected, SmartCleanLayout::isRecommended(row), q(row.blockedReason), q(row.toolCommand)}};
}

bool choosable(const DevScanRow& row) { return row.selectable && row.kind == DevRowKind::cleanable; }

} // namespace

SmartCleanModel::SmartCleanModel(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context),
      cards_(new NestedListModel({"key", "title", "rows", "hiddenCount", "keptLine", "safety", "totalBytes", "totalText",
                                  "choosableCount", "allTicked"},
                                 kRowRoles, this)),
      reviewList_(new KeyedListModel(kRowRoles, this)), finds_(new SmartCleanFinds(context, this)) {
    connect(finds_, &SmartCleanFinds::selectionChanged, this, &SmartCleanModel::rowsChanged);
    connect(finds_, &SmartCleanFinds::progressText, this, [this](const QString& text) {
        if (!scanning_) setProgress(text.isEmpty() ? followingProgress_ : text);
    });
}

QAbstractItemModel* SmartCleanModel::cards() const { return cards_; }
QAbstractItemModel* SmartCleanModel::reviewRows() const { return reviewList_; }

void SmartCleanModel::setScanning(bool on) {
    if (scanning_ == on) return;
    scanning_ = on;
    emit scanningChanged();
}

void SmartCleanModel::setProgress(const QString& text) {
    if (progress_ == text) return;
    progress_ = text;
    emit progressChanged();
}

void SmartCleanModel::setFollowingProgress(const QString& text) {
    followingProgress_ = text;
    if (!scanning_) setProgress(text);
}

void SmartCleanModel::scan() {
    if (!ctx_.live || scanning_) return;
    setScanning(true);
    setProgress(QStringLiteral("Scanning developer caches\u2026"));
    const std::string home = ctx_.folders.home;
    const DevCacheScanner::Options options = scanOptions_;
    auto work = QtConcurrent::run([home, options] { return DevCacheScanner::scan(home, options); });
    whenDone(work, this, [this](DevCacheScanner::Result result) {
        setScanResult(std::move(result));
        setProgress(q(AppLeftovers::kScanning));
        finds_->scanLeftovers([this] {
            setScanning(false);
            setProgress(followingProgress_);
            ctx_.cues.play("ready", 0.322);
            emit scanFinished();
            ctx_.cues.reevaluate();
            finds_->scanProjects();
        });
    });
}

// Cards and rows are handed to the lists whole after each change; the lists pass on only
// what differs, so a tick redraws one row.
void SmartCleanModel::rebuild() {
    const std::string& home = ctx_.folders.home;
    std::vector<KeyedListModel::Row> cards;
    for (const auto& card : SmartCleanLayout::cards(rows_, showSmallItems_)) {
        const QString key = q(card.id);
        std::vector<KeyedListModel::Row> rows;
        int choosableCount = 0;
        int ticked = 0;
        for (const auto* list : {&card.rows, &card.smallRows})
            for (const auto& r : *list) {
                rows.push_back(rowOf(r, home));
                if (choosable(r)) {
                    ++choosableCount;
                    ticked += r.selected ? 1 : 0;
                }
            }
        KeyedListModel* rowList = cards_->child(key);
        rowList->setRows(std::move(rows));
        // The kept rows are not in the card's lists; the kept line speaks for them.
        cards.push_back({key,
                         {key, q(card.title), QVariant::fromValue<QObject*>(rowList), card.hiddenCount, q(card.keptLine),
                          q(card.safety), static_cast<double>(card.totalBytes), q(byteText(card.totalBytes)),
                          choosableCount, choosableCount > 0 && ticked == choosableCount}});
    }
    cards_->setRowsAndChildren(std::move(cards));
    std::vector<KeyedListModel::Row> review;
    for (const auto& r : reviewRows_) review.push_back(rowOf(r, home));
    reviewList_->setRows(std::move(review));
    emit rowsChanged();
}

void SmartCleanModel::setScanResult(DevCacheScanner::Result result) {
    rows_ = std::move(result.rows);
    reviewRows_ = std::move(result.reviewRows);
    for (auto& r : rows_) r.selected = false;
    hasScanned_ = true;
    rebuild();
}

void SmartCleanModel::selectRecommended() {
    bool changed = finds_->selectRecommended();
    for (auto& r : rows_) {
        if (SmartCleanLayout::isRecommended(r) && !r.selected) {
            r.selected = true;
            changed = true;
        }
    }
    if (changed) rebuild();
}

void SmartCleanModel::setRowSelected(const QString& id, bool selected) {
    const std::string key = id.toStdString();
    for (auto& r : rows_) {
        if (r.id != key) continue;
        const bool want = selected && choosable(r);
        if (r.selected == want) return;
        r.selected = want;
        rebuild();
        return;
    }
}

void SmartCleanModel::setCardSelected(const QString& cardId, bool selected) {
    const std::string key = cardId.toStdString();
    bool changed = false;
    for (auto& r : rows_) {
        if (SmartCleanLayout::familyOf(r).key != key) continue;
        // A small row hidden behind "Show small items" is not ticked by its card.
        const bool visible = showSmallItems_ || SmartCleanLayout::isRecommended(r) || r.bytes >= SmartCleanLayout::kLargeBytes;
        const bool want = selected && choosable(r) && visible;
        if (r.selected != want && (want || !selected)) {
            r.selected = want;
            changed = true;
        }
    }
    if (changed) rebuild();
}

void SmartCleanModel::setShowSmallItems(bool on) {
    if (showSmallItems_ == on) return;
    showSmallItems_ = on;
    rebuild();
}

void SmartCleanModel::preview() {
    CleanupPlan plan = SmartCleanLayout::plan(rows_, ctx_.folders.home);
    CleanupPlan more = finds_->plan();
    for (auto& e : more.entries) plan.entries.push_back(std::move(e));
    for (auto& r : more.refusals) plan.refusals.push_back(std::move(r));
    (void)ctx_.presentPlan(std::move(plan), CleanupSheetMode::clean);
}

void SmartCleanModel::reviewAndClean() {
    if (selectedCount() == 0) selectRecommended();
    preview();
}

int SmartCleanModel::selectedCount() const {
    int n = finds_->selectedCount();
    for (const auto& r : rows_) n += r.selected ? 1 : 0;
    return n;
}

QString SmartCleanModel::selectedText() const {
    std::int64_t sum = finds_->selectedBytes();
    for (const auto& r : rows_)
        if (r.selected && r.bytes > 0) sum += r.bytes;
    return q(byteText(sum));
}

int SmartCleanModel::recommendedCount() const {
    int n = static_cast<int>(AppLeftovers::recommendedIDs(finds_->findings()).size());
    for (const auto& r : rows_) n += SmartCleanLayout::isRecommended(r) ? 1 : 0;
    return n;
}

std::int64_t SmartCleanModel::reclaimableBytes() const {
    std::int64_t sum = 0;
    for (const auto& r : rows_)
        if (choosable(r) && r.bytes > 0 && (r.selected || SmartCleanLayout::isRecommended(r))) sum += r.bytes;
    return sum;
}

QString SmartCleanModel::reclaimableText() const { return q(byteText(reclaimableBytes())); }

} // namespace bv
