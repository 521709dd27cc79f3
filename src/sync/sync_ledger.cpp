// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/sync_ledger.h"

#include "objectstore/managed_object.h"

#include <unordered_set>

namespace syncing {

using foundation::Result;
using objectstore::ManagedObject;
using objectstore::ObjectID;
using objectstore::Value;

namespace {

constexpr const char *noteEntity = "SyncLedgerEntry";
constexpr std::array<std::string_view, 3> kinds{"Tasks", "Folders", "Contexts"};
constexpr std::int64_t accountKind = 3;

std::optional<std::size_t> kindOf(std::string_view entity)
{
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        if (kinds[kind] == entity)
            return kind;
    }
    return std::nullopt;
}

std::optional<ContentMark> markIn(const ManagedObject &note, std::string_view name)
{
    const auto value = note.value(name);
    return objectstore::isNil(value) ? std::nullopt : std::optional(objectstore::toInteger(value));
}

Value valueOf(const std::optional<ContentMark> &mark)
{
    return mark ? Value(*mark) : Value();
}

} // namespace

SyncLedger::SyncLedger(objectstore::ObjectContext &moc, bool isGuarding)
    : m_moc(moc), m_entity(*moc.store().model().entity(noteEntity)), m_isGuarding(isGuarding)
{ }

Result<void> SyncLedger::load()
{
    auto notes = m_moc.fetch({.entity = noteEntity, .predicate = {}, .sortDescriptors = {}});
    if (!notes)
        return foundation::Failure(notes.error());
    for (ManagedObject *note : *notes) {
        const std::int64_t kind = note->integer("kind");
        if (kind == accountKind) {
            m_accountNote = note->objectID().key;
            m_account = note->text("account");
            m_date = note->date("date");
        } else if (!m_isGuarding) {
            m_moc.remove(*note); // rules without guards change records behind its back
        } else if (kind >= 0 && kind < accountKind) {
            m_entries[static_cast<std::size_t>(kind)][note->integer("record")] = {.key = note->objectID().key,
                .server = markIn(*note, "serverContent"),
                .serverDate = note->date("serverDate"),
                .local = markIn(*note, "localContent"),
                .sent = markIn(*note, "sentContent"),
                .replaced = markIn(*note, "replacedContent"),
                .replacedDate = note->date("replacedDate")};
        }
    }
    return {};
}

SyncLedger::Entries *SyncLedger::entriesOf(const ManagedObject &record)
{
    const auto kind = kindOf(record.entity().name());
    return kind && m_isGuarding ? &m_entries[*kind] : nullptr;
}

const SyncLedger::Entry *SyncLedger::find(const ManagedObject &record) const
{
    const auto kind = kindOf(record.entity().name());
    if (!kind)
        return nullptr;
    const auto found = m_entries[*kind].find(record.objectID().key);
    return found == m_entries[*kind].end() ? nullptr : &found->second;
}

Change SyncLedger::compare(const ManagedObject &record, const ServerVersion &server, ContentMark local) const
{
    const Entry *entry = find(record);
    if (!entry || (!entry->server && entry->sent != server.content))
        return Change::Unknown;
    if (entry->replaced == server.content && server.date && entry->replacedDate == server.date
        && entry->server != server.content)
        return Change::OldList;
    // What was sent last arrived, although no answer told so: from then on that is what both sides agreed on.
    const bool arrived = entry->sent == server.content;
    const bool serverChanged = !arrived && entry->server != server.content;
    const bool localChanged = (arrived ? entry->sent : entry->local) != local;
    if (serverChanged && localChanged)
        return server.content == local ? Change::None : Change::Both;
    return serverChanged ? Change::Server : localChanged ? Change::Local : Change::None;
}

bool SyncLedger::isChangedHere(const ManagedObject &record, ContentMark local) const
{
    const Entry *entry = find(record);
    return entry && entry->local != local;
}

bool SyncLedger::isUnanswered(const ManagedObject &record, ContentMark content) const
{
    const Entry *entry = find(record);
    return entry && entry->sent == content;
}

bool SyncLedger::isKnown(const ManagedObject &record) const
{
    const Entry *entry = find(record);
    return entry && entry->server;
}

