// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_choices.h"

#include "app/text.h"
#include "objectstore/object_context.h"
#include "viewcontrollers/task_cells.h"

namespace viewcontrollers {

using app::toQString;
using objectstore::ManagedObject;

namespace {

struct ChoiceKind {
    TaskColumn column;
    const char *entity;
    const char *predicate;
    const char *sortKey;
    bool isText;
};

constexpr std::array<ChoiceKind, 4> choiceKinds{{
    {TaskColumn::Folder, "Folders", "markedForDeletion=NO && archived=NO", "title", true},
    {TaskColumn::Context, "Contexts", "markedForDeletion=NO", "title", true},
    {TaskColumn::State, "States", "TRUEPREDICATE", "stateID", false},
    {TaskColumn::Priority, "Priorities", "TRUEPREDICATE", "priority", false},
}};

QString textOf(const ManagedObject &record, TaskColumn column)
{
    if (column == TaskColumn::Priority)
        return priorityText(record.integer("priority"));
    return recordTitle(column, record.text(column == TaskColumn::State ? "state" : "title"));
}

} // namespace

std::vector<Choice> choices(const model::DataUtilities &records, TaskColumn column)
{
    const auto kind = std::find_if(
        choiceKinds.begin(), choiceKinds.end(), [column](const ChoiceKind &known) { return known.column == column; });
    if (kind == choiceKinds.end())
        return {};
    const auto found = records.moc().fetch({
        .entity = kind->entity,
        .predicate = objectstore::Predicate::format(kind->predicate),
        .sortDescriptors = {{.key = kind->sortKey, .ascending = true, .localized = kind->isText}},
    });
    if (!found) {
        records.presentError(found.error());
        return {};
    }
    std::vector<Choice> list;
    for (const ManagedObject *record : *found)
        list.push_back({textOf(*record, column), toQString(records.moc().uri(*record))});
    return list;
}

std::vector<ManagedObject *> tagsWithTitles(const model::DataUtilities &records, const QStringList &titles)
{
    const auto known = records.getTags().value_or(std::map<std::string, model::Tags *, std::less<>>());
    std::vector<ManagedObject *> tags;
    for (const QString &title : titles) {
        const std::string name = app::toUtf8(title);
        const auto found = known.find(name);
        if (found != known.end()) {
            tags.push_back(found->second);
        } else {
            auto &made = model::insert<model::Tags>(records.moc());
            made.setTitle(name);
            tags.push_back(&made);
        }
    }
    return tags;
}

} // namespace viewcontrollers
