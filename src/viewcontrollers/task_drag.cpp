// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_drag.h"

#include "app/text.h"
#include "objectstore/object_context.h"
#include "viewcontrollers/foreign_text.h"

#include <QMimeData>
#include <algorithm>
#include <set>

namespace viewcontrollers {

namespace {

/// Browsers offer a link as its address and its name, two lines in UTF-16.
const QString linkWithName = QStringLiteral("text/x-moz-url");
constexpr qsizetype longestTaskData = 32 * 1024 * 1024; // some 400,000 tasks
constexpr qsizetype longestURI = 1024;
constexpr qsizetype messagePrefix = 8; // the length of "message:"

} // namespace

QString taskDataType()
{
    return QStringLiteral("TaskDataType");
}

QMimeData *makeTaskData(const std::vector<const objectstore::ManagedObject *> &tasks)
{
    QByteArray uris;
    QStringList titles;
    for (const objectstore::ManagedObject *object : tasks) {
        uris.append(QByteArray::fromStdString(object->context().uri(*object))).append('\n');
        if (const auto *task = model::as<model::Tasks>(object))
            titles.append(app::toQString(task->title()));
    }
    auto *data = new QMimeData;
    data->setData(taskDataType(), uris);
    data->setText(titles.join(QLatin1Char('\n')));
    return data;
}

std::vector<model::Tasks *> tasksOf(const QMimeData &data, objectstore::ObjectContext &moc)
{
    const QByteArray dragged = data.data(taskDataType());
    if (dragged.size() > longestTaskData)
        return {};
    std::vector<model::Tasks *> tasks;
    std::set<const model::Tasks *> known;
    const QList<QByteArray> uris = dragged.split('\n');
    for (const QByteArray &uri : uris) {
        auto *task = uri.size() > longestURI ? nullptr : model::as<model::Tasks>(moc.objectWithURI(uri.toStdString()));
        if (task && known.insert(task).second)
            tasks.push_back(task);
    }
    return tasks;
}

QString createMessageLink(const QString &link)
{
    return link.size() < messagePrefix ? link : QString(link).insert(messagePrefix, QStringLiteral("//"));
}

QStringList textTypes()
{
    return {linkWithName, QStringLiteral("text/plain"), QStringLiteral("text/uri-list")};
}

bool offersText(const QMimeData &data)
{
    const QStringList types = textTypes();
    return std::ranges::any_of(types, [&data](const QString &type) { return data.hasFormat(type); });
}

std::optional<DroppedTask> droppedTask(const QMimeData &data)
{
    if (data.hasFormat(linkWithName)) {
        const QByteArray bytes = data.data(linkWithName);
        const QStringView text(reinterpret_cast<const QChar *>(bytes.constData()), bytes.size() / 2);
        const qsizetype end = text.indexOf(QLatin1Char('\n'));
        const ForeignText link = ForeignText::lines(end < 0 ? text : text.first(end));
        const QStringView rest = end < 0 ? QStringView() : text.sliced(end + 1);
        const qsizetype endOfName = rest.indexOf(QLatin1Char('\n'));
        const ForeignText name = ForeignText::line(endOfName < 0 ? rest : rest.first(endOfName));
        const bool isMessage = link.text.startsWith(QLatin1String("message:"));
        if (!name.text.isEmpty())
            return DroppedTask{
                name.text, isMessage ? createMessageLink(link.text) : link.text, name.isCut || link.isCut};
    }
    const ForeignText text = ForeignText::line(data.text());
    if (!text.text.isEmpty())
        return DroppedTask{text.text, {}, text.isCut};
    return std::nullopt;
}

} // namespace viewcontrollers
