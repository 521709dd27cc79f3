// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/value.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace objectstore {

class EntityDescription;
class ManagedObject;
class ObjectContext;

enum class PropertyKind { Attribute, ToOne, ToMany };
enum class AttributeType { Boolean, Integer, Double, Date, Text, Binary };
/// What the deletion of an object does to the objects it is related to.
enum class DeleteRule { Nullify, Cascade };

/// One attribute or relationship as a model declares it.
struct PropertySchema {
    std::string name;
    PropertyKind kind = PropertyKind::Attribute;
    AttributeType type = AttributeType::Text; ///< attributes only
    Value defaultValue; ///< attributes only
    std::string destination; ///< relationships only: the entity at the other end
    std::string
        inverse; ///< relationships only: the name at the other end; every to-many has one or is a join of its own
    DeleteRule deleteRule = DeleteRule::Nullify;
};

/// One entity as a model declares it.
struct EntitySchema {
    std::string name;
    std::vector<PropertySchema> properties;
    std::vector<std::vector<std::string>> indexes; ///< each a list of attribute and to-one names
    /// Makes an object of the entity's own class; empty for a plain ManagedObject.
    std::function<std::unique_ptr<ManagedObject>()> make;
};

/// One attribute or relationship of an entity, resolved: what a key of a key path stands for.
///
/// How it lies in the database: an attribute or to-one relationship is the column `name` of its entity's table (a
/// to-one column holds the key of the destination). A to-many relationship whose inverse is to-one has no column: its
/// members are the rows of the destination's table whose column `inverse->name` holds the owner's key. Any other
/// to-many is the table `joinTable`, whose columns `joinOwner` and `joinMember` hold the keys of the two ends.
struct Property {
    std::string name;
    PropertyKind kind = PropertyKind::Attribute;
    AttributeType type = AttributeType::Text;
    Value defaultValue;
    const EntityDescription *destination = nullptr;
    const Property *inverse = nullptr;
    DeleteRule deleteRule = DeleteRule::Nullify;
    int slot = -1; ///< place among the columns (attributes and to-one relationships) or, for a to-many, among those
    std::string joinTable;
    std::string joinOwner;
    std::string joinMember;

    [[nodiscard]] bool isAttribute() const { return kind == PropertyKind::Attribute; }
    [[nodiscard]] bool isToOne() const { return kind == PropertyKind::ToOne; }
    [[nodiscard]] bool isToMany() const { return kind == PropertyKind::ToMany; }
};

/// One kind of record: its properties and how they are laid out. Immutable; any thread may read it.
///
/// In the database it is the table `name` with the key in column `_key` and, in column `_save`, the number of the save
/// that last wrote the row. Columns have no declared type, so that a value is compared as it was stored.
class EntityDescription
{
public:
    [[nodiscard]] const std::string &name() const { return m_name; }
    [[nodiscard]] int index() const { return m_index; }
    [[nodiscard]] const Property *property(std::string_view name) const;
    [[nodiscard]] const std::vector<const Property *> &columns() const { return m_columns; }
    [[nodiscard]] const std::vector<const Property *> &toManyRelationships() const { return m_toMany; }
    [[nodiscard]] const std::vector<std::vector<std::string>> &indexes() const { return m_indexes; }
    [[nodiscard]] std::unique_ptr<ManagedObject> makeObject() const;

private:
    friend class ObjectModel;
    std::string m_name;
    int m_index = 0;
    std::vector<std::unique_ptr<Property>> m_properties;
    std::unordered_map<std::string_view, const Property *> m_byName;
    std::vector<const Property *> m_columns;
    std::vector<const Property *> m_toMany;
    std::vector<std::vector<std::string>> m_indexes;
    std::function<std::unique_ptr<ManagedObject>()> m_make;
};

/// All entities of a store. Immutable; must outlive every store and context made over it; any thread may read it.
class ObjectModel
{
public:
    /// `version` grows whenever the entities change. A declaration that contradicts itself throws std::logic_error.
    ObjectModel(int version, std::vector<EntitySchema> entities);

    [[nodiscard]] int version() const { return m_version; }
    [[nodiscard]] const EntityDescription *entity(std::string_view name) const;
    [[nodiscard]] const std::vector<std::unique_ptr<EntityDescription>> &entities() const { return m_entities; }

private:
    void resolve(std::vector<EntitySchema> &schemas);

    int m_version;
    std::vector<std::unique_ptr<EntityDescription>> m_entities;
    std::unordered_map<std::string_view, const EntityDescription *> m_byName;
};

} // namespace objectstore
