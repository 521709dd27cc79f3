// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/undo_manager.h"

#include "objectstore/context_state.h"

#include <utility>

namespace objectstore {

UndoManager::UndoManager(ObjectContext &context) : m_context(context) { }

void UndoManager::beginGroup(std::string name)
{
    if (m_depth == 0) {
        m_context.processPendingChanges();
        m_open.name = std::move(name);
    }
    ++m_depth;
}

void UndoManager::endGroup()
{
    if (m_depth == 0)
        return;
    if (m_depth == 1)
        m_context.processPendingChanges(); // what observers change on account of the group belongs to it
    if (--m_depth == 0)
        close();
}

void UndoManager::closeImplicitGroup()
{
    if (m_depth == 0)
        close();
}

void UndoManager::close()
{
    if (!m_open.changes.empty())
        m_done.push_back(std::exchange(m_open, {}));
    m_open = {};
}

std::string UndoManager::undoName() const
{
    if (!m_open.changes.empty())
        return m_open.name;
    return m_done.empty() ? std::string() : m_done.back().name;
}

std::string UndoManager::redoName() const
{
    return m_undone.empty() ? std::string() : m_undone.back().name;
}

void UndoManager::undo()
{
    m_depth = 0;
    m_context.processPendingChanges();
    close();
    if (m_done.empty())
        return;
    Group group = std::move(m_done.back());
    m_done.pop_back();
    applyGroup(group, false);
    m_undone.push_back(std::move(group));
}

void UndoManager::redo()
{
    if (m_undone.empty())
        return;
    Group group = std::move(m_undone.back());
    m_undone.pop_back();
    applyGroup(group, true);
    m_done.push_back(std::move(group));
}

void UndoManager::applyGroup(const Group &group, bool forward)
{
    disableRegistration();
    if (forward) {
        for (const Change &change : group.changes)
            apply(change, true);
    } else {
        for (auto change = group.changes.rbegin(); change != group.changes.rend(); ++change)
            apply(*change, false);
    }
    m_context.processPendingChanges();
    enableRegistration();
}

void UndoManager::apply(const Change &change, bool forward)
{
    if (const auto *value = std::get_if<ValueChange>(&change)) {
        value->object->setValue(*value->property, forward ? value->after : value->before);
    } else if (const auto *link = std::get_if<MemberChange>(&change)) {
        m_context.changeMembers(*link->owner, *link->relationship, *link->member, link->added == forward);
    } else if (const auto *insertion = std::get_if<Insertion>(&change)) {
        if (forward)
            m_context.revive(*insertion->object);
        else
            m_context.markDeleted(*insertion->object);
    } else if (const auto *deletion = std::get_if<Deletion>(&change)) {
        if (forward)
            m_context.markDeleted(*deletion->object);
        else
            m_context.revive(*deletion->object);
    }
}

void UndoManager::clear()
{
    m_done.clear();
    m_undone.clear();
    m_open = {};
}

void UndoManager::record(Change change)
{
    if (m_disabled > 0)
        return;
    m_undone.clear();
    m_open.changes.push_back(std::move(change));
}

void UndoManager::recordValue(ManagedObject &object, const Property &property, Value before, Value after)
{
    record(ValueChange{&object, &property, std::move(before), std::move(after)});
}

void UndoManager::recordMember(ManagedObject &owner, const Property &relationship, ManagedObject &member, bool added)
{
    record(MemberChange{&owner, &relationship, &member, added});
}

void UndoManager::recordInsertion(ManagedObject &object)
{
    record(Insertion{&object});
}

void UndoManager::recordDeletion(ManagedObject &object)
{
    record(Deletion{&object});
}

} // namespace objectstore
