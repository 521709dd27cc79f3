// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_drag.h"

#include "app/text.h"
#include "objectstore/object_context.h"
#include "viewcontrollers/foreign_text.h"

#include <QMimeData>
#include <QUrl>
#include <algorithm>
#include <set>

namespace viewcontrollers {

namespace {

/// Browsers offer a link as its address and its name, a line each: under the first name in UTF-16, under the second,
/// which is all that Qt shows of the two on X11, in UTF-8.
const QString link16 = QStringLiteral("text/x-moz-url");
const QString link8 = QStringLiteral("_NETSCAPE_URL");
constexpr qsizetype longestTaskData = 32 * 1024 * 1024; // some 400,000 tasks
constexpr qsizetype longestURI = 1024;
constexpr qsizetype messagePrefix = 8; // the length of "message:"

std::optional<DroppedTask> namedLink(QStringView text)
{
    const qsizetype end = text.indexOf(QLatin1Char('\n'));
    if (end < 0)
        return std::nullopt;
    const ForeignText link = ForeignText::lines(text.first(end));
    const QStringView rest = text.sliced(end + 1);
    const qsizetype endOfName = rest.indexOf(QLatin1Char('\n'));
    const ForeignText name = ForeignText::line(endOfName < 0 ? rest : rest.first(endOfName));
    if (name.text.isEmpty())
        return std::nullopt;
    const bool isMessage = link.text.startsWith(QLatin1String("message:"));
    return DroppedTask{name.text, isMessage ? createMessageLink(link.text) : link.text, name.isCut || link.isCut};
}

std::optional<DroppedTask> namedLink(const QMimeData &data)
{
    if (const QByteArray bytes = data.data(link16); !bytes.isEmpty())
        return namedLink(QStringView(reinterpret_cast<const QChar *>(bytes.constData()), bytes.size() / 2));
    return namedLink(QString::fromUtf8(data.data(link8)));
}

/// What file managers drag, and links without a name.
std::optional<DroppedTask> address(const QMimeData &data)
{
    const QList<QUrl> urls = data.urls();
    if (urls.isEmpty())
        return std::nullopt;
    const QUrl &url = urls.first();
    const ForeignText link = ForeignText::lines(QString::fromLatin1(url.toEncoded()));
    const ForeignText name = ForeignText::line(url.fileName());
    if (url.isLocalFile() && !name.text.isEmpty())
        return DroppedTask{name.text, link.text, name.isCut || link.isCut};
    const ForeignText title = ForeignText::line(url.toDisplayString());
    return title.text.isEmpty() ? std::nullopt : std::optional(DroppedTask{title.text, {}, title.isCut});
}

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
    return {link16, link8, QStringLiteral("text/uri-list"), QStringLiteral("text/plain")};
}

bool offersText(const QMimeData &data)
{
    const QStringList types = textTypes();
    return std::ranges::any_of(types, [&data](const QString &type) { return data.hasFormat(type); });
}

std::optional<DroppedTask> droppedTask(const QMimeData &data)
{
    if (auto link = namedLink(data))
        return link;
    if (auto link = address(data))
        return link;
    const ForeignText text = ForeignText::line(data.text());
    if (text.text.isEmpty())
        return std::nullopt;
    return DroppedTask{text.text, {}, text.isCut};
}

} // namespace viewcontrollers
