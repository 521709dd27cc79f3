// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/managed_object.h"
#include "objectstore/predicate.h"
#include "objectstore/store.h"

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <unordered_map>

namespace SQLite {
class Exception;
}

namespace objectstore {

using foundation::Error;
using foundation::Result;

/// What happens to a context's unsaved changes of a row that another writer changed since it was read.
enum class MergePolicy {
    Rollback, ///< they are dropped; the store's row stands
    StoreTrump, ///< property by property: what the store changed stands, the rest is saved
};

/// Whether a new object gives itself the values that its class gives to new ones.
enum class Awakening { FromInsert, None };

/// One key to sort a fetch by. Text compares as the user's locale does, without regard to case, when `localized`.
struct SortDescriptor {
    std::string key; ///< a key path through to-one relationships
    bool ascending = true;
    bool localized = false;
};

/// Which objects to fetch. Without sort descriptors they come in the order of insertion.
struct FetchRequest {
    std::string entity;
    Predicate predicate;
    std::vector<SortDescriptor> sortDescriptors;
    std::int64_t limit = 0; ///< at most so many; 0 means all
};

/// Objects that changed, by id: what a save wrote, or what a context announces.
struct ChangeSet {
    std::vector<ObjectID> inserted;
    std::vector<ObjectID> updated;
    std::vector<ObjectID> deleted;
    std::int64_t save = 0; ///< the number of the one save that these are all the changes of; 0 for no such save

    [[nodiscard]] bool isEmpty() const { return inserted.empty() && updated.empty() && deleted.empty(); }
};

/// What a context announces after objects changed, from whatever cause.
struct ObjectsChange {
    std::vector<ManagedObject *> inserted;
    std::vector<ManagedObject *> updated;
    std::vector<ManagedObject *> deleted;
};

/// A value that a save conflict discarded.
struct DiscardedValue {
    ObjectID object;
    std::string property;
    Value value;
};

/// What a save did.
struct SaveReport {
    ChangeSet changes;
    std::vector<DiscardedValue> discarded;
};

class Statement;
class UndoManager;

/// Keeps a handler connected for as long as it lives.
class Subscription
{
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> disconnect) : m_disconnect(std::move(disconnect)) { }
    Subscription(Subscription &&other) noexcept : m_disconnect(std::exchange(other.m_disconnect, nullptr)) { }
    Subscription &operator=(Subscription &&other) noexcept
    {
        reset();
        m_disconnect = std::exchange(other.m_disconnect, nullptr);
        return *this;
    }
    ~Subscription() { reset(); }
    void reset()
    {
        if (auto disconnect = std::exchange(m_disconnect, nullptr))
            disconnect();
    }

private:
    std::function<void()> m_disconnect;
};

/// A workspace over a store: holds at most one object for each record, collects changes, and saves them all at once.
///
/// Belongs to the thread that made it. Errors are values; after a failed save every change is still there.
/// Changes are announced when `processPendingChanges` runs, which every fetch and save does first.
class ObjectContext
{
public:
    /// `store` must outlive the context.
    ObjectContext(Store &store, MergePolicy policy);
    ~ObjectContext();
    ObjectContext(const ObjectContext &) = delete;
    ObjectContext &operator=(const ObjectContext &) = delete;

    [[nodiscard]] Store &store() const { return m_store; }

    /// How long a save waits for another writer before it fails with StoreErrorCode::Busy. Ten seconds unless set.
    void setLongestWait(std::chrono::milliseconds wait);

    /// Makes a new object of the entity with the defaults of its model; `awakeFromInsert` runs before it returns,
    /// unless the caller fills the object himself and says so.
    ManagedObject &insert(std::string_view entity, Awakening awakening = Awakening::FromInsert);
    /// Room for so many objects more, which are about to be inserted.
    void makeRoom(std::string_view entity, std::size_t number);
    /// Lays out the values of a new object in a third of the memory, for many insertions before one save. It then
    /// counts as new, and no longer as changed since.
    void pack(ManagedObject &object);
    /// Deletes an object at the next save and applies the delete rules of its relationships now.
    void remove(ManagedObject &object);

