// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "location/coordinate.h"
#include "objectstore/managed_object.h"
#include "objectstore/object_model.h"

#include <optional>
#include <string>
#include <string_view>

namespace model {

using foundation::Instant;
using objectstore::ManagedObject;
using objectstore::ObjectContext;

/// The entities of the task store, the ones that only its schema needs included. Immutable; any thread may read it.
[[nodiscard]] const objectstore::ObjectModel &objectModel();

/// `object` as an object of the class `Entity`, or null when it is null or of another entity.
template <class Entity> [[nodiscard]] Entity *as(ManagedObject *object)
{
    return dynamic_cast<Entity *>(object);
}
template <class Entity> [[nodiscard]] const Entity *as(const ManagedObject *object)
{
    return dynamic_cast<const Entity *>(object);
}

/// Inserts a new object of the class `Entity`; it belongs to the context.
template <class Entity, class Context> Entity &insert(Context &moc)
{
    return dynamic_cast<Entity &>(moc.insert(Entity::entityName));
}

class Contexts;
class Folders;
class Priorities;
class States;
class Tags;

/// One task. A new one is titled "New Task", dated now, and placed at the default state, priority, context and folder
/// as far as these exist. Belongs to the thread of its context.
class Tasks final : public ManagedObject
{
public:
    static constexpr std::string_view entityName = "Tasks";

    void awakeFromInsert() override;

    [[nodiscard]] std::string_view title() const { return text("title"); }
    void setTitle(std::string title) { setValue("title", std::move(title)); }
    [[nodiscard]] std::string_view notes() const { return text("notes"); }
    void setNotes(std::string notes) { setValue("notes", std::move(notes)); }

    /// The id at the service; 0 until the task has been sent.
    [[nodiscard]] std::int64_t taskID() const { return integer("taskID"); }
    void setTaskID(std::int64_t id) { setValue("taskID", id); }

    [[nodiscard]] bool complete() const { return boolean("complete"); }
    void setComplete(bool complete) { setValue("complete", complete); }
    [[nodiscard]] bool star() const { return boolean("star"); }
    void setStar(bool star) { setValue("star", star); }

    [[nodiscard]] std::optional<Instant> startDate() const { return date("startDate"); }
    void setStartDate(std::optional<Instant> date) { setDate("startDate", date); }
    [[nodiscard]] std::optional<Instant> dueDate() const { return date("dueDate"); }
    void setDueDate(std::optional<Instant> date) { setDate("dueDate", date); }
    [[nodiscard]] std::optional<Instant> completedDate() const { return date("completedDate"); }
    void setCompletedDate(std::optional<Instant> date) { setDate("completedDate", date); }
    [[nodiscard]] std::optional<Instant> creationDate() const { return date("creationDate"); }
    void setCreationDate(std::optional<Instant> date) { setDate("creationDate", date); }
    [[nodiscard]] std::optional<Instant> modifiedDate() const { return date("modifiedDate"); }
    void setModifiedDate(std::optional<Instant> date) { setDate("modifiedDate", date); }

    /// Minutes before the due date; 0 means no reminder.
    [[nodiscard]] std::int64_t reminder() const { return integer("reminder"); }
    void setReminder(std::int64_t minutes) { setValue("reminder", minutes); }
    /// Duration in minutes.
    [[nodiscard]] std::int64_t length() const { return integer("length"); }
    void setLength(std::int64_t minutes) { setValue("length", minutes); }
    /// The service's repeat code.
    [[nodiscard]] std::int64_t repeat() const { return integer("repeat"); }
    void setRepeat(std::int64_t code) { setValue("repeat", code); }
    [[nodiscard]] std::string_view repeatAdvanced() const { return text("repeatAdvanced"); }
    void setRepeatAdvanced(std::string repeat) { setValue("repeatAdvanced", std::move(repeat)); }

