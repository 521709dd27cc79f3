// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/managed_object.h"

#include <QAbstractItemModel>
#include <vector>

namespace viewcontrollers {

/// An item model with records as rows. It turns one list of rows into another by removing, moving and inserting, so
/// that what is selected, open for editing or scrolled to in a view stays with its record. Main thread.
class RecordModel : public QAbstractItemModel
{
public:
    using Records = std::vector<objectstore::ManagedObject *>;

protected:
    /// Makes `rows`, the rows below `parent`, those of `wanted`; no record may be in either twice.
    void rearrange(Records &rows, const Records &wanted, const QModelIndex &parent);

private:
    void removeOthers(Records &rows, const Records &wanted, const QModelIndex &parent);
    void bringToPlaces(Records &rows, const Records &wanted, const QModelIndex &parent);
    void insertMissing(Records &rows, const Records &wanted, const QModelIndex &parent);
};

} // namespace viewcontrollers
