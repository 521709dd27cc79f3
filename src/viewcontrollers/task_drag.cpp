// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_drag.h"

#include "app/text.h"
#include "objectstore/object_context.h"

#include <QMimeData>
#include <QUrl>

namespace viewcontrollers {

namespace {

/// Browsers offer a link as its address and its name, two lines in UTF-16.
const QString linkWithName = QStringLiteral("text/x-moz-url");
constexpr qsizetype messagePrefix = 8; // the length of "message:"

} // namespace

QString taskDataType()
{
    return QStringLiteral("TaskDataType");
}

QMimeData *makeTaskData(const std::vector<const objectstore::ManagedObject *> &tasks)
{
    QByteArray uris;
    for (const objectstore::ManagedObject *task : tasks)
        uris.append(QByteArray::fromStdString(task->context().uri(*task))).append('\n');
    auto *data = new QMimeData;
    data->setData(taskDataType(), uris);
    return data;
}

std::vector<model::Tasks *> tasksOf(const QMimeData &data, objectstore::ObjectContext &moc)
{
    std::vector<model::Tasks *> tasks;
    const QList<QByteArray> uris = data.data(taskDataType()).split('\n');
    for (const QByteArray &uri : uris) {
        if (auto *task = model::as<model::Tasks>(moc.objectWithURI(uri.toStdString())))
            tasks.push_back(task);
    }
    return tasks;
}

QString createMessageLink(const QString &link)
{
    return link.size() < messagePrefix ? link : QString(link).insert(messagePrefix, QStringLiteral("//"));
}

std::optional<DroppedTask> droppedTask(const QMimeData &data)
{
    if (data.hasFormat(linkWithName)) {
        const QByteArray bytes = data.data(linkWithName);
        const QString text(reinterpret_cast<const QChar *>(bytes.constData()), bytes.size() / 2);
        const QStringList lines = text.split(QLatin1Char('\n'));
        const bool isMessage = lines.first().startsWith(QLatin1String("message:"));
        if (lines.size() > 1 && !lines[1].simplified().isEmpty())
            return DroppedTask{lines[1].simplified(), isMessage ? createMessageLink(lines.first()) : lines.first()};
    }
    if (data.hasText() && !data.text().simplified().isEmpty())
        return DroppedTask{data.text().simplified(), {}};
    return std::nullopt;
}

} // namespace viewcontrollers
