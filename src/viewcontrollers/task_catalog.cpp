// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_catalog.h"

#include "foundation/log.h"
#include "model/task_queries.h"
#include "objectstore/object_context.h"
#include "objectstore/predicate_evaluator.h"
#include "objectstore/text_folding.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <numeric>

namespace viewcontrollers {

using namespace std::chrono_literals;
using objectstore::ManagedObject;
using objectstore::ObjectID;
using objectstore::ValueView;

namespace {

constexpr auto readingDelay = 500ms; // the start, or more of the same changes, go first
constexpr std::size_t mostChanged = 200; // tasks; beyond, asking each of them is felt
constexpr objectstore::TextOptions anyCase{.foldCase = true, .foldMarks = false};

} // namespace

/// The title and the notes of each task, folded, with a zero after each.
struct TaskCatalog::Contents {
    struct Entry {
        std::int64_t key = 0;
        std::uint32_t rank = 0; ///< by title; the same where the order makes no difference
        std::uint32_t begin = 0; ///< of its words
    };

    /// The entry of a task, sought from `from` on where tasks are asked for in the order of their keys; null for none.
    [[nodiscard]] const Entry *entry(std::int64_t key, std::size_t &from) const
    {
        std::size_t end = entries.size();
        if (from < end && entries[from].key <= key) {
            for (std::size_t step = 1; from + step < entries.size(); step *= 2) {
                if (entries[from + step].key > key) {
                    end = from + step;
                    break;
                }
            }
        } else {
            from = 0;
        }
        const auto found = std::lower_bound(entries.begin() + static_cast<std::ptrdiff_t>(from),
            entries.begin() + static_cast<std::ptrdiff_t>(end), key,
            [](const Entry &entry, std::int64_t wanted) { return entry.key < wanted; });
        from = static_cast<std::size_t>(found - entries.begin());
        return found != entries.end() && found->key == key ? &*found : nullptr;
    }

    std::vector<Entry> entries; ///< by key
    std::string words;
};

TaskCatalog::TaskCatalog(app::TMApplicationDelegate &delegate, std::int64_t fewTasks)
    : m_delegate(delegate)
    , m_moc(delegate.managedObjectContext())
    , m_entity(*m_moc.store().model().entity(model::Tasks::entityName))
    , m_fewTasks(fewTasks)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(readingDelay);
    connect(&m_timer, &QTimer::timeout, this, &TaskCatalog::refresh);
    connect(&m_delegate, &app::TMApplicationDelegate::objectsDidChange, this, &TaskCatalog::follow);
    connect(&m_delegate, &app::TMApplicationDelegate::storeDidChangeElsewhere, this, &TaskCatalog::forget);
    m_timer.start();
}

TaskCatalog::~TaskCatalog() = default;

