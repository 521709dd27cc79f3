// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sync/sync_session.h"
#include "toodledo/gtd_folder.h"

#include <set>
#include <vector>

namespace syncing {

/// The phases of a run that reconcile folders. Each returns whether it went through; only the run decides what follows.
class FolderPhases
{
public:
    explicit FolderPhases(SyncSession &session) : m_session(session) { }

    /// Makes a folder here for each of the service's that is missing.
    bool getNewFolders();
    /// Deletes, there and here, the folders that were marked for it.
    bool sendDeletedFolders();
    /// Sends what is new or changed here and takes over what changed there. A folder that the service does not have is
    /// sent as new, whenever it was made: one that was deleted there comes back.
    bool sendNewFolders();

private:
    using GtdFolders = std::vector<toodledo::GtdFolder>;

    [[nodiscard]] std::optional<GtdFolders> listFolders();
    bool makeMissing(const GtdFolders &listed);
    [[nodiscard]] std::optional<std::vector<model::Folders *>> localFolders();
    [[nodiscard]] model::Folders *adoptableFolder(const toodledo::GtdFolder &folder);
    void adopt(model::Folders &folder, const toodledo::GtdFolder &listed);
    void giveId(model::Folders &folder, std::int64_t id);
    bool makeFolder(const toodledo::GtdFolder &folder);
    bool deleteAtService(const model::Folders &folder);
    [[nodiscard]] const toodledo::GtdFolder *match(model::Folders &folder, const GtdFolders &listed, bool &adopted);
    bool sendNewFolder(model::Folders &folder);
    void reconcile(model::Folders &folder, const toodledo::GtdFolder &listed);
    void sendEdit(model::Folders &folder, const toodledo::GtdFolder &listed);
    void learnIds(const std::vector<model::Folders *> &sent);
    [[nodiscard]] bool isTaken(std::int64_t folderID, const model::Folders *but);

    SyncSession &m_session;
    std::set<const model::Folders *> m_sent; ///< in this run
};

} // namespace syncing
