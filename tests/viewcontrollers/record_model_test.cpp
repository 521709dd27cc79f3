// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/record_model.h"

#include "support/test_application.h"

#include <QAbstractItemModelTester>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

using viewcontrollers::RecordModel;

namespace {

/// A flat list of records, as simple as can be.
class ListOfRecords final : public RecordModel
{
public:
    void setRows(const Records &wanted) { rearrange(m_rows, wanted, {}); }
    [[nodiscard]] const Records &rows() const { return m_rows; }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override
    {
        return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
    }
    QModelIndex parent(const QModelIndex &) const override { return {}; }
    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }
    int columnCount(const QModelIndex &) const override { return 2; }
    QVariant data(const QModelIndex &, int) const override { return {}; }

private:
    Records m_rows;
};

/// Eight records of a store that all the cases share.
RecordModel::Records someRecords()
{
    static support::TestApplication application;
    static const RecordModel::Records records = [] {
        RecordModel::Records made;
        for (int number = 0; number < 8; ++number)
            made.push_back(&application.moc().insert("Tags"));
        return made;
    }();
    return records;
}

} // namespace

RC_GTEST_PROP(RecordModel, keepsTheRowOfEveryRecordThatStays, ())
{
    const std::vector<objectstore::ManagedObject *> all = someRecords();

    ListOfRecords list;
    const QAbstractItemModelTester tester(&list, QAbstractItemModelTester::FailureReportingMode::Fatal);
    for (int step = 0; step < 4; ++step) {
        const auto ranks = *rc::gen::container<std::vector<int>>(all.size(), rc::gen::inRange(-4, 100));
        std::vector<std::pair<int, objectstore::ManagedObject *>> drawn;
        for (std::size_t place = 0; place < all.size(); ++place) {
            if (ranks[place] >= 0) // the others are not in the list
                drawn.emplace_back(ranks[place], all[place]);
        }
        std::sort(drawn.begin(), drawn.end());
        RecordModel::Records wanted;
        for (const auto &[rank, record] : drawn)
            wanted.push_back(record);

        std::vector<std::pair<QPersistentModelIndex, objectstore::ManagedObject *>> kept;
        for (std::size_t row = 0; row < list.rows().size(); ++row)
            kept.emplace_back(list.index(static_cast<int>(row), 1), list.rows()[row]);
        list.setRows(wanted);

        RC_ASSERT(list.rows() == wanted);
        for (const auto &[index, record] : kept) {
            const auto place = std::find(wanted.begin(), wanted.end(), record);
            RC_ASSERT(index.isValid() == (place != wanted.end()));
            if (index.isValid())
                RC_ASSERT(index.row() == static_cast<int>(place - wanted.begin()));
        }
    }
}
