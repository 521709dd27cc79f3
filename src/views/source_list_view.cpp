// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/source_list_view.h"

#include "app/text.h"
#include "views/icons.h"
#include "views/source_list_cell.h"
#include "views/theme.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>

namespace views {

using viewcontrollers::SourceKind;

namespace {
constexpr std::string_view collapsedKey = "CollapsedGroups"; // the keys of the groups, one a line
constexpr std::string_view selectionKey = "SelectedSource";
constexpr int arrowSize = 16;
} // namespace

FoldersOutlineView::FoldersOutlineView(
    viewcontrollers::SourceListController &controller, foundation::Settings &settings, QWidget *parent)
    : QTreeView(parent), m_controller(controller), m_settings(settings)
{
    setObjectName(QStringLiteral("sidebarList"));
    setAccessibleName(tr("Lists"));
    setModel(&m_controller);
    setItemDelegate(new ImageAndTextCell(this));
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setIndentation(0);
    setMouseTracking(true);
    setEditTriggers(QAbstractItemView::EditKeyPressed);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setExpandsOnDoubleClick(false);
    setDragDropMode(QAbstractItemView::DropOnly);
    setDropIndicatorShown(false); // the row itself lights up
    setAutoExpandDelay(500);
    header()->setStretchLastSection(true);
    restoreExpanded();
    hideDoubles();
    connect(this, &QTreeView::expanded, this, &FoldersOutlineView::saveExpanded);
    connect(this, &QTreeView::collapsed, this, &FoldersOutlineView::saveExpanded);
}

void FoldersOutlineView::restoreExpanded()
{
    const QStringList collapsed = app::toQString(m_settings.text(collapsedKey)).split(QLatin1Char('\n'));
    for (int row = 0; row < m_controller.rowCount(); ++row) {
        const QModelIndex index = m_controller.index(row, 0);
        if (m_controller.isExpandableGroup(index))
            setExpanded(index, !collapsed.contains(m_controller.persistentName(index)));
    }
}

void FoldersOutlineView::saveExpanded()
{
    QStringList collapsed;
    for (int row = 0; row < m_controller.rowCount(); ++row) {
        const QModelIndex index = m_controller.index(row, 0);
        if (m_controller.isExpandableGroup(index) && !isExpanded(index))
            collapsed.append(m_controller.persistentName(index));
    }
    m_settings.set(collapsedKey, app::toUtf8(collapsed.join(QLatin1Char('\n'))));
}

/// The Inbox is a folder like others, but it has its row at the top; a second one among the folders would confuse.
void FoldersOutlineView::hideDoubles()
{
    const QModelIndex folders = m_controller.indexOf(SourceKind::FoldersGroup);
    for (int row = 0; row < m_controller.rowCount(folders); ++row) {
        const auto *record = m_controller.record(m_controller.index(row, 0, folders));
        setRowHidden(row, folders, record && record->text("title") == "Inbox");
    }
}

void FoldersOutlineView::rowsInserted(const QModelIndex &parent, int start, int end)
{
    QTreeView::rowsInserted(parent, start, end);
    if (m_controller.kind(parent) == SourceKind::FoldersGroup)
        hideDoubles();
}

void FoldersOutlineView::restoreSelection()
{
    QModelIndex wanted = m_controller.indexForPersistentName(app::toQString(m_settings.text(selectionKey)));
    selectRow(wanted.isValid() ? wanted : m_controller.index(0, 0));
}

void FoldersOutlineView::selectRow(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    if (index.parent().isValid())
        expand(index.parent());
    setCurrentIndex(index);
    scrollTo(index);
}

QModelIndex FoldersOutlineView::selectedRow() const
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? QModelIndex() : rows.first();
}

void FoldersOutlineView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (const QModelIndex row = selectedRow(); row.isValid())
        m_settings.set(selectionKey, app::toUtf8(m_controller.persistentName(row)));
    Q_EMIT selectionMoved();
}

