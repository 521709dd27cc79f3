// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_cells.h"

#include "app/text.h"
#include "objectstore/object_context.h"

#include <QLocale>
#include <cmath>

namespace viewcontrollers {

using app::toQString;
using foundation::Instant;
using objectstore::ManagedObject;

namespace {

[[maybe_unused]] constexpr const char *defaultTitles[] = {
    QT_TRANSLATE_NOOP("DefaultRecords", "Inbox"),
    QT_TRANSLATE_NOOP("DefaultRecords", "None"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Next Action"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Active"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Planning"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Delegated"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Waiting"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Hold"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Postponed"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Someday"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Cancelled"),
    QT_TRANSLATE_NOOP("DefaultRecords", "Reference"),
};

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TaskTable)
};

constexpr std::array<const char *, 7> priorityNames{
    QT_TRANSLATE_NOOP("TaskTable", "Negative"),
    QT_TRANSLATE_NOOP("TaskTable", "Low"),
    QT_TRANSLATE_NOOP("TaskTable", "Medium"),
    QT_TRANSLATE_NOOP("TaskTable", "High"),
    QT_TRANSLATE_NOOP("TaskTable", "Top"),
    nullptr,
    nullptr,
};

/// A to-one relationship of a task that a column shows: the record at the other end and its title.
struct Link {
    TaskColumn column;
    const char *relationship;
    const char *title;
};

constexpr std::array<Link, 4> links{{
    {TaskColumn::Folder, "folders", "title"},
    {TaskColumn::Context, "contexts", "title"},
    {TaskColumn::State, "states", "state"},
    {TaskColumn::Priority, "priorities", "priority"},
}};

const Link *linkOf(TaskColumn column)
{
    const auto found
        = std::find_if(links.begin(), links.end(), [column](const Link &link) { return link.column == column; });
    return found == links.end() ? nullptr : found;
}

std::string attribute(TaskColumn column)
{
    return std::string(describe(column).sortKey);
}

bool isMidnight(const QDateTime &when)
{
    return when.time() == QTime(0, 0);
}

} // namespace

QDateTime toDateTime(Instant instant)
{
    return QDateTime::fromMSecsSinceEpoch(std::llround(instant.seconds * 1000));
}

Instant toInstant(const QDateTime &dateTime)
{
    return {static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000};
}

QString nearDate(std::optional<Instant> date, Instant now)
{
    if (!date)
        return {};
    const QLocale locale;
    const QDateTime when = toDateTime(*date);
    const QDate today = toDateTime(now).date();
    const auto days = today.daysTo(when.date());
    QString day;
    if (days == 0)
        day = Texts::tr("Today");
    else if (days == 1)
        day = Texts::tr("Tomorrow");
    else if (days == -1)
        day = Texts::tr("Yesterday");
    else if (days > 1 && days < 7)
        day = locale.dayName(when.date().dayOfWeek(), QLocale::ShortFormat);
    else if (when.date().year() == today.year())
        day = locale.toString(when.date(), Texts::tr("d MMM", "a day of this year"));
    else
        day = locale.toString(when.date(), Texts::tr("d MMM yyyy", "a day of another year"));
    if (isMidnight(when))
        return day;
    return Texts::tr("%1 %2", "day, time").arg(day, timeText(when.time()));
}

QString timeText(QTime time)
{
    const QLocale locale;
    if (locale.language() == QLocale::C) // which would show seconds
        return time.toString(QStringLiteral("HH:mm"));
    return locale.toString(time, QLocale::ShortFormat);
}

QString lengthText(std::int64_t minutes)
{
    if (minutes <= 0)
        return {};
    const auto hours = minutes / 60;
    const auto rest = minutes % 60;
    if (hours == 0)
        return Texts::tr("%1 min").arg(rest);
    return rest == 0 ? Texts::tr("%1 h").arg(hours) : Texts::tr("%1 h %2 min").arg(hours).arg(rest);
}

QString priorityText(std::int64_t priority)
{
    const auto place = static_cast<std::size_t>(priority + 1);
    const char *name = place < priorityNames.size() ? priorityNames[place] : nullptr;
    if (!name)
        return QString::number(priority);
    return Texts::tr("%1 – %2", "priority: number, name").arg(priority).arg(Texts::tr(name));
}

QString recordTitle(TaskColumn kind, std::string_view title)
{
    const bool isInEveryStore = kind == TaskColumn::State || (kind == TaskColumn::Folder && title == "Inbox")
        || (kind == TaskColumn::Context && title == "None");
    return isInEveryStore && !title.empty() ? app::translated("DefaultRecords", title) : toQString(title);
}

QString cellText(const model::Tasks &task, TaskColumn column, Instant now)
{
    if (const Link *link = linkOf(column)) {
        const ManagedObject *target = task.related(link->relationship);
        if (!target)
            return {};
        return column == TaskColumn::Priority ? priorityText(target->integer(link->title))
                                              : recordTitle(column, target->text(link->title));
    }
    switch (column) {
    case TaskColumn::Title:
        return toQString(task.title());
    case TaskColumn::Length:
        return lengthText(task.length());
    case TaskColumn::StartDate:
    case TaskColumn::DueDate:
    case TaskColumn::CreationDate:
    case TaskColumn::ModifiedDate:
        return nearDate(task.date(attribute(column)), now);
    default:
        return {}; // the star and the location are drawn
    }
}

QVariant cellValue(const model::Tasks &task, TaskColumn column)
{
    if (const Link *link = linkOf(column)) {
        const ManagedObject *target = task.related(link->relationship);
        return target ? QVariant(toQString(task.context().uri(*target))) : QVariant();
    }
    switch (column) {
    case TaskColumn::Title:
        return toQString(task.title());
    case TaskColumn::Star:
        return task.star();
    case TaskColumn::CurrentLocation:
        return task.isCurrentLocation();
    case TaskColumn::Length:
        return static_cast<qlonglong>(task.length());
    default: {
        const auto date = task.date(attribute(column));
        return date ? QVariant(toDateTime(*date)) : QVariant();
    }
    }
}

bool setCellValue(model::Tasks &task, TaskColumn column, const QVariant &value)
{
    if (const Link *link = linkOf(column)) {
        ManagedObject *target = task.context().objectWithURI(app::toUtf8(value.toString()));
        if (target)
            task.setRelated(link->relationship, target);
        return target != nullptr;
    }
    switch (column) {
    case TaskColumn::Title:
        task.setTitle(app::toUtf8(value.toString()));
        return true;
    case TaskColumn::Star:
        task.setStar(value.toBool());
        return true;
    case TaskColumn::Length:
        task.setLength(value.toLongLong());
        return true;
    case TaskColumn::StartDate:
    case TaskColumn::DueDate:
        task.setDate(attribute(column), value.isNull() ? std::nullopt : std::optional(toInstant(value.toDateTime())));
        return true;
    default:
        return false;
    }
}

bool isEditable(TaskColumn column)
{
    return column != TaskColumn::CreationDate && column != TaskColumn::ModifiedDate
        && column != TaskColumn::CurrentLocation && column != TaskColumn::Star;
}

void setComplete(model::Tasks &task, bool complete, Instant now)
{
    task.setComplete(complete);
    task.setCompletedDate(complete ? std::optional(now) : std::nullopt);
}

bool isOverdue(const model::Tasks &task, Instant now)
{
    const auto due = task.dueDate();
    if (!due || task.complete())
        return false;
    const bool wholeDay = isMidnight(toDateTime(*due));
    return wholeDay ? *due < foundation::startOfLocalDay(now) : *due < now;
}

} // namespace viewcontrollers
