// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/sync_ledger.h"

#include "foundation/log.h"
#include "objectstore/managed_object.h"

#include <algorithm>

namespace syncing {

using foundation::Result;
using objectstore::ManagedObject;
using objectstore::ObjectID;
using objectstore::Value;
using objectstore::ValueView;

namespace {

constexpr const char *entryEntity = "SyncLedgerEntry";
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

} // namespace

SyncLedger::SyncLedger(objectstore::ObjectContext &moc, bool isGuarding)
    : m_moc(moc), m_entity(*moc.store().model().entity(entryEntity)), m_isGuarding(isGuarding)
{ }

Result<void> SyncLedger::load()
{
    m_saveAtStart = m_moc.knownSave();
    std::vector<ObjectID> worthless;
    const auto loaded = m_moc.fetchValues({.entity = entryEntity, .predicate = {}, .sortDescriptors = {}},
        {"kind", "notes", "account", "date", "save"}, [&](const ObjectID &id, std::span<const ValueView> values) {
            const std::int64_t kind = objectstore::toInteger(values[0]);
            const auto *notes = std::get_if<std::span<const std::byte>>(&values[1]);
            if (kind == accountKind) {
                m_accountEntry = id.key;
                m_account = objectstore::toText(values[2]);
                if (const auto *date = std::get_if<foundation::Instant>(&values[3]))
                    m_date = *date;
                if (!objectstore::isNil(values[4]))
                    m_comparedSave = objectstore::toInteger(values[4]);
            } else if (!m_isGuarding || !notes || kind < 0 || kind > accountKind) {
                worthless.push_back(id); // rules without guards change records behind its back
            } else if (!m_books[static_cast<std::size_t>(kind)].addPage(id.key, *notes)) {
                foundation::logLine("Some notes of earlier synchronisations are damaged and were passed over.");
            }
        });
    if (!loaded)
        return foundation::Failure(loaded.error());
    for (const ObjectID &id : worthless)
        m_moc.remove(*m_moc.object(id));
    return {};
}

LedgerBook *SyncLedger::bookOf(const ManagedObject &record)
{
    const auto kind = kindOf(record.entity().name());
    return kind && m_isGuarding ? &m_books[*kind] : nullptr;
}

const LedgerNote *SyncLedger::find(const ManagedObject &record) const
{
    return find(record.objectID());
}

const LedgerNote *SyncLedger::find(const ObjectID &record) const
{
    const auto kind = kindOf(record.entity->name());
    return kind ? m_books[*kind].find(record.key) : nullptr;
}

Change SyncLedger::compare(const ManagedObject &record, const ServerVersion &server, ContentMark local) const
{
    const LedgerNote *note = find(record);
    if (!note || (!note->server && note->sent != server.content))
        return Change::Unknown;
    if (note->replaced == server.content && server.date && note->replacedDate == server.date
        && note->server != server.content)
        return Change::OldList;
    // What was sent last arrived, although no answer told so: from then on that is what both sides agreed on.
    const bool arrived = note->sent == server.content;
    const bool serverChanged = !arrived && note->server != server.content;
    const bool localChanged = (arrived ? note->sent : note->local) != local;
    if (serverChanged && localChanged)
        return server.content == local ? Change::None : Change::Both;
    return serverChanged ? Change::Server : localChanged ? Change::Local : Change::None;
}

bool SyncLedger::isChangedHere(const ManagedObject &record, ContentMark local) const
{
    const LedgerNote *note = find(record);
    return note && note->local != local;
}

bool SyncLedger::isUnanswered(const ManagedObject &record, ContentMark content) const
{
    const LedgerNote *note = find(record);
    return note && note->sent == content;
}

bool SyncLedger::isAddUnanswered(const ManagedObject &record) const
{
    const LedgerNote *note = find(record);
    return note && note->sent && !note->server;
}

bool SyncLedger::isKnown(const ManagedObject &record) const
{
    const LedgerNote *note = find(record);
    return note && note->server;
}

bool SyncLedger::isAgreed(const ObjectID &record, const ServerVersion &server) const
{
    const LedgerNote *note = find(record);
    return note && note->server == server.content && !note->sent && (!server.date || note->serverDate == server.date);
}

std::optional<toodledo::SourceMark> SyncLedger::agreedSource(std::int64_t taskKey) const
{
    const LedgerNote *note = m_books[0].find(taskKey);
    return note && note->server && !note->sent ? note->source : std::nullopt;
}

void SyncLedger::noteSource(std::int64_t taskKey, std::optional<toodledo::SourceMark> source)
{
    const LedgerNote *note = m_books[0].find(taskKey);
    if (note && source && note->source != source)
        m_books[0].edit(taskKey).source = source;
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
    entry(m_accountEntry, accountKind).setValue("save", m_saveAtStart);
}

void SyncLedger::agree(const ManagedObject &record, const ServerVersion &server, ContentMark local)
{
    LedgerBook *book = bookOf(record);
    if (!book)
        return;
    const std::int64_t key = record.objectID().key;
    const LedgerNote *before = book->find(key);
    const bool isSame = before && before->server == server.content;
    if (isSame && before->local == local && !before->sent && (!server.date || before->serverDate == server.date)
        && (!server.source || before->source == server.source))
        return;
    LedgerNote &note = book->edit(key);
    if (note.serverDate && !isSame) {
        note.replaced = note.server;
        note.replacedDate = note.serverDate;
    }
    if (server.date || !isSame)
        note.serverDate = server.date;
    note.server = server.content;
    note.source = server.source;
    note.folder = server.folder;
    note.context = server.context;
    note.local = local;
    note.sent.reset();
}

void SyncLedger::noteListed(const ManagedObject &record, const ServerVersion &listed)
{
    LedgerBook *book = bookOf(record);
    const std::int64_t key = record.objectID().key;
    const LedgerNote *before = book ? book->find(key) : nullptr;
    if (!before)
        return;
    if (before->sent == listed.content) {
        agree(record, listed, *before->sent);
    } else if (before->server == listed.content && before->serverDate != listed.date) {
        LedgerNote &note = book->edit(key);
        note.serverDate = listed.date;
        note.source.reset();
    }
}

void SyncLedger::placeIsGone(Place place, std::int64_t id)
{
    if (!m_isGuarding || id == 0)
        return;
    LedgerBook &tasks = m_books[0];
    const auto [there, sentThere] = place == Place::Folder ? std::pair(&LedgerNote::folder, &LedgerNote::sentFolder)
                                                           : std::pair(&LedgerNote::context, &LedgerNote::sentContext);
    std::vector<std::int64_t> concerned;
    tasks.forEach([&, there = there, sentThere = sentThere](std::int64_t record, const LedgerNote &note) {
        if (note.*there == id || note.*sentThere == id)
            concerned.push_back(record);
    });
    const auto leave = [difference = static_cast<std::uint64_t>(leaving(place, id))](std::optional<ContentMark> &mark) {
        if (mark)
            mark = static_cast<ContentMark>(static_cast<std::uint64_t>(*mark) + difference);
    };
    for (const std::int64_t record : concerned) {
        LedgerNote &note = tasks.edit(record);
        if (note.*there == id) {
            note.*there = 0;
            note.serverDate.reset();
            note.source.reset();
            leave(note.server);
            leave(note.local);
        }
        if (note.*sentThere == id) {
            note.*sentThere = 0;
            leave(note.sent);
        }
    }
}

void SyncLedger::beginSending(
    const ManagedObject &record, ContentMark content, std::int64_t folder, std::int64_t context)
{
    LedgerBook *book = bookOf(record);
    if (!book)
        return;
    LedgerNote &note = book->edit(record.objectID().key);
    note.sent = content;
    note.sentFolder = folder;
    note.sentContext = context;
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
        m_books[kind].forEach([&](std::int64_t record, const LedgerNote &note) {
            if (note.sent && !note.server)
                m_unanswered[kind].emplace(*note.sent, record);
        });
    }
}

