// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_catalog.h"

#include "model/task_queries.h"
#include "objectstore/object_context.h"
#include "objectstore/predicate_evaluator.h"
#include "objectstore/text_folding.h"

#include <algorithm>
#include <chrono>

namespace viewcontrollers {

using namespace std::chrono_literals;
using objectstore::ManagedObject;
using objectstore::ObjectID;

namespace {

constexpr auto readingDelay = 500ms; // the start, or more of the same changes, go first
constexpr std::size_t mostChanged = 200; // tasks; beyond, asking each of them is felt

} // namespace

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

std::shared_ptr<const TaskWords> TaskCatalog::words() const
{
    m_moc.processPendingChanges();
    return m_changed.size() > mostChanged ? nullptr : m_words;
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
        auto words = TaskWords::read(store);
        QMetaObject::invokeMethod(
            this, [this, words = std::move(words)] { take(words); }, Qt::QueuedConnection);
    });
}

void TaskCatalog::take(std::shared_ptr<const TaskWords> words)
{
    m_isReading = false;
    if (!m_isOutOfDate) {
        m_words = std::move(words);
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
    m_words.reset();
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
        const TaskWords::Entry *entry = m_changed.contains(id.key) ? nullptr : m_words->entry(id.key, from);
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

/// The title, in some case of its letters. To read it of the task itself would read many tasks from the store.
std::string_view TaskCatalog::titleOf(const ManagedObject &task) const
{
    std::size_t place = 0;
    const std::int64_t key = task.objectID().key;
    const bool isKnown = !m_changed.contains(key) && m_words->entry(key, place);
    return isKnown ? m_words->title(place) : task.text("title");
}

void TaskCatalog::putInPlace(Records &records, ManagedObject &task, Qt::SortOrder order) const
{
    const auto place = std::upper_bound(
        records.begin(), records.end(), &task, [&](const ManagedObject *added, const ManagedObject *other) {
            const int difference = m_textOrder.compare(titleOf(*added), titleOf(*other));
            if (difference != 0)
                return order == Qt::DescendingOrder ? difference > 0 : difference < 0;
            return added->objectID().key < other->objectID().key;
        });
    records.insert(place, &task);
}

std::optional<std::vector<ObjectID>> TaskCatalog::containing(std::string_view text) const
{
    const auto read = words();
    if (!read)
        return std::nullopt;
    const std::string wanted = objectstore::folded(text, TaskWords::folding);
    const auto &entries = read->entries();
    std::vector<ObjectID> found;
    for (std::size_t i = read->find(wanted, 0); i < entries.size(); i = read->find(wanted, i + 1)) {
        if (!m_changed.contains(entries[i].key))
            found.push_back({&m_entity, entries[i].key});
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
