// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "objectstore/object_context.h"
#include "sync/ledger_book.h"
#include "sync/task_content.h"

#include <array>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace syncing {

/// Which side has changed a record since both agreed.
enum class Change {
    Unknown, ///< nothing is noted of the record: the dates decide
    None,
    Server,
    Local,
    Both,
    OldList ///< the service's version is the very one that was superseded: the list comes out of some cache
};

/// One version of a record as the service has it.
struct ServerVersion {
    ContentMark content = 0;
    std::optional<foundation::Instant> date = {}; ///< its modification, where a list told it
    std::int64_t folder = 0; ///< of a task
    std::int64_t context = 0; ///< of a task
    std::optional<toodledo::SourceMark> source = {}; ///< of a task out of a list
};

/// Notes, for each record, what the service last had of it, what the record looked like here then, and what is on the
/// way. So an edit stays to be sent until the service has confirmed it, whenever it was made; the echo of what was sent
/// is no change of the service's; and a record whose "add" was never answered is known again when the service lists it.
///
/// The notes are entries in the run's own context, once `write` has put them there, and are saved with the records that
/// they are about. With the guards
/// off nothing is noted, every answer is "unknown", and what was noted before is thrown away.
class SyncLedger
{
public:
    /// `moc` must outlive the ledger.
    SyncLedger(objectstore::ObjectContext &moc, bool isGuarding);

    /// Reads the notes. Called once, first.
    [[nodiscard]] foundation::Result<void> load();

    [[nodiscard]] bool isGuarding() const { return m_isGuarding; }

    /// Who has changed `record`, which is now `server` there and has the content `local` here.
    [[nodiscard]] Change compare(
        const objectstore::ManagedObject &record, const ServerVersion &server, ContentMark local) const;
    /// Whether the record, whose content is now `local`, is another than when both agreed.
    [[nodiscard]] bool isChangedHere(const objectstore::ManagedObject &record, ContentMark local) const;
    /// Whether just this content was being sent when the answer got lost.
    [[nodiscard]] bool isUnanswered(const objectstore::ManagedObject &record, ContentMark content) const;
    /// Whether the record was being added when the answer got lost, and is not known to be there since.
    [[nodiscard]] bool isAddUnanswered(const objectstore::ManagedObject &record) const;
    /// Whether the service has ever had the record.
    [[nodiscard]] bool isKnown(const objectstore::ManagedObject &record) const;

    /// Whether both sides agreed on just this version, and nothing was sent since.
    [[nodiscard]] bool isAgreed(const objectstore::ObjectID &record, const ServerVersion &server) const;
    /// The bytes by which a list told of the version that both sides agreed on, and after which nothing was sent.
    [[nodiscard]] std::optional<toodledo::SourceMark> agreedSource(std::int64_t taskKey) const;
    /// A list told of the version that both sides agreed on by these bytes.
    void noteSource(std::int64_t taskKey, std::optional<toodledo::SourceMark> source);
    /// The keys of the tasks that may be others here than when tasks were compared last; nothing where any may.
    [[nodiscard]] std::optional<std::unordered_set<std::int64_t>> tasksChangedHere() const;
    /// Every task that may have changed here was compared with the service's list, and what differs was sent or noted.
    void noteComparison();

    /// So many new tasks are about to be noted.
    void expectTasks(std::size_t number) { m_books[0].makeRoom(number); }
    /// Both sides agree: the service has `server`, and `local` is what it amounts to here.
    void agree(const objectstore::ManagedObject &record, const ServerVersion &server, ContentMark local);
    /// A list told of this version, while the record was changed here: when the version that is known was made, or that
    /// what was sent has arrived, on which both sides agree thereby. To be noted before anything else is sent.
    void noteListed(const objectstore::ManagedObject &record, const ServerVersion &listed);
    /// A folder or context was deleted on both sides: every task that the service had in it is in none there now.
    void placeIsGone(Place place, std::int64_t id);
    /// `content` is about to be sent, of a task that will lie in `folder` and `context` there. To be saved before it
    /// is.
    void beginSending(const objectstore::ManagedObject &record, ContentMark content, std::int64_t folder = 0,
        std::int64_t context = 0);

    /// A record of the kind of `entity` that was being sent when the answer got lost, with just this content, and that
    /// has no id yet; each is given out once.
    [[nodiscard]] objectstore::ObjectID takeUnanswered(std::string_view entity, ContentMark content);

    void forget(const objectstore::ManagedObject &record);
    void forgetAll();

    /// Puts what was noted into the context, to be saved with the records.
    void write();

    /// The service's id of the user that the notes are about; empty before the first run.
    [[nodiscard]] const std::string &account() const { return m_account; }
    /// When the last run ended; a settings file that tells another date is not the one that belongs to this store.
    [[nodiscard]] const std::optional<foundation::Instant> &date() const { return m_date; }
    void setAccount(std::string account);
    void setDate(foundation::Instant date);

private:
    [[nodiscard]] LedgerBook *bookOf(const objectstore::ManagedObject &record);
    [[nodiscard]] const LedgerNote *find(const objectstore::ManagedObject &record) const;
    [[nodiscard]] const LedgerNote *find(const objectstore::ObjectID &record) const;
    [[nodiscard]] objectstore::ManagedObject &entry(std::int64_t &key, std::int64_t kind);
    void indexUnanswered();

    objectstore::ObjectContext &m_moc;
    const objectstore::EntityDescription &m_entity;
    bool m_isGuarding;
    std::array<LedgerBook, 3> m_books; ///< on tasks, folders, contexts
    std::array<std::unordered_multimap<ContentMark, std::int64_t>, 3> m_unanswered; ///< keys of records
    bool m_unansweredIndexed = false;
    std::int64_t m_accountEntry = 0; ///< its key
    std::int64_t m_saveAtStart = 0; ///< the store's save that this run began with
    std::optional<std::int64_t> m_comparedSave; ///< the one that the run of the last comparison began with
    std::string m_account;
    std::optional<foundation::Instant> m_date;
};

} // namespace syncing