void FoldersOutlineView::editOutlineRow(const QModelIndex &index)
{
    selectRow(index);
    setFocus();
    if (m_controller.isRenamable(index))
        edit(index);
}

QMenu *FoldersOutlineView::menuFor(const QModelIndex &index) const
{
    switch (m_controller.kind(index)) {
    case SourceKind::Trash:
        return m_menus.trash;
    case SourceKind::SmartFolder:
        return m_menus.smartFolder;
    case SourceKind::SmartFoldersGroup:
        return m_menus.smartFolders;
    case SourceKind::Context:
        return m_menus.context;
    case SourceKind::ArchivedFolder:
        return m_menus.archivedFolder;
    case SourceKind::Folder:
        return m_menus.folder;
    default:
        return nullptr; // the other fixed rows have none
    }
}

void FoldersOutlineView::contextMenuEvent(QContextMenuEvent *event)
{
    setFocus();
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
    QMenu *menu = menuFor(index);
    if (!menu)
        return;
    if (!selectionModel()->isSelected(index))
        selectRow(index);
    menu->popup(isByKey ? viewport()->mapToGlobal(visualRect(index).bottomLeft()) : event->globalPos());
}

void FoldersOutlineView::setDropTarget(const QModelIndex &index)
{
    m_dropTarget = index;
    viewport()->update();
}

void FoldersOutlineView::dragMoveEvent(QDragMoveEvent *event)
{
    QTreeView::dragMoveEvent(event); // scrolls and opens groups
    const QModelIndex target = indexAt(event->position().toPoint());
    const Qt::DropAction action = m_controller.dropAction(*event->mimeData(), target);
    if (action != Qt::IgnoreAction) {
        event->setDropAction(action);
        event->accept();
        setDropTarget(target);
    } else {
        event->ignore();
        setDropTarget({});
    }
}

void FoldersOutlineView::dragLeaveEvent(QDragLeaveEvent *event)
{
    setDropTarget({});
    QTreeView::dragLeaveEvent(event);
}

/// A drop means the row that it falls on, wherever on it: a row is no place to put something between.
void FoldersOutlineView::dropEvent(QDropEvent *event)
{
    const QModelIndex target = indexAt(event->position().toPoint());
    setDropTarget({});
    const Qt::DropAction action = m_controller.dropAction(*event->mimeData(), target);
    if (m_controller.dropMimeData(event->mimeData(), action, -1, -1, target)) {
        event->setDropAction(action);
        event->accept();
    } else {
        event->ignore();
    }
}

void FoldersOutlineView::drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QTreeView::drawRow(painter, option, index);
    if (!m_dropTarget.isValid() || m_dropTarget != index)
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(Theme::current().accent, 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(9, option.rect.top() + 2, width() - 18, option.rect.height() - 4), 6, 6);
    painter->restore();
}

QRect FoldersOutlineView::arrowRect(const QModelIndex &index) const
{
    const QRect row = visualRect(index);
    return QStyle::visualRect(layoutDirection(), viewport()->rect(),
        {viewport()->width() - arrowSize - 12, row.center().y() - arrowSize / 2 + 4, arrowSize, arrowSize});
}

/// The arrow of a group stands at its right end: shown while the pointer is over the list, or the group is closed.
void FoldersOutlineView::drawBranches(QPainter *painter, const QRect &, const QModelIndex &index) const
{
    if (!m_controller.isExpandableGroup(index) || m_controller.rowCount(index) == 0)
        return;
    if (isExpanded(index) && !underMouse())
        return;
    const QString name = isExpanded(index) ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right");
    painter->drawPixmap(arrowRect(index).topLeft(),
        iconPixmap(name, Theme::current().muted, arrowSize, painter->device()->devicePixelRatioF()));
}

void FoldersOutlineView::mousePressEvent(QMouseEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && m_controller.isExpandableGroup(index)
        && arrowRect(index).adjusted(-4, -4, 8, 4).contains(event->pos())) {
        setExpanded(index, !isExpanded(index));
        return;
    }
    QTreeView::mousePressEvent(event);
}

} // namespace views