    /// Made here and not yet sent.
    [[nodiscard]] bool isNew() const { return boolean("isNew"); }
    void setIsNew(bool isNew) { setValue("isNew", isNew); }
    /// In the Trash.
    [[nodiscard]] bool deleteOnSync() const { return boolean("deleteOnSync"); }
    void setDeleteOnSync(bool deleted) { setValue("deleteOnSync", deleted); }
    /// Emptied from the Trash, kept until the service has deleted it too.
    [[nodiscard]] bool markedDeleted() const { return boolean("markedDeleted"); }
    void setMarkedDeleted(bool deleted) { setValue("markedDeleted", deleted); }
    [[nodiscard]] bool isCurrentLocation() const { return boolean("isCurrentLocation"); }
    void setIsCurrentLocation(bool here) { setValue("isCurrentLocation", here); }
    [[nodiscard]] bool editedScalar() const { return boolean("edited"); }
    void setEditedScalar(bool edited) { setValue("edited", edited); }

    [[nodiscard]] Folders *folders() const;
    [[nodiscard]] Contexts *contexts() const;
    [[nodiscard]] States *states() const;
    [[nodiscard]] Priorities *priorities() const;
    [[nodiscard]] Tasks *parent() const { return as<Tasks>(related("parent")); }
    [[nodiscard]] const std::vector<ManagedObject *> &tags() const { return objects("tags"); }
    void setTags(const std::vector<ManagedObject *> &tags) { setObjects("tags", tags); }
    [[nodiscard]] const std::vector<ManagedObject *> &children() const { return objects("children"); }
};

/// A folder of tasks; the one titled "Inbox" with `folderID` 0 is the default. A new one is titled "New Folder #n",
/// numbered from 1 in each run of the program.
class Folders final : public ManagedObject
{
public:
    static constexpr std::string_view entityName = "Folders";

    void awakeFromInsert() override;

    [[nodiscard]] std::string_view title() const { return text("title"); }
    void setTitle(std::string title) { setValue("title", std::move(title)); }
    /// The id at the service; 0 for the Inbox and while there is none.
    [[nodiscard]] std::int64_t folderID() const { return integer("folderID"); }
    void setFolderID(std::int64_t id) { setValue("folderID", id); }
    [[nodiscard]] std::int64_t order() const { return integer("order"); }
    void setOrder(std::int64_t order) { setValue("order", order); }
    [[nodiscard]] bool archived() const { return boolean("archived"); }
    void setArchived(bool archived) { setValue("archived", archived); }
    [[nodiscard]] bool isPrivate() const { return boolean("private"); }
    void setPrivate(bool isPrivate) { setValue("private", isPrivate); }
    /// Deleted here, to be deleted at the service by the next synchronisation.
    [[nodiscard]] bool markedForDeletion() const { return boolean("markedForDeletion"); }
    void setMarkedForDeletion(bool marked) { setValue("markedForDeletion", marked); }
    [[nodiscard]] std::optional<Instant> modifiedDate() const { return date("modifiedDate"); }
    void setModifiedDate(std::optional<Instant> date) { setDate("modifiedDate", date); }

    [[nodiscard]] const std::vector<ManagedObject *> &tasks() const { return objects("tasks"); }
    [[nodiscard]] const std::vector<ManagedObject *> &children() const { return objects("children"); }
    void addChildrenObject(Folders &child) { addObject("children", child); }
    void removeChildrenObject(Folders &child) { removeObject("children", child); }
};

/// A context (a place or a means) of tasks; the one titled "None" with `contextID` 0 is the default. A new one is
/// titled "New Context #n", numbered from 1 in each run of the program.
class Contexts final : public ManagedObject
{
public:
    static constexpr std::string_view entityName = "Contexts";

    void awakeFromInsert() override;