void SyncLedger::forget(const ManagedObject &record)
{
    if (LedgerBook *book = bookOf(record))
        book->erase(record.objectID().key);
}

void SyncLedger::forgetAll()
{
    std::ranges::for_each(m_books, &LedgerBook::clear);
    m_unanswered = {};
}

void SyncLedger::write()
{
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        m_books[kind].writeChangedPages([&](std::int64_t &key, const objectstore::Bytes &bytes) {
            ManagedObject &page = entry(key, static_cast<std::int64_t>(kind));
            if (bytes.empty())
                m_moc.remove(page);
            else
                page.setValue("notes", bytes);
        });
    }
}

void SyncLedger::setAccount(std::string account)
{
    if (m_account == account)
        return;
    m_account = std::move(account);
    entry(m_accountEntry, accountKind).setValue("account", m_account);
}

void SyncLedger::setDate(foundation::Instant date)
{
    m_date = date;
    entry(m_accountEntry, accountKind).setValue("date", date);
}

/// The entry with this key; where there is none, a new one, whose key is then set.
ManagedObject &SyncLedger::entry(std::int64_t &key, std::int64_t kind)
{
    if (key != 0)
        return *m_moc.object({&m_entity, key});
    ManagedObject &made = m_moc.insert(entryEntity);
    made.setValue("kind", kind);
    key = made.objectID().key;
    return made;
}

} // namespace syncing
