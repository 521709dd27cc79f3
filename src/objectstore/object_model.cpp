// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/object_model.h"

#include "objectstore/managed_object.h"
#include "objectstore/save_log.h"

#include <stdexcept>

namespace objectstore {

const Property *EntityDescription::property(std::string_view name) const
{
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second;
}

std::unique_ptr<ManagedObject> EntityDescription::makeObject() const
{
    return m_make ? m_make() : std::make_unique<ManagedObject>();
}

ObjectModel::ObjectModel(int version, std::vector<EntitySchema> entities) : m_version(version)
{
    for (EntitySchema &schema : entities) {
        auto entity = std::make_unique<EntityDescription>();
        entity->m_name = schema.name;
        entity->m_index = static_cast<int>(m_entities.size());
        entity->m_indexes = schema.indexes;
        entity->m_make = std::move(schema.make);
        for (PropertySchema &declared : schema.properties) {
            auto property = std::make_unique<Property>();
            property->name = declared.name;
            property->kind = declared.kind;
            property->type = declared.type;
            property->defaultValue = std::move(declared.defaultValue);
            property->deleteRule = declared.deleteRule;
            auto &list = property->isToMany() ? entity->m_toMany : entity->m_columns;
            property->slot = static_cast<int>(list.size());
            list.push_back(property.get());
            if (!entity->m_byName.emplace(property->name, property.get()).second)
                throw std::logic_error("Two properties named " + property->name + " in " + schema.name);
            entity->m_properties.push_back(std::move(property));
        }
        if (entity->m_columns.size() > Row::maximumColumns)
            throw std::logic_error(schema.name + " has too many columns");
        m_byName.emplace(entity->m_name, entity.get());
        m_entities.push_back(std::move(entity));
    }
    if (m_entities.size() * 3 > static_cast<std::size_t>(SaveLog::placesOfASave))
        throw std::logic_error("A model has too many entities");
    resolve(entities);
}

void ObjectModel::resolve(std::vector<EntitySchema> &schemas)
{
    for (std::size_t e = 0; e < schemas.size(); ++e) {
        EntityDescription &owner = *m_entities[e];
        for (std::size_t p = 0; p < schemas[e].properties.size(); ++p) {
            const PropertySchema &declared = schemas[e].properties[p];
            Property &property = *owner.m_properties[p];
            if (property.isAttribute())
                continue;
            property.destination = entity(declared.destination);
            if (!property.destination)
                throw std::logic_error(owner.name() + "." + declared.name + " has no destination");
            if (declared.inverse.empty())
                continue;
            property.inverse = property.destination->property(declared.inverse);
            if (!property.inverse || property.inverse->isAttribute())
                throw std::logic_error(owner.name() + "." + declared.name + " has no inverse " + declared.inverse);
        }
    }
    for (const auto &owner : m_entities) {
        for (const auto &property : owner->m_properties) {
            if (!property->isToMany() || (property->inverse && property->inverse->isToOne())
                || !property->joinTable.empty())
                continue;
            property->joinTable = owner->name() + "_" + property->name;
            property->joinOwner = "owner";
            property->joinMember = "member";
            if (property->inverse && property->inverse != property.get()) {
                Property &inverse = const_cast<Property &>(*property->inverse); // still being built
                inverse.joinTable = property->joinTable;
                inverse.joinOwner = "member";
                inverse.joinMember = "owner";
            }
        }
    }
}

const EntityDescription *ObjectModel::entity(std::string_view name) const
{
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second;
}

} // namespace objectstore
