// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/smart_folder.h"

#include "model/relative_date.h"
#include "objectstore/undo_manager.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace model {

using objectstore::Bytes;
using objectstore::ObjectsChange;
using objectstore::Predicate;

Predicate SmartFolder::defaultPredicate()
{
    return Predicate::format("title CONTAINS 'task'");
}

void SmartFolder::awakeFromInsert()
{
    setPredicate(std::nullopt);
}

std::optional<Predicate> SmartFolder::predicate() const
{
    const objectstore::ValueView data = value("predicateData");
    const auto *bytes = std::get_if<std::span<const std::byte>>(&data);
    auto read = objectstore::fromArchive(bytes ? *bytes : std::span<const std::byte>());
    if (!read || read->problemWith(*objectModel().entity(Tasks::entityName)))
        return std::nullopt;
    return std::move(*read);
}

void SmartFolder::setPredicate(const std::optional<Predicate> &predicate)
{
    Bytes data = objectstore::archive(predicate ? *predicate : defaultPredicate());
    const objectstore::ValueView old = value("predicateData");
    const auto *bytes = std::get_if<std::span<const std::byte>>(&old);
    if (bytes && std::ranges::equal(*bytes, data))
        return;
    setValue("predicateData", std::move(data));
    refresh();
}

objectstore::FetchRequest SmartFolder::fetchRequest() const
{
    return {.entity = std::string(Tasks::entityName),
        .predicate = predicate().value_or(Predicate()),
        .sortDescriptors = {}};
}

const std::vector<ManagedObject *> &SmartFolder::tasks(foundation::ErrorPresenter &presenter)
{
    context().processPendingChanges(); // so that a change since then is known
    if (m_tasks)
        return *m_tasks;
    auto found = context().fetch(fetchRequest());
    if (!found)
        presenter.presentError(found.error());
    m_tasks = found ? std::move(*found) : std::vector<ManagedObject *>();
    m_changes = context().onObjectsDidChange([this](const ObjectsChange &change) { follow(change); });
    return *m_tasks;
}

void SmartFolder::refresh()
{
    m_tasks.reset();
}

void SmartFolder::follow(const ObjectsChange &change)
{
    const std::array kinds{&change.updated, &change.inserted, &change.deleted};
    const auto isEmpty = [](const auto *objects) { return objects->empty(); };
    const auto concerns = [this](const auto *objects) {
        return std::ranges::any_of(
            *objects, [this](const ManagedObject *object) { return object == this || as<Tasks>(object) != nullptr; });
    };
    if (std::ranges::any_of(kinds, concerns) || std::ranges::all_of(kinds, isEmpty))
        refresh();
}

SmartFolder::Work SmartFolder::work(foundation::ErrorPresenter &presenter)
{
    const std::size_t count = tasks(presenter).size();
    return {count, static_cast<double>(static_cast<float>(count) / 3.0F), count >= 3 && count < 6};
}

std::string SmartFolder::summaryString(foundation::ErrorPresenter &presenter)
{
    const auto [count, days, isOneDay] = work(presenter);
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%zu tasks, %.2f day%s", count, days, isOneDay ? "" : "s");
    return text.data();
}

foundation::Result<void> renewSmartFolders(ObjectContext &moc, Instant now)
{
    const auto found
        = moc.fetch({.entity = std::string(SmartFolder::entityName), .predicate = Predicate(), .sortDescriptors = {}});
    if (!found)
        return foundation::Failure(found.error());
    moc.processPendingChanges();
    objectstore::UndoManager *undo = moc.undoManager();
    if (undo)
        undo->disableRegistration();
    for (ManagedObject *record : *found) {
        auto *folder = as<SmartFolder>(record);
        if (const auto predicate = folder->predicate())
            folder->setPredicate(withRelativeDatesAt(*predicate, now));
    }
    if (undo)
        undo->enableRegistration();
    return {};
}

} // namespace model
