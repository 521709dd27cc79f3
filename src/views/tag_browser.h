// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"

#include <QListWidget>

namespace views {

/// All tags, to be ticked: the task list then shows the tasks that carry any of the ticked ones. The ticks are kept.
class TagBrowser final : public QListWidget
{
    Q_OBJECT

public:
    /// `delegate` must outlive the browser.
    explicit TagBrowser(app::TMApplicationDelegate &delegate, QWidget *parent = nullptr);

    /// Reads the tags again.
    void refreshTagsTable();
    /// The tasks with any of the ticked tags.
    [[nodiscard]] objectstore::FetchRequest tasksForSelectedTags() const;

Q_SIGNALS:
    void tagSelectionChanged();

private:
    void tick(QListWidgetItem *item);

    app::TMApplicationDelegate &m_delegate;
};

} // namespace views
