#pragma once
#include <QAbstractListModel>
#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <unordered_map>
#include <vector>

namespace bv {

// A flat list for QML whose rows are known by a key. Each concrete list declares an
// `enum class Role` starting at Qt::UserRole + 1, in the order of the names it passes here,
// and hands over whole new contents with setRows. setRows changes views the least it can:
// rows that stay are updated in place (dataChanged for the roles that differ), rows that went
// are removed, new rows inserted and reordered rows moved; equal contents signal nothing.
class KeyedListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    struct Row {
        QString key;
        QList<QVariant> values; // one per role, in role order
        bool operator==(const Row&) const = default;
    };

    KeyedListModel(QList<QByteArray> roleNames, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    void setRows(std::vector<Row> rows);
    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
    // A row's value by role index (0 for the first role); an invalid QVariant when out of range.
    [[nodiscard]] QVariant value(int row, int roleIndex) const;

signals:
    void countChanged();

private:
    void replaceAll(std::vector<Row> rows);
    void updateInPlace(int row, Row next);

    QList<QByteArray> names_;
    std::vector<Row> rows_;
};

// A keyed list whose rows each hold a child list (a card's rows, a group's files), exposed
// to QML as a role holding the child model. A child lives as long as its row's key does, so a
// view of it survives a refresh of the parent.
class NestedListModel : public KeyedListModel {
    Q_OBJECT
    QML_ANONYMOUS
public:
    NestedListModel(QList<QByteArray> roleNames, QList<QByteArray> childRoleNames, QObject* parent = nullptr);
    // The child list of the row `key`, made on first use.
    [[nodiscard]] KeyedListModel* child(const QString& key);
    // As setRows; children of rows that went are deleted afterwards.
    void setRowsAndChildren(std::vector<Row> rows);

private:
    QList<QByteArray> childNames_;
    std::unordered_map<QString, KeyedListModel*> children_;
};

} // namespace bv
