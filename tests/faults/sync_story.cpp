// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/sync_story.h"

#include "faults/computer.h"
#include "faults/invariants.h"
#include "faults/sabotage.h"
#include "support/store_picture.h"
#include "support/temporary_folder.h"
#include "sync/ledger_book.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <map>

namespace faults {

namespace fs = std::filesystem;
using histories::ServiceInProcess;
using model::ManagedObject;
using model::Tasks;
using objectstore::ObjectContext;
using Picture = std::multiset<std::string>;

namespace {

// Both computers and the service have the same clock.
constexpr std::string_view timeBefore = "2026-11-24 08:00";
constexpr std::string_view timeOfTheOther = "2026-11-24 08:30";
constexpr std::string_view timeOfTheRun = "2026-11-24 09:00";
constexpr std::string_view timeOfTheNext = "2026-11-24 10:00";

constexpr std::string_view here = "here";
constexpr std::string_view there = "there";
constexpr int tasksOfEach = 17; // as many as are changed or deleted
constexpr int newTasks = 8;

// What lies beside the folder of the store.
constexpr const char *serviceFolder = "service";
constexpr const char *newComputer = "new computer";
constexpr const char *pictureWith = "with the changes here";
constexpr const char *pictureWithout = "without them";

/// One that knows no marks, so that all hangs on what is noted here.
ServiceInProcess serviceAt(const fs::path &folder, std::string_view now)
{
    const Spared spared;
    return ServiceInProcess([seconds = static_cast<std::int64_t>(support::at(now).seconds)] { return seconds; },
        folder / serviceFolder, false);
}

/// The records that changes are made to, all of them read before anything is changed, so that a read that fails leaves
/// nothing half done.
class Records
{
public:
    Records(ObjectContext &context, std::string_view side) : m_context(context), m_side(side)
    {
        for (const char *entity : {"Folders", "Contexts", "Tasks", "Tags", "Priorities"}) {
            auto found = context.fetch({.entity = entity, .predicate = {}, .sortDescriptors = {}});
            if (!found)
                throw NotFetched(found.error());
            for (ManagedObject *object : *found)
                m_all[entity + ("/" + nameOf(*object))] = object;
        }
    }

    /// The record of this side with this title; throws where it is not there.
    [[nodiscard]] ManagedObject &get(const char *entity, const std::string &title)
    {
        return *m_all.at(entity + ("/" + titled(title)));
    }
    [[nodiscard]] Tasks &task(int number) { return *model::as<Tasks>(&get("Tasks", "task " + std::to_string(number))); }
    ManagedObject &make(const char *entity, const std::string &title)
    {
        ManagedObject &made = m_context.insert(entity);
        made.setValue("title", titled(title));
        m_all[entity + ("/" + titled(title))] = &made;
        return made;
    }
    Tasks &makeTask(const std::string &title) { return *model::as<Tasks>(&make("Tasks", title)); }
    void prioritise(Tasks &task, const std::string &priority)
    {
        task.setRelated("priorities", m_all.at("Priorities/" + priority));
    }
    [[nodiscard]] std::string titled(const std::string &title) const { return std::string(m_side) + " " + title; }

private:
    static std::string nameOf(const ManagedObject &object)
    {
        const auto *priority = model::as<model::Priorities>(&object);
        return priority ? std::to_string(priority->priority()) : std::string(object.text("title"));
    }

