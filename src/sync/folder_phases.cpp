// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/folder_phases.h"

#include "toodledo/td_text.h"

#include <algorithm>

namespace syncing {

using model::Folders;
using objectstore::ManagedObject;
using toodledo::GtdFolder;
using toodledo::isServiceId;
using toodledo::TDError;

namespace {

constexpr std::string_view inboxTitle = "Inbox";

GtdFolder asSent(const Folders &folder)
{
    GtdFolder sent;
    sent.folderId = folder.folderID();
    sent.title = std::string(folder.title());
    sent.isPrivate = folder.isPrivate();
    sent.archived = folder.archived();
    sent.order = folder.order();
    return sent;
}

bool sameContent(const Folders &folder, const GtdFolder &listed)
{
    return folder.title() == listed.title.value_or("") && folder.isPrivate() == listed.isPrivate
        && folder.archived() == listed.archived;
}

} // namespace

std::optional<FolderPhases::GtdFolders> FolderPhases::listFolders()
{
    TDError error;
    auto folders = m_session.client().getFolders(&error);
    if (!m_session.acceptList(folders.has_value(), error))
        return std::nullopt;
    if (m_session.isGuarding())
        std::erase_if(*folders, [](const GtdFolder &folder) { return !isServiceId(folder.folderId); });
    m_session.listedFolders.emplace();
    for (const GtdFolder &folder : *folders)
        m_session.listedFolders->insert(folder.folderId);
    return folders;
}

std::optional<std::vector<Folders *>> FolderPhases::localFolders()
{
    const auto objects = m_session.records().fetch(Folders::entityName, {});
    if (!objects)
        return std::nullopt;
    std::vector<Folders *> folders;
    for (ManagedObject *object : *objects)
        folders.push_back(model::as<Folders>(object));
    return folders;
}

bool FolderPhases::getNewFolders()
{
    const auto listed = listFolders();
    return listed && makeMissing(*listed);
}

/// Makes a folder here for each listed one that is missing; false when it could not be saved.
bool FolderPhases::makeMissing(const GtdFolders &listed)
{
    for (const GtdFolder &folder : listed) {
        if (m_session.records().getFolderById(folder.folderId) || m_session.deletedFolders.contains(folder.folderId))
            continue;
        if (Folders *adopted = adoptableFolder(folder))
            adopt(*adopted, folder);
        else if (!makeFolder(folder))
            return false;
    }
    return true;
}

/// What was sent is what both sides agree on: an edit made since is this side's.
void FolderPhases::adopt(Folders &folder, const GtdFolder &listed)
{
    const ContentMark content = contentOf(listed);
    if (m_session.ledger().isUnanswered(folder, content))
        m_session.ledger().agree(folder, {content}, content);
    giveId(folder, listed.folderId);
}

void FolderPhases::giveId(Folders &folder, std::int64_t id)
{
    folder.setFolderID(id);
    m_session.placesWithNewId.push_back(&folder);
}

/// A folder here that the listed one, whose id nothing here has yet, can only be: it was sent and came back, or another
/// computer sent it again after it had been deleted there.
Folders *FolderPhases::adoptableFolder(const GtdFolder &folder)
{
    if (!m_session.isGuarding())
        return nullptr;
    const auto folders = localFolders().value_or(std::vector<Folders *>());
    const auto found = std::ranges::find_if(folders, [this, &folder](const Folders *local) {
        if (m_session.listedFolders->contains(local->folderID()) || local->title() == inboxTitle)
            return false;
        return m_session.ledger().isUnanswered(*local, contentOf(folder))
            || (local->title() == folder.title.value_or("") && !local->markedForDeletion());
    });
    return found == folders.end() ? nullptr : *found;
}

bool FolderPhases::makeFolder(const GtdFolder &folder)
{
    Folders &made = model::insert<Folders>(m_session.moc());
    made.setFolderID(folder.folderId);
    made.setTitle(folder.title.value_or(""));
    made.setOrder(folder.order);
    made.setPrivate(folder.isPrivate);
    made.setArchived(folder.archived);
    m_session.ledger().agree(made, {contentOf(folder)}, contentOf(asSent(made)));
    m_session.moc().processPendingChanges();
    return m_session.saveAction();
}

bool FolderPhases::sendDeletedFolders()
{
    m_session.beginPhase();
    const auto marked = m_session.records().getRecordsWithPredicate(Folders::entityName, "markedForDeletion=YES");
    m_session.saveAction();
    Folders *inbox = m_session.records().getFolderByTitle(inboxTitle);
    for (ManagedObject *object : marked.value_or(std::vector<ManagedObject *>())) {
        Folders &folder = *model::as<Folders>(object);
        if (m_session.isOver())
            return false;
        if (!deleteAtService(folder))
            continue;
        if (inbox && inbox != &folder) {
            for (ManagedObject *task : std::vector<ManagedObject *>(folder.tasks()))
                task->setRelated("folders", inbox);
        }
        m_session.ledger().placeIsGone(Place::Folder, folder.folderID());
        m_session.ledger().forget(folder);
        m_session.moc().remove(folder);
    }
    m_session.saveAction();
    return true;
}

/// Whether the folder may now go here. Without guards it goes whatever the service says.
bool FolderPhases::deleteAtService(const Folders &folder)
{
    GtdFolder deleted;
    deleted.folderId = folder.folderID();
    if (!m_session.isGuarding()) {
        if (!objectstore::isNil(folder.value("folderID")))
            static_cast<void>(m_session.client().deleteFolder(deleted));
        return true;
    }
    const bool wasJustSent = m_sent.contains(&folder);
    if (!isServiceId(deleted.folderId))
        return !wasJustSent; // else it may be there under an id that only the next run's list tells
    if (!wasJustSent && m_session.listedFolders && !m_session.listedFolders->contains(deleted.folderId))
        return true;
    TDError error;
    const bool succeeded = m_session.client().deleteFolder(deleted, &error);
    if (m_session.acceptItem(succeeded, error, folder.title()) != Sent::Confirmed)
        return false;
    m_session.deletedFolders.insert(deleted.folderId);
    return true;
}

bool FolderPhases::sendNewFolders()
{
    m_session.beginPhase();
    const auto listed = listFolders();
    if (!listed)
        return false;
    // A folder that another computer sent since the first list may hold tasks that the task list told of.
    if (m_session.isGuarding() && !makeMissing(*listed))
        return false;
    const auto folders = localFolders();
    if (!folders)
        return false;
    std::vector<Folders *> sent;
    for (Folders *folder : *folders) {
        if (m_session.isOver())
            return false;
        if (folder->title() == inboxTitle || folder->markedForDeletion())
            continue;
        bool adopted = false;
        if (const GtdFolder *match = this->match(*folder, *listed, adopted)) {
            reconcile(*folder, *match);
        } else if (!adopted) {
            if (!sendNewFolder(*folder))
                return false;
            sent.push_back(folder);
        }
    }
    if (m_session.isGuarding() && !sent.empty() && !m_session.isOver())
        learnIds(sent);
    return true;
}

/// The listed folder with this one's id. One of the same title gives it its id; without guards, in the list's order and
/// without counting as the folder itself.
const GtdFolder *FolderPhases::match(Folders &folder, const GtdFolders &listed, bool &adopted)
{
    if (m_session.isGuarding()) {
        const auto byId = std::ranges::find(listed, folder.folderID(), &GtdFolder::folderId);
        const auto found = byId != listed.end() ? byId : std::ranges::find_if(listed, [&](const GtdFolder &candidate) {
            return folder.title() == candidate.title.value_or("") && !isTaken(candidate.folderId, &folder);
        });
        if (found == listed.end())
            return nullptr;
        if (folder.folderID() != found->folderId)
            giveId(folder, found->folderId);
        return &*found;
    }
    for (const GtdFolder &candidate : listed) {
        if (folder.folderID() == candidate.folderId)
            return &candidate;
        if (folder.title() == candidate.title.value_or("")) {
            folder.setFolderID(candidate.folderId);
            adopted = true;
        }
    }
    return nullptr;
}

bool FolderPhases::isTaken(std::int64_t folderID, const Folders *but)
{
    const Folders *holder = m_session.records().getFolderById(folderID);
    return holder && holder != but;
}

/// False when the phase has to end.
bool FolderPhases::sendNewFolder(Folders &folder)
{
    if (m_session.isGuarding()) {
        m_session.ledger().beginSending(folder, contentOf(asSent(folder)));
        if (!m_session.savesWhatIsSent())
            return false;
        m_sent.insert(&folder);
    }
    TDError error;
    const std::int64_t id = m_session.client().addFolder(asSent(folder), &error);
    const Sent sent = m_session.acceptItem(true, error, folder.title());
    if (m_session.isGuarding())
        return sent != Sent::Unreachable;
    if (error)
        return false;
    folder.setFolderID(id);
    m_session.moc().processPendingChanges();
    return true;
}

/// The service does not tell the id of a new folder; its list does. Tasks that follow need it.
void FolderPhases::learnIds(const std::vector<Folders *> &sent)
{
    const auto listed = listFolders();
    if (!listed)
        return;
    for (Folders *folder : sent) {
        bool adopted = false;
        if (const GtdFolder *match = this->match(*folder, *listed, adopted))
            reconcile(*folder, *match);
    }
    m_session.saveAction();
}

void FolderPhases::reconcile(Folders &folder, const GtdFolder &listed)
{
    const ContentMark server = contentOf(listed);
    const ContentMark local = contentOf(asSent(folder));
    const Change change = m_session.ledger().compare(folder, {server}, local);
    bool localWins = change == Change::Local;
    if (change == Change::Unknown) {
        if (sameContent(folder, listed)) {
            m_session.ledger().agree(folder, {server}, local);
            return;
        }
        localWins = m_session.isLater(folder.modifiedDate(), true);
    } else if (change == Change::None) {
        m_session.ledger().agree(folder, {server}, local);
        return;
    }
    if (localWins) {
        m_session.ledger().noteListed(folder, {server});
        sendEdit(folder, listed);
        return;
    }
    folder.setTitle(listed.title.value_or(""));
    folder.setPrivate(listed.isPrivate);
    folder.setArchived(listed.archived);
    m_session.ledger().agree(folder, {server}, contentOf(asSent(folder)));
}

void FolderPhases::sendEdit(Folders &folder, const GtdFolder &listed)
{
    GtdFolder edited = asSent(folder);
    edited.folderId = listed.folderId;
    const ContentMark content = contentOf(edited);
    if (m_session.isGuarding()) {
        m_session.ledger().beginSending(folder, content);
        if (!m_session.savesWhatIsSent())
            return;
    }
    TDError error;
    const bool succeeded = m_session.client().editFolder(edited, m_session.isGuarding() ? &error : nullptr);
    if (m_session.acceptItem(succeeded, error, folder.title()) == Sent::Confirmed)
        m_session.ledger().agree(folder, {content}, content);
}

} // namespace syncing
