// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/context_state.h"
#include "objectstore/undo_manager.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <set>

namespace objectstore {

/// Whether the two ends of a join are linked, or nothing where the store cannot be read. Asks for the one link, since
/// either end may have many.
std::optional<bool> ObjectContext::isLinked(
    const ManagedObject &owner, const Property &relationship, const ManagedObject &member)
{
    const auto among = [](const std::vector<ManagedObject *> &objects, const ManagedObject &object) {
        return std::binary_search(objects.begin(), objects.end(), &object, ManagedObject::inKeyOrder);
    };
    if (const auto *members = owner.loadedMembers(relationship))
        return among(members->objects, member);
    if (const auto *owners = relationship.inverse ? member.loadedMembers(*relationship.inverse) : nullptr)
        return among(owners->objects, owner);
    const bool forward = relationship.joinOwner == "owner";
    const std::pair link{(forward ? owner : member).m_id.key, (forward ? member : owner).m_id.key};
    const auto &changes = m_state->joins[relationship.joinTable];
    if (const auto changed = changes.find(link); changed != changes.end())
        return changed->second;
    Connection *connection = owner.m_inserted || member.m_inserted ? nullptr : connected();
    if (!connection)
        return false;
    try {
        Statement statement = connection->prepare(
            "SELECT 1 FROM " + identifier(relationship.joinTable) + " WHERE owner = ? AND member = ?");
        statement.bind(link.first).bind(link.second);
        return statement.step();
    } catch (const SQLite::Exception &) {
        return std::nullopt; // whatever is wanted is then written, which harms nothing where it was so already
    }
}

void ObjectContext::changeMembers(ManagedObject &owner, const Property &relationship, ManagedObject &member, bool add)
{
    if (relationship.joinTable.empty()) {
        const bool isMember = member.related(*relationship.inverse) == &owner;
        if (add != isMember)
            member.setRelated(relationship.inverse->name, add ? &owner : nullptr);
        return;
    }
    if (isLinked(owner, relationship, member) == add)
        return;
    if (m_undo)
        m_undo->recordMember(owner, relationship, member, add);

    const bool forward = relationship.joinOwner == "owner";
    auto &changes = m_state->joins[relationship.joinTable];
    // with the end as a hint, since most links are those of the record that was made last
    changes.insert_or_assign(
        changes.end(), std::pair((forward ? owner : member).m_id.key, (forward ? member : owner).m_id.key), add);
    const auto edit = [this, add](ManagedObject &object, const Property &side, ManagedObject &other) {
        if (auto *members = object.loadedMembers(side)) {
            auto &objects = members->objects;
            if (add)
                objects.insert(
                    std::upper_bound(objects.begin(), objects.end(), &other, ManagedObject::inKeyOrder), &other);
            else
                std::erase(objects, &other);
        }
        if (!object.m_unsaved)
            object.m_unsaved = std::make_unique<ManagedObject::Unsaved>();
        auto &changed = object.m_unsaved->members;
        if (std::find(changed.begin(), changed.end(), &side) == changed.end())
            changed.push_back(&side);
        noteChange(object);
    };
    edit(owner, relationship, member);
    if (relationship.inverse && (relationship.inverse != &relationship || &owner != &member))
        edit(member, *relationship.inverse, owner);
}

namespace {

std::string memberKeysOf(const Property &relationship)
{
    if (!relationship.joinTable.empty())
        return "SELECT " + relationship.joinMember + " FROM " + identifier(relationship.joinTable) + " WHERE "
            + relationship.joinOwner + " = ?";
    return "SELECT _key FROM " + identifier(relationship.destination->name()) + " WHERE "
        + identifier(relationship.inverse->name) + " = ?";
}

/// Makes `keys` say of the member whether it is one.
void put(std::set<std::int64_t> &keys, std::int64_t member, bool there)
{
    if (there)
        keys.insert(member);
    else
        keys.erase(member);
}

/// Lets the unsaved links and unlinks of `owner` change the keys of its members.
void apply(const JoinChanges &changes, bool isOwner, std::int64_t owner, std::set<std::int64_t> &keys)
{
    if (!isOwner) { // rarely asked with many changes at hand, so that no second order of them is kept
        for (const auto &[pair, there] : changes) {
            if (pair.second == owner)
                put(keys, pair.first, there);
        }
        return;
    }
    for (auto entry = changes.lower_bound({owner, INT64_MIN}); entry != changes.end() && entry->first.first == owner;
         ++entry)
        put(keys, entry->first.second, entry->second);
}

} // namespace

std::vector<ManagedObject *> ObjectContext::readMembers(const ManagedObject &owner, const Property &relationship)
{
    std::set<std::int64_t> keys;
    Connection *connection = owner.m_inserted ? nullptr : connected();
    if (connection) {
        try {
            Statement statement = connection->prepare(memberKeysOf(relationship));
            statement.bind(owner.m_id.key);
            while (statement.step())
                keys.insert(statement.integer(0));
        } catch (const SQLite::Exception &) {
            keys.clear();
        }
    }
    if (!relationship.joinTable.empty()) {
        apply(m_state->joins[relationship.joinTable], relationship.joinOwner == "owner", owner.m_id.key, keys);
    } else {
        for (const ManagedObject *changed : m_state->changedOf(*relationship.destination)) {
            if (!changed->m_inserted && !changed->unsavedValue(relationship.inverse->slot))
                continue;
            const ValueView current = changed->value(*relationship.inverse);
            const auto *target = std::get_if<ObjectID>(&current);
            put(keys, changed->m_id.key, target && target->key == owner.m_id.key);
        }
    }
    std::vector<ManagedObject *> members;
    members.reserve(keys.size());
    for (const std::int64_t key : keys) {
        ManagedObject *member = object({relationship.destination, key});
        if (member && !member->m_deleted) // a damaged store may link a record that has no key
            members.push_back(member);
    }
    return members;
}

void ObjectContext::forgetMembers()
{
    for (const ManagedObject *object : std::exchange(m_state->withMembers, {}))
        object->m_members.reset();
}

} // namespace objectstore
