// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/managed_object.h"

#include <algorithm>
#include <vector>

namespace objectstore {

/// A set of objects of one context in which each object knows by a mark whether it is in. Keeps the order in which they
/// came, which mostly is the order of their keys.
template <ManagedObject::Mark mark> class ObjectSet
{
public:
    ObjectSet() = default;
    ObjectSet(ObjectSet &&other) noexcept = default;
    ObjectSet &operator=(ObjectSet &&other) = delete; // the marks of what was in would remain

    /// Whether `object` was not in yet.
    bool insert(ManagedObject &object)
    {
        if (contains(object))
            return false;
        object.m_marks |= mark;
        m_objects.push_back(&object);
        return true;
    }
    /// Whether `object` was in. Takes time for those that came after it.
    bool erase(ManagedObject &object)
    {
        if (!contains(object))
            return false;
        object.m_marks &= ~mark;
        m_objects.erase(std::find(m_objects.rbegin(), m_objects.rend(), &object).base() - 1);
        return true;
    }
    [[nodiscard]] bool contains(const ManagedObject &object) const { return (object.m_marks & mark) != 0; }
    /// Leaves the set empty.
    std::vector<ManagedObject *> takeAll()
    {
        for (ManagedObject *object : m_objects)
            object->m_marks &= ~mark;
        return std::exchange(m_objects, {});
    }

    [[nodiscard]] const std::vector<ManagedObject *> &inOrderOfArrival() const { return m_objects; }
    [[nodiscard]] bool empty() const { return m_objects.empty(); }
    [[nodiscard]] auto begin() const { return m_objects.begin(); }
    [[nodiscard]] auto end() const { return m_objects.end(); }

private:
    std::vector<ManagedObject *> m_objects;
};

} // namespace objectstore
