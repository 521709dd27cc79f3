// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/managed_object.h"

#include "objectstore/context_state.h"
#include "objectstore/undo_manager.h"

#include <algorithm>
#include <cmath>

namespace objectstore {

ManagedObject::ManagedObject() = default;
ManagedObject::~ManagedObject() = default;

bool ManagedObject::hasChanges() const
{
    return m_inserted || m_deleted || m_unsaved;
}

bool ManagedObject::inKeyOrder(const ManagedObject *left, const ManagedObject *right)
{
    const int leftEntity = left->entity().index();
    const int rightEntity = right->entity().index();
    return leftEntity != rightEntity ? leftEntity < rightEntity : left->m_id.key < right->m_id.key;
}

const Value *ManagedObject::unsavedValue(int slot) const
{
    if (!m_unsaved)
        return nullptr;
    for (const auto &[changedSlot, value] : m_unsaved->values) {
        if (changedSlot == slot)
            return &value;
    }
    return nullptr;
}

ValueView ManagedObject::value(const Property &property) const
{
    if (property.isToMany() || m_deleted)
        return {};
    if (const Value *unsaved = unsavedValue(property.slot))
        return view(*unsaved);
    if (!m_row)
        m_context->load(*this);
    return m_row ? m_row->value(property.slot, property.destination) : ValueView();
}

ValueView ManagedObject::value(std::string_view name) const
{
    const Property *property = entity().property(name);
    return property ? value(*property) : ValueView();
}

std::optional<Instant> ManagedObject::date(std::string_view name) const
{
    const ValueView held = value(name);
    const auto *instant = std::get_if<Instant>(&held);
    return instant ? std::optional(*instant) : std::nullopt;
}

/// Keeps `value` as unsaved, or nothing where it is what the row holds already.
void ManagedObject::storeValue(const Property &property, Value value)
{
    if (std::isnan(toDouble(view(value))))
        value = {}; // what SQLite keeps for it
    if (!m_row)
        m_context->load(*this);
    const bool asInRow = m_row && sameValue(view(value), m_row->value(property.slot, property.destination));
    if (!m_unsaved) {
        if (asInRow)
            return;
        m_unsaved = std::make_unique<Unsaved>();
    }
    auto &values = m_unsaved->values;
    const auto place
        = std::find_if(values.begin(), values.end(), [&](const auto &entry) { return entry.first == property.slot; });
    if (asInRow) {
        if (place != values.end())
            values.erase(place);
        if (values.empty() && m_unsaved->members.empty()) {
            m_unsaved.reset();
            dropStaleRow();
        }
    } else if (place != values.end()) {
        place->second = std::move(value);
    } else {
        values.emplace_back(property.slot, std::move(value));
    }
}

/// Lets the row be read again where no value of ours is left that kept it.
void ManagedObject::dropStaleRow()
{
    if (std::exchange(m_stale, false))
        m_row.reset();
}

void ManagedObject::change(const Property &property, Value value)
{
    if (property.isToMany() || m_deleted)
        return;
    const ValueView before = this->value(property);
    if (sameValue(before, view(value)))
        return;
    if (UndoManager *undo = m_context->undoManager())
        undo->recordValue(*this, property, copy(before), value);
    storeValue(property, std::move(value));
    m_context->noteChange(*this);
}

void ManagedObject::setValue(const Property &property, Value value)
{
    if (property.isToOne()) {
        const auto *id = std::get_if<ObjectID>(&value);
        setRelated(property.name, id && *id ? m_context->object(*id) : nullptr);
    } else {
        change(property, std::move(value));
    }
}

void ManagedObject::setValue(std::string_view name, Value value)
{
    if (const Property *property = entity().property(name))
        setValue(*property, std::move(value));
}

void ManagedObject::setDate(std::string_view name, std::optional<Instant> date)
{
    setValue(name, date ? Value(*date) : Value());
}

void ManagedObject::setPrimitiveValue(std::string_view name, Value value)
{
    const Property *property = entity().property(name);
    if (!property || !property->isAttribute() || m_deleted)
        return;
    storeValue(*property, std::move(value));
    m_context->m_state->changedOf(entity()).insert(*this);
}

ManagedObject *ManagedObject::related(const Property &relationship) const
{
    const ValueView held = value(relationship);
    const auto *id = std::get_if<ObjectID>(&held);
    return id ? m_context->existingObject(*id) : nullptr;
}

ManagedObject *ManagedObject::related(std::string_view name) const
{
    const Property *property = entity().property(name);
    return property && property->isToOne() ? related(*property) : nullptr;
}

void ManagedObject::setRelated(std::string_view name, ManagedObject *target)
{
    const Property *property = entity().property(name);
    if (!property || !property->isToOne() || m_deleted)
        return;
    const ValueView held = value(*property);
    const auto *before = std::get_if<ObjectID>(&held);
    const ObjectID after = target ? target->objectID() : ObjectID{};
    if ((before ? *before : ObjectID{}) == after)
        return;
    const Property *inverse = property->inverse;
    if (inverse && inverse->isToMany()) {
        // only relationships that were read hold members; the others are read when somebody asks
        if (ManagedObject *old = before ? m_context->object(*before) : nullptr) {
            if (Members *members = old->loadedMembers(*inverse))
                std::erase(members->objects, this);
        }
        if (Members *members = target ? target->loadedMembers(*inverse) : nullptr) {
            auto &objects = members->objects;
            objects.insert(std::upper_bound(objects.begin(), objects.end(), this, inKeyOrder), this);
        }
    }
    change(*property, target ? Value(after) : Value());
}

ManagedObject::Members *ManagedObject::loadedMembers(const Property &relationship) const
{
    for (Members *members = m_members.get(); members; members = members->next.get()) {
        if (members->relationship == &relationship)
            return members;
    }
    return nullptr;
}

const std::vector<ManagedObject *> &ManagedObject::objects(const Property &relationship) const
{
    static const std::vector<ManagedObject *> none;
    if (!relationship.isToMany() || m_deleted)
        return none;
    if (Members *members = loadedMembers(relationship))
        return members->objects;
    std::vector<ManagedObject *> objects = m_context->readMembers(*this, relationship);
    if (!m_members)
        m_context->m_state->withMembers.push_back(this);
    m_members = std::make_unique<Members>(Members{&relationship, std::move(objects), std::move(m_members)});
    return m_members->objects;
}

const std::vector<ManagedObject *> &ManagedObject::objects(std::string_view name) const
{
    static const std::vector<ManagedObject *> none;
    const Property *property = entity().property(name);
    return property ? objects(*property) : none;
}

void ManagedObject::addObject(std::string_view name, ManagedObject &member)
{
    const Property *property = entity().property(name);
    if (property && property->isToMany() && !m_deleted && !member.m_deleted)
        m_context->changeMembers(*this, *property, member, true);
}

void ManagedObject::removeObject(std::string_view name, ManagedObject &member)
{
    const Property *property = entity().property(name);
    if (property && property->isToMany() && !m_deleted)
        m_context->changeMembers(*this, *property, member, false);
}

void ManagedObject::setObjects(std::string_view name, const std::vector<ManagedObject *> &members)
{
    const std::vector<ManagedObject *> before = objects(name);
    for (ManagedObject *old : before) {
        if (std::find(members.begin(), members.end(), old) == members.end())
            removeObject(name, *old);
    }
    for (ManagedObject *member : members) {
        if (std::find(before.begin(), before.end(), member) == before.end())
            addObject(name, *member);
    }
}

std::vector<std::pair<const Property *, Value>> ManagedObject::changedValues() const
{
    std::vector<std::pair<const Property *, Value>> changes;
    if (!m_unsaved)
        return changes;
    for (const auto &[slot, value] : m_unsaved->values)
        changes.emplace_back(entity().columns()[static_cast<std::size_t>(slot)], value);
    for (const Property *relationship : m_unsaved->members)
        changes.emplace_back(relationship, Value());
    return changes;
}

bool ManagedObject::hasChanged(std::string_view name) const
{
    const Property *property = entity().property(name);
    if (!property || !m_unsaved)
        return false;
    if (property->isToMany())
        return std::find(m_unsaved->members.begin(), m_unsaved->members.end(), property) != m_unsaved->members.end();
    return unsavedValue(property->slot) != nullptr;
}

} // namespace objectstore