    /// The object with this id, as a fault if it is not here yet; it may prove absent from the store.
    [[nodiscard]] ManagedObject *object(const ObjectID &id);
    /// The same, or null when the record is deleted or in no store.
    [[nodiscard]] ManagedObject *existingObject(const ObjectID &id);
    /// The objects with these ids, of one entity. Those that are not here yet come as faults, which a list reads with
    /// `fill` as far as it is seen.
    [[nodiscard]] std::vector<ManagedObject *> objects(std::span<const ObjectID> ids);
    /// Reads the rows of those that are faults, all of one entity, together.
    void fill(std::span<ManagedObject *const> objects) const;
    [[nodiscard]] ManagedObject *objectWithURI(std::string_view uri);
    [[nodiscard]] std::string uri(const ManagedObject &object) const;

    /// Objects that answer, the context's unsaved changes included.
    [[nodiscard]] Result<std::vector<ManagedObject *>> fetch(const FetchRequest &request);
    /// How many `fetch` would return; builds no objects.
    [[nodiscard]] Result<std::int64_t> count(const FetchRequest &request);
    /// Calls `visit` with the id of each record that `fetch` would return, in no order; builds no objects. `visit` must
    /// leave the context alone.
    [[nodiscard]] Result<void> fetchIDs(
        const FetchRequest &request, const std::function<void(const ObjectID &)> &visit);
    /// Reads a few columns of many records without building objects: calls `visit` for each record that answers, in the
    /// order of insertion, with its values of `keys` (attributes and to-one relationships of the entity itself), the
    /// context's unsaved changes included. The values hold until `visit` returns; `visit` must leave the context alone.
    /// A request with sort descriptors is refused.
    [[nodiscard]] Result<void> fetchValues(const FetchRequest &request, const std::vector<std::string> &keys,
        const std::function<void(const ObjectID &, std::span<const ValueView>)> &visit);

    [[nodiscard]] bool hasChanges() const;
    void processPendingChanges();
    /// Writes every change in one transaction. On failure nothing is written and nothing is lost here.
    [[nodiscard]] Result<SaveReport> save();
    /// Drops every unsaved change.
    void rollback();

    /// Takes over what another context of the same store saved, once: rows not changed here are read again on next use;
    /// rows changed here keep the changes, which meet the merge policy at the next save.
    void mergeChanges(const ChangeSet &changes);
    /// The number of the last save that this context knows of; the store counts its saves.
    [[nodiscard]] std::int64_t knownSave() const;
    /// What was saved after the save with this number, whoever saved it, and what is changed here without being saved;
    /// nothing where the store no longer knows.
    [[nodiscard]] std::optional<ChangeSet> changesSince(std::int64_t save) const;
    /// Takes over what other processes saved since this context last looked; true when there was something.
    [[nodiscard]] Result<bool> mergeExternalChanges();

    /// Calls `handler` with each announcement until the subscription goes. Handlers may change objects.
    [[nodiscard]] Subscription onObjectsDidChange(std::function<void(const ObjectsChange &)> handler);

    /// Recording of changes for undo; none until `enableUndo`.
    void enableUndo();
    [[nodiscard]] UndoManager *undoManager() const { return m_undo.get(); }

private:
    friend class ManagedObject;
    friend class ContextSaver;
    friend class ContextMerger;
    friend class UndoManager;
    struct State;

    [[nodiscard]] Connection *connected() const;
    void disconnect(const SQLite::Exception &exception) const;
    void load(const ManagedObject &fault) const;
    bool readRows(const EntityDescription &entity, std::span<const std::int64_t> keys) const;
    [[nodiscard]] std::vector<ManagedObject *> takeRows(Statement &statement, const EntityDescription &entity);
    [[nodiscard]] ManagedObject &registered(const ObjectID &id);
    [[nodiscard]] ManagedObject *known(const ObjectID &id) const;
    void noteChange(ManagedObject &object);
    void changeMembers(ManagedObject &owner, const Property &relationship, ManagedObject &member, bool add);
    [[nodiscard]] std::optional<bool> isLinked(
        const ManagedObject &owner, const Property &relationship, const ManagedObject &member);
    [[nodiscard]] std::vector<ManagedObject *> readMembers(const ManagedObject &owner, const Property &relationship);
    void revive(ManagedObject &object);
    void markDeleted(ManagedObject &object);
    void applyDeleteRules(ManagedObject &object);
    void forgetMembers();
    void forgetRow(const ObjectID &id);
    [[nodiscard]] std::optional<ChangeSet> loggedChanges() const;
    [[nodiscard]] ChangeSet comparedChanges() const;

    Store &m_store;
    MergePolicy m_policy;
    std::unique_ptr<UndoManager> m_undo;
    std::unique_ptr<State> m_state;
};

} // namespace objectstore
