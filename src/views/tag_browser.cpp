// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/tag_browser.h"

#include "app/text.h"
#include "model/settings_defaults.h"

namespace views {

using objectstore::Predicate;

TagBrowser::TagBrowser(app::TMApplicationDelegate &delegate, QWidget *parent)
    : QListWidget(parent), m_delegate(delegate)
{
    setObjectName(QStringLiteral("tagBrowser"));
    setAccessibleName(tr("Tags"));
    setFrameShape(QFrame::NoFrame);
    connect(this, &QListWidget::itemChanged, this, &TagBrowser::tick);
    connect(this, &QListWidget::itemClicked, this, [](QListWidgetItem *item) {
        // a click anywhere on the row ticks it; one on the box has ticked it already
        if (item->data(Qt::UserRole + 1).toInt() == item->checkState())
            item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
        item->setData(Qt::UserRole + 1, item->checkState());
    });
}

void TagBrowser::refreshTagsTable()
{
    const QSignalBlocker blocker(this);
    clear();
    const auto tags = m_delegate.records().getTags();
    if (!tags)
        return;
    for (const auto &[title, tag] : *tags) {
        auto *item = new QListWidgetItem(app::toQString(title), this);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(tag->isChecked() ? Qt::Checked : Qt::Unchecked);
        item->setData(Qt::UserRole, app::toQString(m_delegate.managedObjectContext().uri(*tag)));
        item->setData(Qt::UserRole + 1, item->checkState());
    }
    sortItems();
}

void TagBrowser::tick(QListWidgetItem *item)
{
    auto *tag = model::as<model::Tags>(
        m_delegate.managedObjectContext().objectWithURI(app::toUtf8(item->data(Qt::UserRole).toString())));
    if (!tag || tag->isChecked() == (item->checkState() == Qt::Checked))
        return;
    tag->setIsChecked(item->checkState() == Qt::Checked);
    m_delegate.saveAction(); // the tasks of the tags are asked of the store
    Q_EMIT tagSelectionChanged();
}

objectstore::FetchRequest TagBrowser::tasksForSelectedTags() const
{
    const bool showCompleted = m_delegate.settings().boolean(model::keys::ShowCompletedTasks);
    return {
        .entity = "Tasks",
        .predicate = Predicate::conjunction({Predicate::format("ANY tags.isChecked==YES"),
            Predicate::format(showCompleted ? "(deleteOnSync==0)" : "(complete==0) && (deleteOnSync==0)")}),
        .sortDescriptors = {},
    };
}

} // namespace views