    ObjectContext &m_context;
    std::string_view m_side;
    std::map<std::string, ManagedObject *> m_all;
};

/// What both computers have of a side before anything changes.
void furnish(ObjectContext &context, std::string_view side)
{
    Records records(context, side);
    for (const char *entity : {"Folders", "Contexts"}) {
        for (const char *title : {"kept", "to be renamed", "to be deleted"})
            records.make(entity, title);
    }
    for (int number = 0; number < tasksOfEach; ++number)
        records.makeTask("task " + std::to_string(number));
    records.task(0).addObject("tags", records.make("Tags", "tag")); // a tag travels with a task
    int number = 0;
    for (const char *title : {"kept", "to be renamed", "to be deleted"}) {
        records.task(number++).setRelated("folders", &records.get("Folders", title));
        records.task(number++).setRelated("contexts", &records.get("Contexts", title));
    }
}

/// Nine edits, eight new tasks, two that are thrown away, and three changes each to folders and contexts. Only, a
/// folder that is deleted at the service comes back from the other computers, so that there an edit takes its place.
void change(ObjectContext &context, std::string_view side)
{
    Records records(context, side);
    ManagedObject &newFolder = records.make("Folders", "new");
    ManagedObject &newContext = records.make("Contexts", "new");
    for (const char *entity : {"Folders", "Contexts"})
        records.get(entity, "to be renamed").setValue("title", records.titled("renamed"));
    records.get("Contexts", "to be deleted").setValue("markedForDeletion", true);
    if (side == here)
        records.get("Folders", "to be deleted").setValue("markedForDeletion", true);
    else
        records.task(4).setTitle(records.titled("another title, too"));

    records.task(6).setTitle(records.titled("another title"));
    records.task(7).setNotes("a note; a=b & 50 %\nin two lines");
    records.task(8).setStar(true);
    records.task(9).setDueDate(support::at("2026-12-24"));
    records.prioritise(records.task(10), "3");
    records.task(11).setComplete(true);
    records.task(11).setCompletedDate(support::at("2026-11-24"));
    records.task(12).addObject("tags", records.get("Tags", "tag"));
    records.task(13).setRelated("folders", &newFolder);
    records.task(14).setRelated("contexts", &records.get("Contexts", "kept"));
    for (const int number : {15, 16}) {
        records.task(number).setDeleteOnSync(true);
        records.task(number).setMarkedDeleted(true);
    }

    std::array<Tasks *, newTasks> made{};
    for (std::size_t number = 0; number < made.size(); ++number)
        made.at(number) = &records.makeTask("new task " + std::to_string(number));
    made[1]->setRelated("folders", &newFolder);
    made[2]->setRelated("contexts", &newContext);
    made[3]->addObject("tags", records.get("Tags", "tag"));
    made[4]->setNotes(std::string(2000, 'n'));
    made[5]->setStar(true);
    made[6]->setLength(30);
    made[7]->setDueDate(support::at("2026-12-31"));
}

/// Without what is in the Trash or to be deleted, which goes with the next run.
Picture lasting(Picture picture)
{
    std::erase_if(picture,
        [](const std::string &line) { return line.ends_with(" (in the Trash)") || line.ends_with("deleted)"); });
    return picture;
}

Picture difference(const Picture &one, const Picture &other)
{
    Picture rest;
    std::ranges::set_difference(one, other, std::inserter(rest, rest.end()));
    return rest;
}

void writePicture(const fs::path &file, const Picture &picture)
{
    std::ofstream stream(file, std::ios::binary);
    for (const std::string &line : picture)
        stream << line << '\0';
}

Picture readPicture(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    Picture picture;
    for (std::string line; std::getline(stream, line, '\0');)
        picture.insert(line);
    return picture;
}

void expectPicture(Notes &notes, const fs::path &folder, const Picture &found, const std::string &whose)
{
    const Picture with = readPicture(folder / pictureWith);
    if (found == with || (notes.savesAcknowledged == 0 && found == readPicture(folder / pictureWithout)))
        return;
    std::string text = whose + " is not what both sides have changed:";
    for (const std::string &line : difference(found, with))
        text += " [too much: " + line.substr(0, 100) + "]";
    for (const std::string &line : difference(with, found))
        text += " [missing: " + line.substr(0, 100) + "]";
    notes.problem(text.substr(0, 1500));
}

void expectCleanRun(Notes &notes, Computer &computer, const std::string &whose)
{
    const syncing::SyncOutcome outcome = computer.sync();
    if (outcome != syncing::SyncOutcome::Completed || !computer.told().empty())
        notes.problem(whose + " run without a fault did not complete: " + computer.told());
}

/// A bug of some tests: that something was on its way was never saved.
void forgetWhatWasSent(const fs::path &file)
{
    SQLite::Database database(file.string(), SQLite::OPEN_READWRITE);
    SQLite::Statement pages(database, "SELECT _key, notes FROM SyncLedgerEntry WHERE notes IS NOT NULL");
    while (pages.executeStep()) {
        syncing::LedgerBook book;
        const SQLite::Column bytes = pages.getColumn(1);
        book.addPage(pages.getColumn(0).getInt64(),
            {static_cast<const std::byte *>(bytes.getBlob()), static_cast<std::size_t>(bytes.getBytes())});
        std::vector<std::int64_t> records;
        book.forEach([&records](std::int64_t record, const syncing::LedgerNote &note) {
            if (note.sent)
                records.push_back(record);
        });
        for (const std::int64_t record : records)
            book.edit(record).sent.reset();
        book.writeChangedPages([&database](const std::int64_t &key, const objectstore::Bytes &changed) {
            SQLite::Statement write(database, "UPDATE SyncLedgerEntry SET notes = ? WHERE _key = ?");
            write.bind(1, changed.data(), static_cast<int>(changed.size()));
            write.bind(2, key);
            write.exec();
        });
    }
}

} // namespace

void prepareSynchronisation(const Scenario &, const fs::path &folder)
{
    Notes notes;
    const fs::path place = folder.parent_path();
    const support::TemporaryFolder otherFolder;
    {
        ServiceInProcess service = serviceAt(place, timeBefore);
        Computer(place / newComputer, timeBefore, service, notes);
        Computer first(folder, timeBefore, service, notes);
        for (const std::string_view side : {here, there})
            furnish(first.context(), side);
        expectCleanRun(notes, first, "the first");
        Computer other(otherFolder.path(), timeBefore, service, notes);
        expectCleanRun(notes, other, "the other computer's first");
    }
    ServiceInProcess service = serviceAt(place, timeOfTheOther);
    Computer other(otherFolder.path(), timeOfTheOther, service, notes);
    const Picture before = other.picture();
    change(other.context(), there);
    const Picture changedThere = lasting(other.picture());
    expectCleanRun(notes, other, "the other computer's");
    writePicture(place / pictureWithout, changedThere);

    Computer first(folder, timeOfTheRun, service, notes);
    change(first.context(), here); // not saved
    const Picture changedHere = lasting(first.picture());
    Picture all = difference(changedThere, difference(before, changedHere));
    all.merge(difference(changedHere, before));
    writePicture(place / pictureWith, all);
    if (first.context().fetch({.entity = "Tasks", .predicate = {}, .sortDescriptors = {}}).value().empty()
        || notes.problems[0] != 0)
        throw std::runtime_error(std::string("not prepared: ") + notes.problems.data());
}

void writeSynchronisation(const Scenario &, const fs::path &folder, Notes &notes)
{
    ServiceInProcess service = serviceAt(folder.parent_path(), timeOfTheRun);
    Computer computer(folder, timeOfTheRun, service, notes);
    try {
        change(computer.context(), here);
    } catch (const NotFetched &failure) {
        expectSentence(notes, failure.error);
        lift(notes);
        change(computer.context(), here);
    }
    notes.savesTried = 1;
    const auto saved = computer.save();
    if (saved)
        notes.savesAcknowledged = 1;
    else
        expectSentence(notes, saved.error());

    const syncing::SyncOutcome outcome = computer.sync();
    const bool isTold = !computer.told().empty();
    lift(notes);
    if (outcome != syncing::SyncOutcome::Completed && !isTold)
        notes.problem("a run did not complete and did not tell");
    if (const auto again = computer.save(); !again)
        notes.problem("not saved once the fault was gone: " + again.error().message + again.error().detail);
    notes.savesAcknowledged = 1;
    if (outcome == syncing::SyncOutcome::Completed && !isTold)
        expectPicture(notes, folder.parent_path(), computer.picture(), "after a run that told nothing, the store");
}

void relaunchSynchronised(const Scenario &, const fs::path &folder, Notes &notes)
{
    const fs::path place = folder.parent_path();
    const fs::path file = folder / model::TaskStore::fileName;
    if (isPlanted("sends-forgotten"))
        forgetWhatWasSent(file);
    ServiceInProcess service = serviceAt(place, timeOfTheNext);
    const int failed = notes.savesFailed;
    {
        Computer computer(folder, timeOfTheNext, service, notes);
        if (notes.savesFailed > failed)
            notes.problem("errors were shown at launch");
        expectCleanRun(notes, computer, "the next");
        lift(notes); // which ends a second kill, where one was planned
        expectPicture(notes, place, computer.picture(), "after the next run, the store");
    }
    for (auto &problems : {storeProblems(file, model::objectModel()), defaultRecordProblems(file)}) {
        for (const std::string &problem : problems)
            notes.problem(problem);
    }
    if (const auto twice = column(file, "SELECT taskID FROM Tasks WHERE taskID > 0 GROUP BY 1 HAVING count(*) > 1");
        !twice.empty())
        notes.problem("two tasks have the service's id " + twice.front());
    Computer observer(place / newComputer, timeOfTheNext, service, notes);
    expectCleanRun(notes, observer, "a new computer's");
    expectPicture(notes, place, observer.picture(), "what the service has");
}

} // namespace faults