std::shared_ptr<const TaskCatalog::Contents> TaskCatalog::read(objectstore::Store &store)
{
    objectstore::ObjectContext moc(store, objectstore::MergePolicy::Rollback);
    const objectstore::TextOrder order;
    auto contents = std::make_shared<Contents>();
    std::vector<QCollatorSortKey> titles;
    std::string folded;
    const auto addWords = [&](const ValueView &text) {
        contents->words += objectstore::foldInto(folded, objectstore::toText(text), anyCase);
        contents->words += '\0';
    };
    const auto read = moc.fetchValues(
        model::everyTask(), {"title", "notes"}, [&](const ObjectID &task, std::span<const ValueView> values) {
            contents->entries.push_back(
                {.key = task.key, .rank = 0, .begin = static_cast<std::uint32_t>(contents->words.size())});
            titles.push_back(order.key(objectstore::toText(values[0])));
            addWords(values[0]);
            addWords(values[1]);
        });
    if (!read) {
        foundation::logLine("The tasks could not be read ahead: " + read.error().message);
        return nullptr;
    }
    if (contents->words.size() > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    std::vector<std::size_t> places(titles.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::sort(
        places.begin(), places.end(), [&](std::size_t a, std::size_t b) { return titles[a].compare(titles[b]) < 0; });
    std::uint32_t rank = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (i > 0 && titles[places[i - 1]].compare(titles[places[i]]) != 0)
            ++rank;
        contents->entries[places[i]].rank = rank;
    }
    return contents;
}

void TaskCatalog::refresh()
{
    if (m_isReading)
        return; // and looks again when that is done
    m_moc.processPendingChanges(); // so that what is changed by now is known here
    Keys unsaved = m_changed; // is not read
    std::erase_if(unsaved, [this](std::int64_t key) { return !m_moc.object({&m_entity, key})->hasChanges(); });
    if (!isReady())
        m_changed = unsaved;
    if (unsaved.size() > mostChanged || m_moc.count(model::everyTask()).value_or(0) < m_fewTasks)
        return;
    m_changedSinceReading = std::move(unsaved);
    m_isReading = true;
    m_isOutOfDate = false;
    m_thread = std::jthread([this, &store = m_moc.store()] {
        auto contents = read(store);
        QMetaObject::invokeMethod(
            this, [this, contents = std::move(contents)] { take(contents); }, Qt::QueuedConnection);
    });
}

void TaskCatalog::take(std::shared_ptr<const Contents> contents)
{
    m_isReading = false;
    if (!m_isOutOfDate) {
        m_contents = std::move(contents);
        m_changed = std::exchange(m_changedSinceReading, {});
    }
    if (m_isOutOfDate || m_changed.size() > mostChanged)
        m_timer.start();
}

void TaskCatalog::follow(const objectstore::ObjectsChange &change)
{
    for (const auto *objects : {&change.inserted, &change.updated, &change.deleted}) {
        for (const ManagedObject *object : *objects) {
            if (&object->entity() != &m_entity)
                continue;
            m_changed.insert(object->objectID().key);
            if (m_isReading)
                m_changedSinceReading.insert(object->objectID().key);
        }
    }
    if (m_changed.size() > mostChanged && !m_timer.isActive())
        m_timer.start();
}

/// Others deleted tasks perhaps, which is announced only of those that are here.
void TaskCatalog::forget()
{
    m_contents.reset();
    m_isOutOfDate = m_isReading;
    m_timer.start();
}

std::optional<TaskCatalog::Records> TaskCatalog::arranged(std::vector<ObjectID> tasks, Qt::SortOrder order) const
{
    if (!isReady() || m_changed.size() > mostChanged)
        return std::nullopt;
    struct Place {
        std::uint32_t rank;
        ObjectID id;
    };
    std::vector<Place> places;
    std::vector<ObjectID> others;
    places.reserve(tasks.size());
    std::size_t from = 0;
    for (const ObjectID &id : tasks) {
        const Contents::Entry *entry = m_changed.contains(id.key) ? nullptr : m_contents->entry(id.key, from);
        if (entry)
            places.push_back({entry->rank, id});
        else
            others.push_back(id);
    }
    if (others.size() > mostChanged)
        return std::nullopt;
    const bool isDescending = order == Qt::DescendingOrder;
    std::sort(places.begin(), places.end(), [isDescending](const Place &a, const Place &b) {
        if (a.rank != b.rank)
            return isDescending ? a.rank > b.rank : a.rank < b.rank;
        return a.id.key < b.id.key;
    });
    std::transform(places.begin(), places.end(), tasks.begin(), [](const Place &place) { return place.id; });
    tasks.resize(places.size());
    Records records = m_moc.objects(tasks);
    for (ManagedObject *task : m_moc.objects(others))
        putInPlace(records, *task, order);
    return records;
}

void TaskCatalog::putInPlace(Records &records, ManagedObject &task, Qt::SortOrder order) const
{
    const auto place = std::upper_bound(
        records.begin(), records.end(), &task, [&](const ManagedObject *added, const ManagedObject *other) {
            const int difference = m_textOrder.compare(added->text("title"), other->text("title"));
            if (difference != 0)
                return order == Qt::DescendingOrder ? difference > 0 : difference < 0;
            return added->objectID().key < other->objectID().key;
        });
    records.insert(place, &task);
}

std::optional<std::vector<ObjectID>> TaskCatalog::containing(std::string_view text) const
{
    m_moc.processPendingChanges();
    if (!isReady() || m_changed.size() > mostChanged)
        return std::nullopt;
    const std::string wanted = objectstore::folded(text, anyCase);
    const std::string_view words = m_contents->words;
    const auto &entries = m_contents->entries;
    std::vector<ObjectID> found;
    std::size_t entry = 0;
    std::size_t place = words.find(wanted);
    while (place != std::string_view::npos && entry < entries.size()) {
        while (entry + 1 < entries.size() && entries[entry + 1].begin <= place)
            ++entry;
        if (!m_changed.contains(entries[entry].key))
            found.push_back({&m_entity, entries[entry].key});
        if (++entry < entries.size())
            place = words.find(wanted, entries[entry].begin);
    }
    const objectstore::PredicateEvaluator evaluator(model::tasksContaining(text).predicate, m_entity);
    for (const std::int64_t key : m_changed) {
        const ManagedObject *task = m_moc.existingObject({&m_entity, key});
        if (task && evaluator.matches(*task))
            found.push_back(task->objectID());
    }
    return found;
}

} // namespace viewcontrollers
