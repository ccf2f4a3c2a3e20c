#include "clean/qt/SmartCleanModel.h"

#include <QVariantMap>

#include "clean/CleanupKinds.h"
#include "clean/SmartCleanLayout.h"
#include "core/AppModel.h"
#include "foundation/ByteText.h"
#include "platform/XdgPaths.h"

namespace bv {
namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

// The path as the screens show it: the home folder written as "~".
QString displayPath(const std::string& path, const std::string& home) {
    if (!home.empty() && (path == home || path.starts_with(home + "/"))) return q("~" + path.substr(home.size()));
    return q(path);
}

CleanupTier tierOf(const DevScanRow& row) {
    if (!row.optIn) return CleanupTier::regenerable;
    return row.id.starts_with("node-") ? CleanupTier::abandonedTool : CleanupTier::userData;
}

QVariantMap rowMap(const DevScanRow& row, const std::string& home) {
    return QVariantMap{{"id", q(row.id)},
                       {"title", q(row.title)},
                       {"path", displayPath(row.path, home)},
                       {"bytes", static_cast<double>(row.bytes)},
                       {"sizeText", q(byteText(row.bytes))},
                       {"note", q(row.note)},
                       {"group", q(row.group)},
                       {"badge", row.kind == DevRowKind::cleanable ? q(std::string(badgeWord(tierOf(row)))) : QString()},
                       {"selectable", row.selectable},
                       {"selected", row.selected},
                       {"recommended", SmartCleanLayout::isRecommended(row)},
                       {"blockedReason", row.blockedReason ? q(*row.blockedReason) : QString()},
                       {"toolCommand", row.toolCommand ? q(*row.toolCommand) : QString()}};
}

bool choosable(const DevScanRow& row) { return row.selectable && row.kind == DevRowKind::cleanable; }

} // namespace

SmartCleanModel::SmartCleanModel(AppModel& model) : QObject(&model), model_(model) {}

// The screen reads the cards from several bindings; they are built once per change.
void SmartCleanModel::rebuild() {
    cards_ = buildCards();
    reviewRowMaps_ = buildReviewRows();
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
    bool changed = false;
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

void SmartCleanModel::preview() { model_.presentCleanupPlan(SmartCleanLayout::plan(rows_, XdgPaths::home())); }

void SmartCleanModel::reviewAndClean() {
    if (selectedCount() == 0) selectRecommended();
    preview();
}

int SmartCleanModel::selectedCount() const {
    int n = 0;
    for (const auto& r : rows_) n += r.selected ? 1 : 0;
    return n;
}

QString SmartCleanModel::selectedText() const {
    std::int64_t sum = 0;
    for (const auto& r : rows_)
        if (r.selected && r.bytes > 0) sum += r.bytes;
    return q(byteText(sum));
}

int SmartCleanModel::recommendedCount() const {
    int n = 0;
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

QVariantList SmartCleanModel::buildCards() const {
    const std::string home = XdgPaths::home();
    QVariantList out;
    for (const auto& card : SmartCleanLayout::cards(rows_, showSmallItems_)) {
        QVariantList rows;
        QVariantList small;
        int choosableCount = 0;
        int ticked = 0;
        for (const auto* list : {&card.rows, &card.smallRows}) {
            for (const auto& r : *list) {
                (list == &card.rows ? rows : small).push_back(rowMap(r, home));
                if (choosable(r)) {
                    ++choosableCount;
                    ticked += r.selected ? 1 : 0;
                }
            }
        }
        // The kept rows are not in the card's lists; the kept line speaks for them.
        out.push_back(QVariantMap{{"id", q(card.id)},
                                  {"title", q(card.title)},
                                  {"rows", rows},
                                  {"smallRows", small},
                                  {"hiddenCount", card.hiddenCount},
                                  {"keptLine", card.keptLine ? q(*card.keptLine) : QString()},
                                  {"safety", q(card.safety)},
                                  {"totalBytes", static_cast<double>(card.totalBytes)},
                                  {"totalText", q(byteText(card.totalBytes))},
                                  {"choosableCount", choosableCount},
                                  {"allTicked", choosableCount > 0 && ticked == choosableCount}});
    }
    return out;
}

QVariantList SmartCleanModel::buildReviewRows() const {
    const std::string home = XdgPaths::home();
    QVariantList out;
    for (const auto& r : reviewRows_) out.push_back(rowMap(r, home));
    return out;
}

} // namespace bv
