// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/sync_ledger.h"

#include "objectstore/managed_object.h"

#include <unordered_set>

namespace syncing {

using foundation::Result;
using objectstore::ManagedObject;
using objectstore::ObjectID;
using objectstore::Value;
using objectstore::ValueView;

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

/// The columns of a note, and their names in the same order.
enum class Column {
    Kind,
    Record,
    ServerContent,
    LocalContent,
    SentContent,
    ServerDate,
    ServerFolder,
    ServerContext,
    ReplacedContent,
    ReplacedDate,
    Date,
    Save,
    Account
};
constexpr std::array noteColumns{"kind", "record", "serverContent", "localContent", "sentContent", "serverDate",
    "serverFolder", "serverContext", "replacedContent", "replacedDate", "date", "save", "account"};

/// One note as it was read, without an object for it: there is one for every task.
class NoteReader
{
public:
    explicit NoteReader(std::span<const ValueView> values) : m_values(values) { }

    [[nodiscard]] std::int64_t integer(Column column) const { return objectstore::toInteger(at(column)); }
    [[nodiscard]] std::string text(Column column) const { return std::string(objectstore::toText(at(column))); }
    [[nodiscard]] std::optional<ContentMark> mark(Column column) const
    {
        return objectstore::isNil(at(column)) ? std::nullopt : std::optional(integer(column));
    }
    [[nodiscard]] std::optional<foundation::Instant> date(Column column) const
    {
        const auto *instant = std::get_if<foundation::Instant>(&at(column));
        return instant ? std::optional(*instant) : std::nullopt;
    }

private:
    [[nodiscard]] const ValueView &at(Column column) const { return m_values[static_cast<std::size_t>(column)]; }

    std::span<const ValueView> m_values;
};

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
    m_saveAtStart = m_moc.knownSave();
    std::vector<std::int64_t> worthless;
    const auto loaded = m_moc.fetchValues({.entity = noteEntity, .predicate = {}, .sortDescriptors = {}},
        std::vector<std::string>(noteColumns.begin(), noteColumns.end()),
        [&](const ObjectID &id, std::span<const ValueView> values) {
            const NoteReader note(values);
            const std::int64_t kind = note.integer(Column::Kind);
            if (kind == accountKind) {
                m_accountNote = id.key;
                m_account = note.text(Column::Account);
                m_date = note.date(Column::Date);
                m_comparedSave = note.mark(Column::Save);
            } else if (!m_isGuarding) {
                worthless.push_back(id.key); // rules without guards change records behind its back
            } else if (kind >= 0 && kind < accountKind) {
                m_entries[static_cast<std::size_t>(kind)][note.integer(Column::Record)] = {.key = id.key,
                    .server = note.mark(Column::ServerContent),
                    .serverDate = note.date(Column::ServerDate),
                    .folder = note.integer(Column::ServerFolder),
                    .context = note.integer(Column::ServerContext),
                    .local = note.mark(Column::LocalContent),
                    .sent = note.mark(Column::SentContent),
                    .replaced = note.mark(Column::ReplacedContent),
                    .replacedDate = note.date(Column::ReplacedDate)};
            }
        });
    if (!loaded)
        return foundation::Failure(loaded.error());
    for (const std::int64_t key : worthless)
        removeNote(key);
    return {};
}

SyncLedger::Entries *SyncLedger::entriesOf(const ManagedObject &record)
{
    const auto kind = kindOf(record.entity().name());
    return kind && m_isGuarding ? &m_entries[*kind] : nullptr;
}

const SyncLedger::Entry *SyncLedger::find(const ManagedObject &record) const
{
    return find(record.objectID());
}

const SyncLedger::Entry *SyncLedger::find(const ObjectID &record) const
{
    const auto kind = kindOf(record.entity->name());
    if (!kind)
        return nullptr;
    const auto found = m_entries[*kind].find(record.key);
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

bool SyncLedger::isAgreed(const ObjectID &record, const ServerVersion &server) const
{
    const Entry *entry = find(record);
    return entry && entry->server == server.content && !entry->sent
        && (!server.date || entry->serverDate == server.date);
}

std::optional<std::unordered_set<std::int64_t>> SyncLedger::tasksChangedHere() const
{
    const auto changes = m_isGuarding && m_comparedSave ? m_moc.changesSince(*m_comparedSave) : std::nullopt;
    if (!changes)
        return std::nullopt;
    std::unordered_set<std::int64_t> keys;
    bool placesChanged = false; // what a task looks like hangs on the records that it points at, too
    for (const auto *records : {&changes->inserted, &changes->updated, &changes->deleted}) {
        for (const ObjectID &id : *records) {
            if (id.entity->name() == kinds[0])
                keys.insert(id.key);
            else if (records != &changes->inserted && id.entity != &m_entity)
                placesChanged = true;
        }
    }
    return placesChanged ? std::nullopt : std::optional(std::move(keys));
}

void SyncLedger::noteComparison()
{
    if (!m_isGuarding || m_comparedSave == m_saveAtStart)
        return;
    m_comparedSave = m_saveAtStart;
    note(m_accountNote, accountKind, 0).setValue("save", m_saveAtStart);
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
    entry.folder = server.folder;
    entry.context = server.context;
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

void SyncLedger::placeIsGone(Place place, std::int64_t id)
{
    if (!m_isGuarding || id == 0)
        return;
    const ContentMark difference = leaving(place, id);
    for (auto &[record, entry] : m_entries[0]) {
        std::int64_t &there = place == Place::Folder ? entry.folder : entry.context;
        if (there != id)
            continue;
        there = 0;
        entry.serverDate.reset();
        for (std::optional<ContentMark> *mark : {&entry.server, &entry.local, &entry.sent}) {
            if (*mark)
                *mark = static_cast<ContentMark>(
                    static_cast<std::uint64_t>(**mark) + static_cast<std::uint64_t>(difference));
        }
        write(0, record, entry);
    }
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
    write(*kindOf(record.entity().name()), record.objectID().key, entry);
}

void SyncLedger::write(std::size_t kind, std::int64_t record, Entry &entry)
{
    ManagedObject &written = note(entry.key, static_cast<std::int64_t>(kind), record);
    written.setValue("serverFolder", entry.folder);
    written.setValue("serverContext", entry.context);
    written.setValue("serverContent", valueOf(entry.server));
    written.setValue("localContent", valueOf(entry.local));
    written.setValue("sentContent", valueOf(entry.sent));
    written.setDate("serverDate", entry.serverDate);
    written.setValue("replacedContent", valueOf(entry.replaced));
    written.setDate("replacedDate", entry.replacedDate);
    m_moc.pack(written);
}

void SyncLedger::removeNote(std::int64_t key)
{
    if (ManagedObject *removed = key != 0 ? m_moc.object({&m_entity, key}) : nullptr)
        m_moc.remove(*removed);
}

} // namespace syncing
