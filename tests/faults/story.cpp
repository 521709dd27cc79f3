// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/story.h"

#include "faults/invariants.h"
#include "model/entities.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace faults {

namespace {

constexpr const char *counterTitle = "saves made";

std::string titleOf(int save, int task)
{
    return "task " + std::to_string(save) + "." + std::to_string(task);
}

std::string renamed(const std::string &title)
{
    return title + ", renamed";
}

model::ManagedObject *find(objectstore::ObjectContext &context, const std::string &entity, const std::string &title)
{
    auto found = context.fetch({.entity = entity,
        .predicate = objectstore::Predicate::format("title == %@", {objectstore::Value(title)}),
        .sortDescriptors = {}});
    if (!found)
        throw NotFetched(found.error());
    return found->empty() ? nullptr : found->front();
}

} // namespace

void Story::change(objectstore::ObjectContext &context, int number) const
{
    struct Wanted {
        std::string entity;
        std::string title;
        model::ManagedObject *object = nullptr;
    };
    // everything is looked up before anything is changed, so that a read that fails leaves nothing half done
    std::array<Wanted, 5> wanted{{{"Tasks", counterTitle}, {"Tags", "tag " + std::to_string(number % 3)},
        {"Folders", "folder " + std::to_string(number % 2)}, {"Tasks", titleOf(number - 1, 0)},
        {"Tasks", titleOf(number - 1, 1)}}};
    for (Wanted &each : wanted)
        each.object = find(context, each.entity, each.title);
    auto &[counter, tag, folder, removed, kept] = wanted;
    for (Wanted *needed : {&counter, &tag, &folder}) {
        if (needed->object)
            continue;
        needed->object = &context.insert(needed->entity);
        needed->object->setValue("title", needed->title);
    }
    counter.object->setValue("length", std::int64_t{number});
    model::ManagedObject *parent = nullptr;
    for (int task = 0; task < m_tasks[static_cast<std::size_t>(number - 1)]; ++task) {
        auto &made = model::insert<model::Tasks>(context);
        made.setTitle(titleOf(number, task));
        made.setNotes(std::string(static_cast<std::size_t>(task % 7) * 100, 'n'));
        made.setRelated("folders", folder.object);
        made.addObject("tags", *tag.object);
        made.setRelated("parent", parent); // the first, which the next save deletes
        parent = parent ? parent : &made;
    }
    if (removed.object)
        context.remove(*removed.object);
    if (kept.object)
        kept.object->setValue("title", renamed(kept.title));
}

std::vector<std::string> Story::titlesAfter(int saves) const
{
    std::vector<std::string> titles;
    for (int save = 1; save <= saves; ++save) {
        for (int task = 0; task < m_tasks[static_cast<std::size_t>(save - 1)]; ++task) {
            const std::string title = titleOf(save, task);
            const bool last = save == saves;
            if (last || task > 1)
                titles.push_back(title);
            else if (task == 1)
                titles.push_back(renamed(title));
        }
    }
    if (saves > 0)
        titles.emplace_back(counterTitle);
    std::sort(titles.begin(), titles.end());
    return titles;
}

int Story::savedIn(const std::filesystem::path &file, std::vector<std::string> &problems) const
{
    const auto titles = column(file, "SELECT title FROM Tasks");
    const auto counts = column(file, "SELECT length FROM Tasks WHERE title = 'saves made'");
    const int saved = counts.empty() ? 0 : std::stoi(counts.front());
    if (counts.size() > 1 || saved < 0 || saved > this->saves() || titles != titlesAfter(saved)) {
        problems.push_back("half a save: " + std::to_string(titles.size()) + " tasks, save " + std::to_string(saved)
            + " counted " + std::to_string(counts.size()) + " times");
        return -1;
    }
    return saved;
}

} // namespace faults
