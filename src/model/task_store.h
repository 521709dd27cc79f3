// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "foundation/error.h"
#include "objectstore/object_context.h"
#include "objectstore/store.h"

#include <filesystem>
#include <memory>
#include <system_error>

namespace model {

/// The folder of the store: $XDG_DATA_HOME/Quelvin, else ~/.local/share/Quelvin, else Quelvin among the temporary
/// files.
[[nodiscard]] std::filesystem::path applicationSupportFolder();

/// The file of the settings: $XDG_CONFIG_HOME/Quelvin/settings.json, else the same below ~/.config, else among the
/// temporary files.
[[nodiscard]] std::filesystem::path settingsFile();

/// Makes the folder of a store, readable by nobody else; one that exists is left as it is.
[[nodiscard]] std::error_code makeStoreFolder(std::filesystem::path folder);

/// The user's tasks: the open store file and the main context over it, with the default records in place.
/// Belongs to the main thread; another thread makes an ObjectContext of its own over `store()`.
class TaskStore
{
public:
    static constexpr const char *fileName = "Quelvin.qvl";

    /// Opens the store file in `folder`, creating both where they are missing (the folder for this user alone).
    /// Trouble with the default records is shown and does not keep the store closed. `clock` and `presenter` must
    /// outlive the store.
    [[nodiscard]] static foundation::Result<std::unique_ptr<TaskStore>> open(
        const std::filesystem::path &folder, const foundation::Clock &clock, foundation::ErrorPresenter &presenter);

    [[nodiscard]] objectstore::Store &store() { return *m_store; }
    [[nodiscard]] objectstore::ObjectContext &managedObjectContext() { return m_managedObjectContext; }

private:
    explicit TaskStore(std::unique_ptr<objectstore::Store> store);

    std::unique_ptr<objectstore::Store> m_store;
    objectstore::ObjectContext m_managedObjectContext;
};

} // namespace model
