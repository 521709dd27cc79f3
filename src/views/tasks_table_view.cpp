// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/tasks_table_view.h"

#include "app/text.h"
#include "views/cell_painting.h"
#include "views/task_cell.h"
#include "views/theme.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>

namespace views {

using viewcontrollers::TaskColumn;
using viewcontrollers::taskColumns;

namespace {
constexpr std::string_view layoutKey = "TaskTableLayout"; // the header's state, in base 64
constexpr int title = static_cast<int>(TaskColumn::Title);
constexpr int narrowestTitle = 220;
constexpr int rowMargin = 6;
constexpr int rowRadius = 8;
} // namespace

TasksTableView::TasksTableView(
    viewcontrollers::TasksArrayController &tasks, foundation::Settings &settings, QWidget *parent)
    : QTreeView(parent), m_tasks(tasks), m_settings(settings)
{
    setObjectName(QStringLiteral("taskTable"));
    setAccessibleName(tr("Tasks"));
    auto *cell = new TaskCell(m_tasks, this);
    connect(cell, &TaskCell::completeToggled, this,
        [this](const QModelIndex &index, bool complete) { Q_EMIT completeToggled(selectionWith(index), complete); });
    connect(cell, &TaskCell::starToggled, this,
        [this](const QModelIndex &index, bool star) { Q_EMIT starToggled(selectionWith(index), star); });
    setModel(&m_tasks);
    setItemDelegate(cell);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setMouseTracking(true);
    setDragEnabled(true);
    setSortingEnabled(true);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::DoubleClicked);
    header()->setSectionsMovable(true);
    header()->setFirstSectionMovable(true);
    header()->setStretchLastSection(false);
    header()->setMinimumSectionSize(32);
    header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header()->setHighlightSections(false);
    restoreLayout();
    configureColumns();
    fitTitle();
    connect(header(), &QHeaderView::sectionResized, this, [this](int column) {
        if (column != title)
            fitTitle();
    });
}

void TasksTableView::restoreLayout()
{
    for (const auto &column : taskColumns)
        setColumnWidth(static_cast<int>(column.column), column.width);
    sortByColumn(static_cast<int>(TaskColumn::Title), Qt::AscendingOrder);
    const QByteArray state = QByteArray::fromBase64(QByteArray::fromStdString(m_settings.text(layoutKey)));
    if (!state.isEmpty() && header()->restoreState(state))
        m_tasks.sort(header()->sortIndicatorSection(), header()->sortIndicatorOrder());
    header()->setSectionResizeMode(QHeaderView::Interactive);
    header()->setSectionResizeMode(static_cast<int>(TaskColumn::Star), QHeaderView::Fixed);
    setColumnWidth(static_cast<int>(TaskColumn::Star), viewcontrollers::describe(TaskColumn::Star).width);
}

/// The title takes the room that the other columns leave, and where they leave too little, the list scrolls sideways.
void TasksTableView::fitTitle()
{
    if (isColumnHidden(title))
        return;
    const int left = viewport()->width() - (header()->length() - header()->sectionSize(title));
    header()->setSectionResizeMode(title, left < narrowestTitle ? QHeaderView::Fixed : QHeaderView::Stretch);
    if (left < narrowestTitle)
        header()->resizeSection(title, narrowestTitle);
}

void TasksTableView::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    fitTitle();
}

void TasksTableView::saveLayout()
{
    m_settings.set(layoutKey, header()->saveState().toBase64().toStdString());
}

void TasksTableView::configureColumns()
{
    for (const auto &column : taskColumns) {
        const bool isShown = column.setting.empty() ? m_showsCurrentLocation : m_settings.boolean(column.setting);
        setColumnHidden(static_cast<int>(column.column), !isShown);
    }
}

void TasksTableView::showCurrentLocation(bool isShown)
{
    m_showsCurrentLocation = isShown;
    configureColumns();
}

std::vector<model::Tasks *> TasksTableView::selectedTasks() const
{
    QModelIndexList rows = selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const auto &a, const auto &b) { return a.row() < b.row(); });
    std::vector<model::Tasks *> tasks;
    for (const QModelIndex &row : rows)
        tasks.push_back(m_tasks.task(row));
    return tasks;
}

std::vector<model::Tasks *> TasksTableView::selectionWith(const QModelIndex &index) const
{
    if (selectionModel()->isRowSelected(index.row()))
        return selectedTasks();
    return {m_tasks.task(index)};
}

void TasksTableView::selectTask(const model::Tasks &task)
{
    const int row = m_tasks.row(task);
    if (row < 0)
        return;
    const QModelIndex index = m_tasks.index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index);
}

