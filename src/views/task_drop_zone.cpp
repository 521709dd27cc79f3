// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/task_drop_zone.h"

#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

namespace views {

TaskDropZone::TaskDropZone(QWidget *target) : QObject(target)
{
    target->setAcceptDrops(true);
    target->installEventFilter(this);
}

bool TaskDropZone::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        break;
    default:
        return false;
    }
    auto *drop = static_cast<QDropEvent *>(event);
    const QMimeData &data = *drop->mimeData();
    if (data.hasFormat(viewcontrollers::taskDataType())) {
        drop->acceptProposedAction(); // tasks may be dropped where they came from, which changes nothing
        return true;
    }
    if (!viewcontrollers::offersText(data))
        return false;
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (event->type() != QEvent::Drop)
        return true;
    if (const auto task = viewcontrollers::droppedTask(data))
        Q_EMIT dropped(*task);
    else
        drop->ignore();
    return true;
}

} // namespace views
