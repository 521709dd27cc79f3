// SPDX-License-Identifier: GPL-3.0-or-later
// The object store against the SQLite C API with prepared statements and plain structs, over the same file.
#include "generator.h"
#include "measure.h"
#include "objectstore/predicate_evaluator.h"

#include <cstdio>
#include <cstdlib>
#include <sqlite3.h>
#include <stdexcept>

namespace {

using namespace objectstore;

/// A task as a program without an object store would hold it.
struct PlainTask {
    std::int64_t key = 0;
    std::string title;
    std::string notes;
    std::string repeatAdvanced;
    std::string imageFile;
    double startDate = 0;
    double dueDate = 0;
    double completedDate = 0;
    double creationDate = 0;
    double modifiedDate = 0;
    std::array<std::int64_t, 19> numbers{};
    std::array<bool, 10> flags{};
};

struct RawDatabase {
    explicit RawDatabase(const std::filesystem::path &file)
    {
        if (sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK)
            throw std::runtime_error("raw open");
        execute("PRAGMA synchronous=FULL; PRAGMA cache_size=-8000"); // as the store has it
    }
    RawDatabase(const RawDatabase &) = delete;
    RawDatabase &operator=(const RawDatabase &) = delete;
    ~RawDatabase() { sqlite3_close(handle); }
    void execute(const char *sql) const
    {
        if (sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(handle));
    }
    [[nodiscard]] sqlite3_stmt *prepare(const std::string &sql) const
    {
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(handle));
        return statement;
    }
    sqlite3 *handle = nullptr;
};

/// What each column of the task's table goes to: the texts, the dates, or the rest.
struct PlainReader {
    explicit PlainReader(const EntityDescription &tasks)
    {
        for (const Property *column : tasks.columns()) {
            sql += ", \"" + column->name + "\"";
            kinds.push_back(column->isAttribute() ? column->type : AttributeType::Integer);
        }
        sql = "SELECT _key" + sql + " FROM Tasks";
    }
    void read(sqlite3_stmt *statement, PlainTask &task) const
    {
        std::array<std::string *, 4> texts{&task.title, &task.notes, &task.repeatAdvanced, &task.imageFile};
        std::array<double *, 5> dates{
            &task.startDate, &task.dueDate, &task.completedDate, &task.creationDate, &task.modifiedDate};
        std::size_t text = 0;
        std::size_t date = 0;
        std::size_t number = 0;
        std::size_t flag = 0;
        task.key = sqlite3_column_int64(statement, 0);
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const int column = static_cast<int>(i) + 1;
            if (kinds[i] == AttributeType::Text) {
                if (const unsigned char *bytes = sqlite3_column_text(statement, column))
                    texts[text]->assign(reinterpret_cast<const char *>(bytes),
                        static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
                ++text;
            } else if (kinds[i] == AttributeType::Date) {
                *dates[date++] = sqlite3_column_double(statement, column);
            } else if (kinds[i] == AttributeType::Boolean) {
                task.flags[flag++] = sqlite3_column_int(statement, column) != 0;
            } else {
                task.numbers[number++] = sqlite3_column_int64(statement, column);
            }
        }
    }
    std::string sql;
    std::vector<AttributeType> kinds;
};

std::vector<PlainTask> readPlain(const RawDatabase &raw, const PlainReader &reader)
{
    std::vector<PlainTask> tasks;
    sqlite3_stmt *statement = raw.prepare(reader.sql + " ORDER BY _key");
    while (sqlite3_step(statement) == SQLITE_ROW)
        reader.read(statement, tasks.emplace_back());
    sqlite3_finalize(statement);
    return tasks;
}

template <typename T> T value(Result<T> result)
{
    if (!result)
        throw std::runtime_error(result.error().message + " " + result.error().detail);
    return std::move(*result);
}

std::vector<ManagedObject *> fetch(ObjectContext &context, const char *entity)
{
    return value(context.fetch({.entity = entity, .predicate = {}}));
}

void reading(Store &store, const RawDatabase &raw, const PlainReader &reader)
{
    const auto times = bench::alternate(
        7,
        [&] {
            ObjectContext context(store, MergePolicy::Rollback);
            (void)fetch(context, "Tasks");
        },
        [&] { (void)readPlain(raw, reader); });
    bench::printRatio("fetch all tasks, every attribute readable", times.ours * 1000, times.raw * 1000, "ms", 1.3);

    double before = bench::heapInUse();
    double plain = 0;
    {
        auto tasks = readPlain(raw, reader);
        tasks.shrink_to_fit();
        plain = bench::heapInUse() - before;
    }
    before = bench::heapInUse();
    ObjectContext context(store, MergePolicy::Rollback);
    const auto found = fetch(context, "Tasks");
    bench::printRatio("memory of that", (bench::heapInUse() - before) / 1048576, plain / 1048576, "MB", 1.3);
}

