// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "foundation/error.h"
#include "objectstore/object_model.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

namespace objectstore {

class Connection;

/// Codes of the errors of the domain "ObjectStoreErrorDomain".
enum class StoreErrorCode {
    CannotOpen = 1, ///< the file cannot be opened or created
    Damaged, ///< the file is not a store or is broken; it is left as it is
    NewerSchema, ///< a later version of the program wrote it; it is left as it is
    Unreadable, ///< a read failed
    NotSaved, ///< a save failed and wrote nothing
    Busy, ///< the same, since another program kept writing for as long as the context waits
    Moved, ///< the file was moved, replaced or deleted while it was open
    InUse, ///< another window has the store open
    BadRequest, ///< a fetch names what the model does not have
};

/// One store file: knows its model, its identity and how to connect to it. Any thread may use it.
class Store
{
public:
    /// Opens the file, creating it where there is none. `vfs` names the SQLite file layer; empty means the default.
    [[nodiscard]] static foundation::Result<std::unique_ptr<Store>> open(const ObjectModel &model,
        const std::filesystem::path &file, const foundation::Clock &clock, std::string vfs = {});
    ~Store();

    [[nodiscard]] const ObjectModel &model() const { return m_model; }
    [[nodiscard]] const foundation::Clock &clock() const { return m_clock; }
    [[nodiscard]] const std::filesystem::path &file() const { return m_file; }
    /// The store's own identity, made when the file was created.
    [[nodiscard]] const std::string &uuid() const { return m_uuid; }

    /// Where the store can be read and not be written, a sentence that says so; else empty.
    [[nodiscard]] const std::string &notice() const { return m_notice; }

    /// "x-objectstore://UUID/Entity/key"
    [[nodiscard]] std::string uri(const ObjectID &id) const;
    /// The id that `uri` names, or an empty one when the text is no URI of this store.
    [[nodiscard]] ObjectID objectID(std::string_view uri) const;

    /// The key of a new record, greater than every one that this store has handed out, to whichever context.
    [[nodiscard]] std::int64_t nextKey();

    /// A connection of its own for one context.
    [[nodiscard]] foundation::Result<std::unique_ptr<Connection>> connect() const;

private:
    [[nodiscard]] std::unique_ptr<Connection> openFile();
    Store(const ObjectModel &model, std::filesystem::path file, const foundation::Clock &clock, std::string vfs);

    const ObjectModel &m_model;
    std::filesystem::path m_file;
    const foundation::Clock &m_clock;
    std::string m_vfs;
    std::string m_uuid;
    mutable std::mutex m_mutex;
    mutable std::unique_ptr<Connection> m_first; ///< what opened the store; the first context takes it over
    std::string m_notice;
    bool m_immutable = false;
    std::atomic<std::int64_t> m_lastKey = 0;
};

} // namespace objectstore