    [[nodiscard]] std::string_view title() const { return text("title"); }
    void setTitle(std::string title) { setValue("title", std::move(title)); }
    /// The id at the service; 0 while there is none.
    [[nodiscard]] std::int64_t contextID() const { return integer("contextID"); }
    void setContextID(std::int64_t id) { setValue("contextID", id); }
    [[nodiscard]] std::string_view notes() const { return text("notes"); }
    void setNotes(std::string notes) { setValue("notes", std::move(notes)); }
    /// Degrees.
    [[nodiscard]] double latitude() const { return number("latitude"); }
    void setLatitude(double degrees) { setValue("latitude", degrees); }
    [[nodiscard]] double longitude() const { return number("longitude"); }
    void setLongitude(double degrees) { setValue("longitude", degrees); }
    [[nodiscard]] location::Coordinate coordinate() const { return {latitude(), longitude()}; }
    void setCoordinate(const location::Coordinate &place)
    {
        setLatitude(place.latitude);
        setLongitude(place.longitude);
    }
    /// Belongs to its coordinates.
    [[nodiscard]] bool useLocation() const { return boolean("useLocation"); }
    void setUseLocation(bool use) { setValue("useLocation", use); }
    /// Its tasks can be done anywhere.
    [[nodiscard]] bool alwaysShow() const { return boolean("alwaysShow"); }
    void setAlwaysShow(bool show) { setValue("alwaysShow", show); }
    /// Deleted here, to be deleted at the service by the next synchronisation.
    [[nodiscard]] bool markedForDeletion() const { return boolean("markedForDeletion"); }
    void setMarkedForDeletion(bool marked) { setValue("markedForDeletion", marked); }
    [[nodiscard]] std::optional<Instant> modifiedDate() const { return date("modifiedDate"); }
    void setModifiedDate(std::optional<Instant> date) { setDate("modifiedDate", date); }

    [[nodiscard]] const std::vector<ManagedObject *> &tasks() const { return objects("tasks"); }

    /// Writes the coordinates as a block at the end of the notes, in place of the block that was there. Unchanged
    /// coordinates leave the notes, and so the record, unchanged.
    void updateNotesLocation();
};

/// A status that a task can have; the one with the empty title and `stateID` 0 is the default.
class States final : public ManagedObject
{
public:
    static constexpr std::string_view entityName = "States";

    [[nodiscard]] std::string_view state() const { return text("state"); }
    void setState(std::string state) { setValue("state", std::move(state)); }
    [[nodiscard]] std::int64_t stateID() const { return integer("stateID"); }
    void setStateID(std::int64_t id) { setValue("stateID", id); }
    [[nodiscard]] const std::vector<ManagedObject *> &tasks() const { return objects("tasks"); }
};

/// A priority that a task can have, -1 to 5.
class Priorities final : public ManagedObject
{
public:
    static constexpr std::string_view entityName = "Priorities";

    [[nodiscard]] std::int64_t priority() const { return integer("priority"); }
    void setPriority(std::int64_t priority) { setValue("priority", priority); }
    [[nodiscard]] const std::vector<ManagedObject *> &tasks() const { return objects("tasks"); }
};

/// A word that tasks are tagged with.
class Tags final : public ManagedObject
{
public:
    static constexpr std::string_view entityName = "Tags";

    [[nodiscard]] std::string_view title() const { return text("title"); }
    void setTitle(std::string title) { setValue("title", std::move(title)); }
    /// Ticked in the tag browser.
    [[nodiscard]] bool isChecked() const { return boolean("isChecked"); }
    void setIsChecked(bool checked) { setValue("isChecked", checked); }
    [[nodiscard]] const std::vector<ManagedObject *> &tasks() const { return objects("tasks"); }
};

inline Folders *Tasks::folders() const
{
    return as<Folders>(related("folders"));
}
inline Contexts *Tasks::contexts() const
{
    return as<Contexts>(related("contexts"));
}
inline States *Tasks::states() const
{
    return as<States>(related("states"));
}
inline Priorities *Tasks::priorities() const
{
    return as<Priorities>(related("priorities"));
}

} // namespace model