void SyncLedger::agree(const ManagedObject &record, const ServerVersion &server, ContentMark local)
{
    Entries *entries = entriesOf(record);
    if (!entries)
        return;
    Entry &entry = (*entries)[record.objectID().key];
    const bool isSame = entry.server == server.content;
    if (isSame && entry.local == local && !entry.sent && (!server.date || entry.serverDate == server.date))
        return;
    if (entry.serverDate && !isSame) {
        entry.replaced = entry.server;
        entry.replacedDate = entry.serverDate;
    }
    if (server.date || !isSame)
        entry.serverDate = server.date;
    entry.server = server.content;
    entry.local = local;
    entry.sent.reset();
    write(record, entry);
}

void SyncLedger::noteDate(const ManagedObject &record, const ServerVersion &listed)
{
    Entries *entries = entriesOf(record);
    const auto found = entries ? entries->find(record.objectID().key) : Entries::iterator();
    if (!entries || found == entries->end() || found->second.server != listed.content
        || found->second.serverDate == listed.date)
        return;
    found->second.serverDate = listed.date;
    write(record, found->second);
}

void SyncLedger::shift(const ManagedObject &record, ContentMark difference)
{
    Entries *entries = entriesOf(record);
    const auto found = entries ? entries->find(record.objectID().key) : Entries::iterator();
    if (!entries || found == entries->end())
        return;
    for (std::optional<ContentMark> *mark : {&found->second.server, &found->second.local, &found->second.sent}) {
        if (*mark)
            *mark
                = static_cast<ContentMark>(static_cast<std::uint64_t>(**mark) + static_cast<std::uint64_t>(difference));
    }
    found->second.serverDate.reset();
    write(record, found->second);
}

void SyncLedger::beginSending(const ManagedObject &record, ContentMark content)
{
    Entries *entries = entriesOf(record);
    if (!entries)
        return;
    Entry &entry = (*entries)[record.objectID().key];
    entry.sent = content;
    write(record, entry);
}

ObjectID SyncLedger::takeUnanswered(std::string_view entity, ContentMark content)
{
    const auto kind = kindOf(entity);
    if (!kind || !m_isGuarding)
        return {};
    indexUnanswered();
    auto &unanswered = m_unanswered[*kind];
    const auto found = unanswered.find(content);
    if (found == unanswered.end())
        return {};
    const ObjectID id{m_moc.store().model().entity(entity), found->second};
    unanswered.erase(found);
    return id;
}

void SyncLedger::indexUnanswered()
{
    if (std::exchange(m_unansweredIndexed, true))
        return;
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        for (const auto &[record, entry] : m_entries[kind]) {
            if (entry.sent && !entry.server)
                m_unanswered[kind].emplace(*entry.sent, record);
        }
    }
}

void SyncLedger::forget(const ManagedObject &record)
{
    Entries *entries = entriesOf(record);
    if (!entries)
        return;
    const auto found = entries->find(record.objectID().key);
    if (found == entries->end())
        return;
    removeNote(found->second.key);
    entries->erase(found);
}

void SyncLedger::forgetAll()
{
    for (Entries &entries : m_entries) {
        for (const auto &[record, entry] : entries)
            removeNote(entry.key);
        entries.clear();
    }
    m_unanswered = {};
}

void SyncLedger::setAccount(std::string account)
{
    if (m_account == account)
        return;
    m_account = std::move(account);
    note(m_accountNote, accountKind, 0).setValue("account", m_account);
}

void SyncLedger::setDate(foundation::Instant date)
{
    m_date = date;
    note(m_accountNote, accountKind, 0).setValue("date", date);
}

ManagedObject &SyncLedger::note(std::int64_t &key, std::int64_t kind, std::int64_t record)
{
    if (key != 0)
        return *m_moc.object({&m_entity, key});
    ManagedObject &made = m_moc.insert(noteEntity);
    made.setValue("kind", kind);
    made.setValue("record", record);
    key = made.objectID().key;
    return made;
}

void SyncLedger::write(const ManagedObject &record, Entry &entry)
{
    const auto kind = static_cast<std::int64_t>(*kindOf(record.entity().name()));
    ManagedObject &written = note(entry.key, kind, record.objectID().key);
    written.setValue("serverContent", valueOf(entry.server));
    written.setValue("localContent", valueOf(entry.local));
    written.setValue("sentContent", valueOf(entry.sent));
    written.setDate("serverDate", entry.serverDate);
    written.setValue("replacedContent", valueOf(entry.replaced));
    written.setDate("replacedDate", entry.replacedDate);
}

void SyncLedger::removeNote(std::int64_t key)
{
    if (ManagedObject *removed = key != 0 ? m_moc.object({&m_entity, key}) : nullptr)
        m_moc.remove(*removed);
}

} // namespace syncing
