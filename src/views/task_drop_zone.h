// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "viewcontrollers/task_drag.h"

#include <QObject>

namespace views {

/// Lets a widget take texts and links that are dropped on it, each to become a task.
class TaskDropZone final : public QObject
{
    Q_OBJECT

public:
    /// `target` owns the zone.
    explicit TaskDropZone(QWidget *target);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void dropped(const viewcontrollers::DroppedTask &task);
};

} // namespace views
