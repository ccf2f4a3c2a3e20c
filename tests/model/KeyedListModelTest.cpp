#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "core/qt/KeyedListModel.h"

using namespace bv;

namespace {

std::vector<KeyedListModel::Row> rows(std::initializer_list<std::pair<const char*, int>> items) {
    std::vector<KeyedListModel::Row> out;
    for (const auto& [key, value] : items) out.push_back({key, {QString(key), value}});
    return out;
}

QStringList keys(const KeyedListModel& m) {
    QStringList out;
    for (int i = 0; i < m.rowCount(); ++i) out << m.data(m.index(i), Qt::UserRole + 1).toString();
    return out;
}

} // namespace

// Each change reaches views as the fewest row signals, never a reset, and equal contents as
// none at all; the tester checks every step for consistency.
TEST(KeyedListModel, ChangesAreRowSignalsAndEqualContentIsSilent) {
    struct Case {
        const char* name;
        std::vector<KeyedListModel::Row> next;
        int inserted, removed, moved, changed;
    };
    const std::vector<Case> cases{
        {"same", rows({{"a", 1}, {"b", 2}, {"c", 3}}), 0, 0, 0, 0},
        {"one value", rows({{"a", 1}, {"b", 20}, {"c", 3}}), 0, 0, 0, 1},
        {"appended", rows({{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}}), 1, 0, 0, 0},
        {"removed", rows({{"a", 1}, {"c", 3}}), 0, 1, 0, 0},
        {"reordered", rows({{"c", 3}, {"a", 1}, {"b", 2}}), 0, 0, 1, 0},
        {"emptied", {}, 0, 3, 0, 0},
    };
    for (const auto& c : cases) {
        KeyedListModel model({"key", "value"});
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        model.setRows(rows({{"a", 1}, {"b", 2}, {"c", 3}}));
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setRows(c.next);
        EXPECT_EQ(reset.count(), 0) << c.name;
        EXPECT_EQ(inserted.count(), c.inserted) << c.name;
        EXPECT_EQ(removed.count(), c.removed) << c.name;
        EXPECT_EQ(moved.count(), c.moved) << c.name;
        EXPECT_EQ(changed.count(), c.changed) << c.name;
        QStringList want;
        for (const auto& r : c.next) want << r.key;
        EXPECT_EQ(keys(model), want) << c.name;
        if (c.changed) {
            const auto roles = changed.first().at(2).value<QList<int>>();
            EXPECT_EQ(roles, QList<int>{Qt::UserRole + 2}) << "only the role that differs";
        }
    }
}

TEST(KeyedListModel, RepeatedKeysReplaceTheList) {
    KeyedListModel model({"key", "value"});
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setRows(rows({{"a", 1}}));
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    model.setRows(rows({{"x", 1}, {"x", 2}}));
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(model.count(), 2);
}
