// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/criterion_choices.h"

#include "app/text.h"
#include "objectstore/object_context.h"
#include "viewcontrollers/task_cells.h"
#include "viewcontrollers/value_transformers.h"

#include <algorithm>
#include <array>

namespace viewcontrollers {

using objectstore::ManagedObject;

namespace {

struct ChoiceSource {
    Criterion criterion;
    const char *entity;
    const char *attribute;
    const char *sortKey;
    bool isText;
};

constexpr std::array<ChoiceSource, 5> sources{{
    {Criterion::Tags, "Tags", "title", "title", true},
    {Criterion::Folder, "Folders", "title", "title", true},
    {Criterion::Context, "Contexts", "title", "title", true},
    {Criterion::State, "States", "state", "stateID", false},
    {Criterion::Priority, "Priorities", "priority", "priority", false},
}};

std::vector<Operand> reminders()
{
    std::vector<Operand> minutes;
    for (const QString &label : reminderLabels())
        minutes.emplace_back(reminderMinutes(label));
    std::erase(minutes, Operand(std::int64_t{0})); // which the tests "is set" and "is not set" ask for
    return minutes;
}

std::vector<Operand> storedValues(const model::DataUtilities &records, const ChoiceSource &source)
{
    const auto found = records.moc().fetch({
        .entity = source.entity,
        .predicate = {},
        .sortDescriptors = {{.key = source.sortKey, .ascending = true, .localized = source.isText}},
    });
    if (!found) {
        records.presentError(found.error());
        return {};
    }
    std::vector<Operand> values;
    for (const ManagedObject *record : *found) {
        const objectstore::ValueView value = record->value(source.attribute);
        if (objectstore::isNil(value))
            continue;
        Operand choice = source.criterion == Criterion::Priority ? Operand(objectstore::toInteger(value))
                                                                 : Operand(std::string(objectstore::toText(value)));
        if (std::find(values.begin(), values.end(), choice) == values.end())
            values.push_back(std::move(choice));
    }
    return values;
}

} // namespace

QString choiceText(Criterion criterion, const Operand &value)
{
    if (const auto *number = std::get_if<std::int64_t>(&value)) {
        if (criterion == Criterion::Priority)
            return priorityText(*number);
        for (const QString &label : reminderLabels()) {
            if (reminderMinutes(label) == *number)
                return label;
        }
        return QCoreApplication::translate("SmartFolderEditor", "%1 minutes").arg(*number);
    }
    const auto *text = std::get_if<std::string>(&value);
    return text && !text->empty() ? app::toQString(*text) : QCoreApplication::translate("SmartFolderEditor", "None");
}

std::vector<CriterionChoice> criterionChoices(const model::DataUtilities &records, Criterion criterion)
{
    const auto source = std::find_if(sources.begin(), sources.end(),
        [criterion](const ChoiceSource &known) { return known.criterion == criterion; });
    const std::vector<Operand> values = source == sources.end() ? reminders() : storedValues(records, *source);
    std::vector<CriterionChoice> choices;
    for (const Operand &value : values)
        choices.push_back({choiceText(criterion, value), value});
    return choices;
}

} // namespace viewcontrollers
