// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/entities.h"
#include "model/smart_folder.h"

#include <algorithm>
#include <iterator>

namespace model {

namespace {

using objectstore::AttributeType;
using objectstore::EntitySchema;
using objectstore::PropertyKind;
using objectstore::PropertySchema;
using objectstore::Value;
using Properties = std::vector<PropertySchema>;

PropertySchema attribute(AttributeType type, std::string name, Value defaultValue)
{
    PropertySchema schema;
    schema.name = std::move(name);
    schema.type = type;
    schema.defaultValue = std::move(defaultValue);
    return schema;
}

PropertySchema text(std::string name)
{
    return attribute(AttributeType::Text, std::move(name), {});
}
PropertySchema date(std::string name)
{
    return attribute(AttributeType::Date, std::move(name), {});
}
PropertySchema data(std::string name)
{
    return attribute(AttributeType::Binary, std::move(name), {});
}
PropertySchema real(std::string name)
{
    return attribute(AttributeType::Double, std::move(name), {});
}
PropertySchema integer(std::string name, Value defaultValue = {})
{
    return attribute(AttributeType::Integer, std::move(name), std::move(defaultValue));
}
PropertySchema boolean(std::string name, Value defaultValue = false)
{
    return attribute(AttributeType::Boolean, std::move(name), std::move(defaultValue));
}

/// Without an inverse, a to-many relationship is one of its own.
PropertySchema relationship(PropertyKind kind, std::string name, std::string destination, std::string inverse)
{
    PropertySchema schema;
    schema.name = std::move(name);
    schema.kind = kind;
    schema.destination = std::move(destination);
    schema.inverse = std::move(inverse);
    return schema;
}
PropertySchema toOne(std::string name, std::string destination, std::string inverse = {})
{
    return relationship(PropertyKind::ToOne, std::move(name), std::move(destination), std::move(inverse));
}
PropertySchema toMany(std::string name, std::string destination, std::string inverse = {})
{
    return relationship(PropertyKind::ToMany, std::move(name), std::move(destination), std::move(inverse));
}

template <class Entity> std::unique_ptr<ManagedObject> make()
{
    return std::make_unique<Entity>();
}

/// What a task has in common with a template for tasks.
Properties taskAttributes()
{
    const Value zero = std::int64_t{0};
    return {
        text("title"),
        text("notes"),
        integer("taskID", zero),
        integer("parentID", zero),
        integer("folder", zero),
        integer("contextID", zero),
        integer("state", zero),
        integer("priority", zero),
        integer("projectID", zero),
        integer("repeat", zero),
        text("repeatAdvanced"),
        integer("reminder", zero),
        integer("timer", zero),
        integer("dueTime", zero),
        boolean("star"),
        boolean("complete"),
        date("startDate"),
        date("dueDate"),
        date("completedDate"),
        date("creationDate"),
        date("modifiedDate"),
        text("imageFile"),
        boolean("edited"),
        boolean("markedDeleted"),
    };
}

EntitySchema tasks()
{
    EntitySchema entity{.name = "Tasks", .properties = taskAttributes(), .indexes = {}, .make = make<Tasks>};
    const Properties ownProperties{
        integer("length", std::int64_t{0}),
        integer("childrenCount", std::int64_t{0}),
        boolean("hasDueDate"),
        boolean("hasDueTime"),
        boolean("hasStartTime"),
        boolean("isNew", true), // what is made here is new until it has been sent
        boolean("deleteOnSync"),
        boolean("isCurrentLocation", {}),
        toOne("folders", "Folders", "tasks"),
        toOne("contexts", "Contexts", "tasks"),
        toOne("states", "States", "tasks"),
        toOne("priorities", "Priorities", "tasks"),
        toMany("tags", "Tags", "tasks"),
        toOne("parent", "Tasks", "children"),
        toMany("children", "Tasks", "parent"),
        toOne("projects", "Projects"),
        toMany("attachments", "Note"),
        toMany("referenceData", "Note"),
    };
    entity.properties.insert(entity.properties.end(), ownProperties.begin(), ownProperties.end());
    entity.indexes = {
        {"folders", "deleteOnSync", "complete"},
        {"contexts", "deleteOnSync", "complete"},
        {"states"},
        {"priorities"},
        {"parent"},
        {"taskID"},
        {"deleteOnSync", "markedDeleted"},
        {"isNew", "deleteOnSync"},
        {"startDate", "complete"}, // so that a completed task is passed over without reading its row
        {"dueDate", "complete"},
        {"isCurrentLocation"},
    };
    return entity;
}

EntitySchema tasksTemplate()
{
    EntitySchema entity{.name = "TasksTemplate", .properties = {}, .indexes = {}, .make = {}};
    for (PropertySchema &schema : taskAttributes()) {
        if (schema.name != "markedDeleted")
            entity.properties.push_back(std::move(schema));
    }
    const Properties relationships{
        toOne("folders", "Folders"),
        toOne("contexts", "Contexts"),
        toOne("states", "States"),
        toOne("priorities", "Priorities"),
        toMany("tags", "Tags", "taskTemplate"),
        toOne("parent", "TasksTemplate", "children"),
        toMany("children", "TasksTemplate", "parent"),
        toOne("projects", "Projects"),
        toMany("attachments", "Note"),
        toMany("referenceData", "Note"),
    };
    entity.properties.insert(entity.properties.end(), relationships.begin(), relationships.end());
    return entity;
}

std::vector<EntitySchema> entitiesInUse()
{
    return {
        tasks(),
        {
            .name = "Folders",
            .properties = {text("title"), integer("folderID"), integer("ParentID"), integer("order", std::int64_t{0}),
                boolean("archived"), boolean("private"), text("type"), text("Notes"), text("imageFile"),
                boolean("markedForDeletion"), date("CreationDate"), date("modifiedDate"),
                toMany("tasks", "Tasks", "folders"), toOne("parent", "Folders", "children"),
                toMany("children", "Folders", "parent")},
            .indexes = {{"folderID"}, {"parent"}},
            .make = make<Folders>,
        },
        {
            .name = "Contexts",
            .properties = {text("title"), integer("contextID"), text("notes"), real("latitude"), real("longitude"),
                boolean("useLocation"), boolean("alwaysShow"), boolean("markedForDeletion"), date("creationDate"),
                date("modifiedDate"), toMany("tasks", "Tasks", "contexts")},
            .indexes = {{"contextID"}},
            .make = make<Contexts>,
        },
        {
            .name = "States",
            .properties = {text("state"), integer("stateID"), toMany("tasks", "Tasks", "states")},
            .indexes = {},
            .make = make<States>,
        },
        {
            .name = "Priorities",
            .properties = {integer("priority"), integer("priorityID"), toMany("tasks", "Tasks", "priorities")},
            .indexes = {},
            .make = make<Priorities>,
        },
        {
            .name = "Tags",
            .properties = {text("title"), boolean("isChecked"), boolean("deleted"), toMany("tasks", "Tasks", "tags"),
                toMany("taskTemplate", "TasksTemplate", "tags")},
            .indexes = {{"title"}},
            .make = make<Tags>,
        },
        {
            .name = "SmartFolder",
            .properties = {text("title"), data("predicateData"), integer("priority", std::int64_t{2})},
            .indexes = {},
            .make = make<SmartFolder>,
        },
        {
            .name = "Group",
            .properties
            = {text("title"), integer("groupID"), text("notes"), date("creationDate"), toMany("folders", "Folders")},
            .indexes = {},
            .make = {},
        },
        {
            .name = "EditedObject",
            .properties = {text("type"), integer("id"), boolean("deleted"), date("modifiedDate")},
            .indexes = {},
            .make = {},
        },
    };
}

/// Declared so that the file holds what its readers expect; no code reads them.
std::vector<EntitySchema> entitiesOfTheFileOnly()
{
    return {
        {
            .name = "Note",
            .properties = {text("title"), text("text"), integer("uid"), integer("folder"), boolean("private"),
                date("createdDate"), date("modifiedDate")},
            .indexes = {},
            .make = {},
        },
        {
            .name = "Projects",
            .properties = {text("Title"), text("Notes"), integer("ProjectID"), integer("ParentID"),
                date("CreationDate"), boolean("deleted"), toMany("SubProjects", "Projects"), toOne("tasks", "Tasks"),
                toOne("newRelationship", "Projects")},
            .indexes = {},
            .make = {},
        },
        {
            .name = "Location",
            .properties = {text("title"), integer("id"), real("latitude"), real("longitude"), real("distanceFilter"),
                toMany("context", "Contexts"), toMany("taskTemplate", "TasksTemplate")},
            .indexes = {},
            .make = {},
        },
        tasksTemplate(),
    };
}

/// What synchronisation notes for itself, so that notes and records are saved together: for each record what the
/// service last had of it, and under a kind of its own what is known of the account.
EntitySchema syncLedgerEntry()
{
    return {
        .name = "SyncLedgerEntry",
        .properties = {integer("kind"), data("notes"), date("date"), integer("save"), text("account")},
        .indexes = {},
        .make = {},
    };
}

std::vector<EntitySchema> allEntities()
{
    std::vector<EntitySchema> all = entitiesInUse();
    std::ranges::move(entitiesOfTheFileOnly(), std::back_inserter(all));
    all.push_back(syncLedgerEntry());
    return all;
}

} // namespace

const objectstore::ObjectModel &objectModel()
{
    static const objectstore::ObjectModel model(3, allEntities());
    return model;
}

} // namespace model
