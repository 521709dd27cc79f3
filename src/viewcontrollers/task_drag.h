// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/entities.h"

#include <QStringList>
#include <optional>
#include <vector>

class QMimeData;

namespace viewcontrollers {

/// The kind of data that dragged tasks are: their URIs, one a line.
[[nodiscard]] QString taskDataType();
/// The tasks for our own lists, and their titles, one a line, for other programs. The caller owns it.
[[nodiscard]] QMimeData *makeTaskData(const std::vector<const objectstore::ManagedObject *> &tasks);
/// The dragged tasks that are still there, each once, in the order in which they were dragged. Whatever else another
/// program offers under that name is ignored.
[[nodiscard]] std::vector<model::Tasks *> tasksOf(const QMimeData &data, objectstore::ObjectContext &moc);

/// The kinds of data of other programs of which a task can come.
[[nodiscard]] QStringList textTypes();
/// Whether one of them is offered. What it holds is not read for that: a drag asks at each move, and it may be long.
[[nodiscard]] bool offersText(const QMimeData &data);

/// What a dropped text or link makes a task of.
struct DroppedTask {
    QString title;
    QString notes;
    bool isCut = false; ///< more was dropped than what is taken
};
/// A link with its name becomes a task with the name as title and the link as notes, and so does a file; a link without
/// a name and plain text become the title.
[[nodiscard]] std::optional<DroppedTask> droppedTask(const QMimeData &data);

/// "message:<id>", as mail programs write it, as the link "message://<id>"; a text that is shorter stays as it is.
[[nodiscard]] QString createMessageLink(const QString &link);

} // namespace viewcontrollers