void counting(Store &store, const RawDatabase &raw)
{
    ObjectContext context(store, MergePolicy::Rollback);
    const auto folders = fetch(context, "Folders");
    std::int64_t ours = 0;
    std::int64_t theirs = 0;
    sqlite3_stmt *statement
        = raw.prepare("SELECT count(*) FROM Tasks WHERE folders = ? AND complete = 0 AND deleteOnSync = 0");
    const auto times = bench::alternate(
        15,
        [&] {
            ours = 0;
            for (const ManagedObject *folder : folders) {
                const Predicate open = Predicate::format(
                    "folders==%@ && (complete==NO) && (deleteOnSync==NO)", {Value(folder->objectID())});
                ours += value(context.count({.entity = "Tasks", .predicate = open}));
            }
        },
        [&] {
            theirs = 0;
            for (const ManagedObject *folder : folders) {
                sqlite3_bind_int64(statement, 1, folder->objectID().key);
                sqlite3_step(statement);
                theirs += sqlite3_column_int64(statement, 0);
                sqlite3_reset(statement);
            }
        });
    sqlite3_finalize(statement);
    if (ours != theirs)
        throw std::runtime_error("the counts differ");
    bench::printRatio("count of open tasks, one folder after another", times.ours * 1000, times.raw * 1000, "ms", 1.5);
}

void evaluating(Store &store)
{
    ObjectContext context(store, MergePolicy::Rollback);
    const auto tasks = fetch(context, "Tasks");
    const auto over = [&](const Predicate &predicate) {
        const PredicateEvaluator evaluator(predicate, *store.model().entity("Tasks"));
        std::size_t found = 0;
        const double time = bench::median(15, [&] { found = evaluator.matching(tasks).size(); });
        const auto counted = value(context.count({.entity = "Tasks", .predicate = predicate}));
        if (static_cast<std::int64_t>(found) != counted)
            throw std::runtime_error("the evaluators disagree");
        return time * 1000;
    };
    const Value now = store.clock().now();
    bench::printFigure("a predicate of four conditions in memory, all tasks",
        over(Predicate::format(
            "(startDate <= %@ || dueDate <= %@) && (complete==NO) && (deleteOnSync==NO)", {now, now})),
        "ms", "<= 1.5 ms");
    const Value text = std::string("PIANO bicycle");
    bench::printFigure("text search in memory, all tasks",
        over(Predicate::format("(title contains [c] %@) OR (notes contains [c] %@)", {text, text})), "ms", "<= 20 ms");
}

void changing(Store &store, const RawDatabase &raw)
{
    ObjectContext context(store, MergePolicy::Rollback);
    const auto tasks = fetch(context, "Tasks");
    sqlite3_stmt *update = raw.prepare("UPDATE Tasks SET star = ? WHERE _key = ?");
    const auto rawChange = [&](std::size_t from, std::size_t number, std::int64_t star) {
        raw.execute("BEGIN IMMEDIATE");
        for (std::size_t i = from; i < from + number; ++i) {
            sqlite3_bind_int64(update, 1, star);
            sqlite3_bind_int64(update, 2, tasks[i]->objectID().key);
            if (sqlite3_step(update) != SQLITE_DONE || sqlite3_changes(raw.handle) != 1)
                throw std::runtime_error(sqlite3_errmsg(raw.handle));
            sqlite3_reset(update);
        }
        raw.execute("COMMIT");
    };
    const auto change = [&](std::size_t from, std::size_t number) {
        for (std::size_t i = from; i < from + number; ++i)
            tasks[i]->setValue("star", !tasks[i]->boolean("star"));
        value(context.save());
    };
    // The save that fills the log writes it back into the file. With a log left over by one side, it would always be
    // the other that does this for both.
    const auto emptyLog = [&] { raw.execute("PRAGMA wal_checkpoint(RESTART)"); };
    std::size_t place = 0;
    std::int64_t star = 0;
    constexpr std::size_t inARow = 20; // a user's saves follow each other; a page read anew is not part of each
    // the raw side writes the other half, so that neither finds its rows changed
    for (const bool clock : {true, false}) {
        const bench::Measure measure = clock ? bench::secondsFor : bench::processorSecondsFor;
        const std::string suffix = clock ? "" : ", processor";
        const auto one = bench::alternate(
            51,
            [&] {
                for (std::size_t i = 0; i < inARow; ++i)
                    change(place++, 1);
            },
            [&] {
                for (std::size_t i = 0; i < inARow; ++i)
                    rawChange(tasks.size() - 1 - i, 1, ++star);
            },
            measure, emptyLog);
        bench::printRatio(
            "change one attribute and save" + suffix, one.ours * 1000 / inARow, one.raw * 1000 / inARow, "ms", 1.5);
        const auto many = bench::alternate(
            9, [&] { change(0, 10000); }, [&] { rawChange(tasks.size() - 10000, 10000, ++star); }, measure, emptyLog);
        bench::printRatio("change 10,000 objects and save" + suffix, many.ours * 1000, many.raw * 1000, "ms", 1.6);
    }
    sqlite3_finalize(update);
}

} // namespace

int main(int count, char **arguments)
{
    try {
        bench::Amount amount;
        if (count > 1)
            amount.tasks = std::max(std::atoi(arguments[1]), 20500);
        const bench::Workplace workplace;
        const auto made = bench::generate(workplace.path(), amount);
        Store &store = made->store();
        const RawDatabase raw(store.file());
        const PlainReader reader(*store.model().entity("Tasks"));
        bench::printHeader("object store, " + std::to_string(amount.tasks) + " tasks");
        const std::string part = count > 2 ? arguments[2] : "";
        if (part.empty() || part == "reading")
            reading(store, raw, reader);
        if (part.empty() || part == "counting")
            counting(store, raw);
        if (part.empty() || part == "evaluating")
            evaluating(store);
        if (part.empty() || part == "changing")
            changing(store, raw);
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
