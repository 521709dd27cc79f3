// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/record_model.h"

#include <unordered_set>

namespace viewcontrollers {

using objectstore::ManagedObject;

namespace {

using RecordSet = std::unordered_set<const ManagedObject *>;

RecordSet setOf(const RecordModel::Records &records)
{
    return {records.begin(), records.end()};
}

} // namespace

void RecordModel::rearrange(Records &rows, const Records &wanted, const QModelIndex &parent)
{
    if (rows == wanted)
        return;
    removeOthers(rows, wanted, parent);
    bringToPlaces(rows, wanted, parent);
    insertMissing(rows, wanted, parent);
}

void RecordModel::removeOthers(Records &rows, const Records &wanted, const QModelIndex &parent)
{
    const RecordSet stays = setOf(wanted);
    int end = static_cast<int>(rows.size());
    while (end > 0) {
        if (stays.contains(rows[static_cast<std::size_t>(end - 1)])) {
            --end;
            continue;
        }
        int begin = end - 1;
        while (begin > 0 && !stays.contains(rows[static_cast<std::size_t>(begin - 1)]))
            --begin;
        beginRemoveRows(parent, begin, end - 1);
        rows.erase(rows.begin() + begin, rows.begin() + end);
        endRemoveRows();
        end = begin;
    }
}

void RecordModel::bringToPlaces(Records &rows, const Records &wanted, const QModelIndex &parent)
{
    const RecordSet present = setOf(rows);
    Records ordered;
    ordered.reserve(rows.size());
    for (ManagedObject *record : wanted) {
        if (present.contains(record))
            ordered.push_back(record);
    }
    if (ordered == rows)
        return;
    const QList<QPersistentModelIndex> parents{QPersistentModelIndex(parent)};
    Q_EMIT layoutAboutToBeChanged(parents, VerticalSortHint);
    std::unordered_map<const ManagedObject *, int> places;
    for (std::size_t place = 0; place < ordered.size(); ++place)
        places.emplace(ordered[place], static_cast<int>(place));
    QModelIndexList before;
    QModelIndexList after;
    for (const QModelIndex &index : persistentIndexList()) {
        if (index.parent() != parent)
            continue;
        before.append(index);
        after.append(
            createIndex(places.at(rows[static_cast<std::size_t>(index.row())]), index.column(), index.internalId()));
    }
    rows = std::move(ordered);
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged(parents, VerticalSortHint);
}

void RecordModel::insertMissing(Records &rows, const Records &wanted, const QModelIndex &parent)
{
    for (std::size_t begin = 0; begin < wanted.size(); ++begin) {
        if (begin < rows.size() && rows[begin] == wanted[begin])
            continue;
        // Everything that is there stands in the wanted order, so what is missing here ends where the next of it
        // begins.
        std::size_t end = wanted.size();
        if (begin < rows.size())
            end = static_cast<std::size_t>(
                std::find(wanted.begin() + static_cast<std::ptrdiff_t>(begin), wanted.end(), rows[begin])
                - wanted.begin());
        beginInsertRows(parent, static_cast<int>(begin), static_cast<int>(end) - 1);
        rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(begin),
            wanted.begin() + static_cast<std::ptrdiff_t>(begin), wanted.begin() + static_cast<std::ptrdiff_t>(end));
        endInsertRows();
        begin = end;
    }
}

} // namespace viewcontrollers
