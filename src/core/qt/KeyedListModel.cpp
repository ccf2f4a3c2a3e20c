#include "core/qt/KeyedListModel.h"

#include <unordered_set>

namespace bv {

KeyedListModel::KeyedListModel(QList<QByteArray> roleNames, QObject* parent)
    : QAbstractListModel(parent), names_(std::move(roleNames)) {}

int KeyedListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : count(); }

QVariant KeyedListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
    return value(index.row(), role == Qt::DisplayRole ? 0 : role - (Qt::UserRole + 1));
}

QVariant KeyedListModel::value(int row, int roleIndex) const {
    if (row < 0 || row >= count()) return {};
    const auto& values = rows_[static_cast<std::size_t>(row)].values;
    return roleIndex >= 0 && roleIndex < values.size() ? values[roleIndex] : QVariant();
}

QHash<int, QByteArray> KeyedListModel::roleNames() const {
    QHash<int, QByteArray> out;
    for (int i = 0; i < names_.size(); ++i) out.insert(Qt::UserRole + 1 + i, names_[i]);
    return out;
}

void KeyedListModel::replaceAll(std::vector<Row> rows) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

void KeyedListModel::updateInPlace(int row, Row next) {
    Row& current = rows_[static_cast<std::size_t>(row)];
    if (current == next) return;
    QList<int> roles;
    for (int i = 0; i < next.values.size(); ++i)
        if (i >= current.values.size() || current.values[i] != next.values[i]) roles << Qt::UserRole + 1 + i;
    current = std::move(next);
    const QModelIndex at = index(row);
    emit dataChanged(at, at, roles);
}

void KeyedListModel::setRows(std::vector<Row> next) {
    if (next == rows_) return;
    const int before = count();
    std::unordered_set<QString> nextKeys;
    bool unique = true;
    for (const auto& r : next) unique = nextKeys.insert(r.key).second && unique;
    if (!unique) {
        // Keys that repeat cannot be followed row by row; such a list is simply replaced.
        replaceAll(std::move(next));
    } else {
        for (int i = count() - 1; i >= 0; --i) {
            if (nextKeys.count(rows_[static_cast<std::size_t>(i)].key)) continue;
            beginRemoveRows({}, i, i);
            rows_.erase(rows_.begin() + i);
            endRemoveRows();
        }
        for (int i = 0; i < static_cast<int>(next.size()); ++i) {
            Row& want = next[static_cast<std::size_t>(i)];
            if (i < count() && rows_[static_cast<std::size_t>(i)].key == want.key) {
                updateInPlace(i, std::move(want));
                continue;
            }
            int found = -1;
            for (int j = i + 1; j < count(); ++j)
                if (rows_[static_cast<std::size_t>(j)].key == want.key) {
                    found = j;
                    break;
                }
            if (found >= 0) {
                beginMoveRows({}, found, found, {}, i);
                Row moved = std::move(rows_[static_cast<std::size_t>(found)]);
                rows_.erase(rows_.begin() + found);
                rows_.insert(rows_.begin() + i, std::move(moved));
                endMoveRows();
                updateInPlace(i, std::move(want));
            } else {
                beginInsertRows({}, i, i);
                rows_.insert(rows_.begin() + i, std::move(want));
                endInsertRows();
            }
        }
    }
    if (count() != before) emit countChanged();
}

NestedListModel::NestedListModel(QList<QByteArray> roleNames, QList<QByteArray> childRoleNames, QObject* parent)
    : KeyedListModel(std::move(roleNames), parent), childNames_(std::move(childRoleNames)) {}

KeyedListModel* NestedListModel::child(const QString& key) {
    auto& slot = children_[key];
    if (!slot) slot = new KeyedListModel(childNames_, this);
    return slot;
}

void NestedListModel::setRowsAndChildren(std::vector<Row> rows) {
    std::unordered_set<QString> keys;
    for (const auto& r : rows) keys.insert(r.key);
    setRows(std::move(rows));
    for (auto it = children_.begin(); it != children_.end();) {
        if (keys.count(it->first)) {
            ++it;
            continue;
        }
        it->second->deleteLater();
        it = children_.erase(it);
    }
}

} // namespace bv