void TasksTableView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    viewport()->update(); // a row is drawn as one piece, whichever of its cells changed
    Q_EMIT selectionMoved();
}

void TasksTableView::drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const Theme &theme = Theme::current();
    const bool isSelected = selectionModel()->isRowSelected(index.row());
    const bool isHovered = m_hovered.isValid() && m_hovered.row() == index.row();
    const QRect row(rowMargin, option.rect.top() + 1, viewport()->width() - 2 * rowMargin, option.rect.height() - 2);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (isSelected || isHovered) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(!isSelected ? theme.hover : hasFocus() ? theme.selection : theme.selectionInactive);
        painter->drawRoundedRect(row, rowRadius, rowRadius);
    } else {
        painter->setPen(QPen(mixed(theme.hairline, theme.list, 0.7), 1));
        painter->setRenderHint(QPainter::Antialiasing, false);
        const QRect line = placed(option, row, row.adjusted(TaskCell::titleInset() - row.left(), 0, -rowMargin, 0));
        painter->drawLine(line.left(), option.rect.bottom(), line.right(), option.rect.bottom());
    }
    painter->restore();
    QStyleOptionViewItem plain = option;
    plain.state.setFlag(QStyle::State_MouseOver, isHovered);
    QTreeView::drawRow(painter, plain, index);
}

void TasksTableView::editTitle()
{
    const QModelIndex title = m_tasks.index(currentIndex().row(), static_cast<int>(TaskColumn::Title));
    if (title.isValid() && !isColumnHidden(title.column()))
        edit(title);
}

void TasksTableView::contextMenuEvent(QContextMenuEvent *event)
{
    setFocus();
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
    if (!m_menu || !index.isValid())
        return;
    if (!selectionModel()->isRowSelected(index.row()))
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_menu->popup(isByKey ? viewport()->mapToGlobal(visualRect(index).bottomLeft()) : event->globalPos());
}

void TasksTableView::keyPressEvent(QKeyEvent *event)
{
    const std::vector<model::Tasks *> tasks = selectedTasks();
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier && !tasks.empty()) {
        const bool allComplete
            = std::all_of(tasks.begin(), tasks.end(), [](const model::Tasks *task) { return task->complete(); });
        Q_EMIT completeToggled(tasks, !allComplete);
        return;
    }
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && event->modifiers() == Qt::NoModifier
        && state() != EditingState) {
        editTitle();
        return;
    }
    QTreeView::keyPressEvent(event);
}

/// What is dragged shows as one small label: the title of the task, or how many there are.
void TasksTableView::startDrag(Qt::DropActions actions)
{
    const std::vector<model::Tasks *> tasks = selectedTasks();
    if (tasks.empty())
        return;
    const QString text = tasks.size() == 1 ? app::toQString(tasks.front()->title())
                                           : tr("%1 tasks").arg(QLocale().toString(tasks.size()));
    const Theme &theme = Theme::current();
    const QString shown = fontMetrics().elidedText(text, Qt::ElideRight, 260);
    const QSize size(fontMetrics().horizontalAdvance(shown) + 28, fontMetrics().height() + 14);
    QPixmap label(size * devicePixelRatioF());
    label.setDevicePixelRatio(devicePixelRatioF());
    label.fill(Qt::transparent);
    QPainter painter(&label);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme.accent, 1));
    painter.setBrush(theme.selection);
    painter.drawRoundedRect(QRectF(QPointF(0.5, 0.5), QSizeF(size) - QSizeF(1, 1)), 8, 8);
    painter.setPen(theme.text);
    painter.setFont(font());
    painter.drawText(QRect(QPoint(0, 0), size), Qt::AlignCenter, shown);
    painter.end();

    auto *drag = new QDrag(this);
    drag->setMimeData(m_tasks.mimeData(selectedIndexes()));
    drag->setPixmap(label);
    drag->setHotSpot({-12, -8});
    drag->exec(actions, Qt::MoveAction);
}

void TasksTableView::hover(const QModelIndex &index)
{
    if (m_hovered.isValid() && index.isValid() && m_hovered.row() == index.row())
        return;
    m_hovered = index;
    viewport()->update();
}

void TasksTableView::mouseMoveEvent(QMouseEvent *event)
{
    hover(indexAt(event->pos()));
    QTreeView::mouseMoveEvent(event);
}

void TasksTableView::leaveEvent(QEvent *event)
{
    hover({});
    QTreeView::leaveEvent(event);
}

} // namespace views
