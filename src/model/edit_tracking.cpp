// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/edit_tracking.h"

#include <algorithm>

namespace model {

void EditTracking::observe()
{
    m_moc.processPendingChanges(); // what was changed before belongs to what held before
    if (!m_registered || m_pauses > 0)
        m_subscription.reset();
    else
        m_subscription = m_moc.onObjectsDidChange(
            [this](const objectstore::ObjectsChange &change) { updateManagedObjectModificationDates(change); });
}

void EditTracking::registerForChangeNotifications()
{
    m_registered = true;
    observe();
}

void EditTracking::unregisterForChangeNotifications()
{
    m_registered = false;
    observe();
}

void EditTracking::beginPause()
{
    ++m_pauses;
    observe();
}

void EditTracking::endPause()
{
    --m_pauses;
    observe();
}

void EditTracking::updateManagedObjectModificationDates(const objectstore::ObjectsChange &change) const
{
    for (ManagedObject *object : change.updated) {
        const bool isTask = as<Tasks>(object) != nullptr;
        const bool isFolder = as<Folders>(object) != nullptr;
        if (!isTask && !isFolder && !as<Contexts>(object))
            continue;
        if (object->changedValues().empty())
            continue;
        if (isTask && object->hasChanged("modifiedDate"))
            continue; // keeps the first stamp until it is saved
        if (isFolder && object->hasChanged("order"))
            continue; // sorting the folders does not edit them
        object->setPrimitiveValue("modifiedDate", m_clock.now());
    }
}

} // namespace model
