// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"
#include "viewcontrollers/source_list_controller.h"

#include <QMenu>
#include <QTreeView>

namespace views {

/// The context menus of the source list, by what was clicked; they must outlive the view.
struct SourceListMenus {
    QMenu *folder = nullptr;
    QMenu *context = nullptr;
    QMenu *smartFolder = nullptr;
    QMenu *smartFolders = nullptr; ///< of the group
    QMenu *archivedFolder = nullptr;
    QMenu *trash = nullptr;
};

/// The source list at the left of the window. Keeps which groups are open, and which row is selected, from run to run.
class FoldersOutlineView final : public QTreeView
{
    Q_OBJECT

public:
    /// All must outlive the view.
    FoldersOutlineView(
        viewcontrollers::SourceListController &controller, foundation::Settings &settings, QWidget *parent = nullptr);

    /// Selects what was selected at the end of the last run, or the first row.
    void restoreSelection();
    void selectRow(const QModelIndex &index);
    void setMenus(const SourceListMenus &menus) { m_menus = menus; }
    /// Begins to rename the row.
    void editOutlineRow(const QModelIndex &index);
    [[nodiscard]] QModelIndex selectedRow() const;

Q_SIGNALS:
    void selectionMoved();

protected:
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    void drawBranches(QPainter *painter, const QRect &rect, const QModelIndex &index) const override;
    void mousePressEvent(QMouseEvent *event) override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void rowsInserted(const QModelIndex &parent, int start, int end) override;

private:
    void saveExpanded();
    void restoreExpanded();
    void hideDoubles();
    void setDropTarget(const QModelIndex &index);
    [[nodiscard]] QMenu *menuFor(const QModelIndex &index) const;
    [[nodiscard]] QRect arrowRect(const QModelIndex &index) const;

    viewcontrollers::SourceListController &m_controller;
    foundation::Settings &m_settings;
    SourceListMenus m_menus;
    QPersistentModelIndex m_dropTarget; ///< the row under what is being dragged
};

} // namespace views
