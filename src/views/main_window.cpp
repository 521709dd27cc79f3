// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/main_window.h"

#include "app/text.h"
#include "model/settings_defaults.h"
#include "viewcontrollers/task_cells.h"
#include "views/icons.h"
#include "views/source_list_view.h"
#include "views/tasks_table_view.h"

#include <QAction>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLocale>
#include <QTimer>
#include <QVBoxLayout>

namespace views {

using viewcontrollers::SourceKind;
namespace keys = model::keys;

namespace {
constexpr std::string_view geometryKey = "MainWindowGeometry";
constexpr std::string_view splitterKey = "MainWindowSplitter";

QByteArray savedState(const foundation::Settings &settings, std::string_view key)
{
    return QByteArray::fromBase64(QByteArray::fromStdString(settings.text(key)));
}
} // namespace

MainWindow::MainWindow(app::TMApplicationDelegate &delegate)
    : m_delegate(delegate), m_sources(delegate), m_tasks(delegate), m_commands(delegate)
{
    makeActions();
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setHandleWidth(1);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(makeSidebar());
    m_splitter->addWidget(makeCenter());
    m_splitter->setStretchFactor(1, 1);
    setCentralWidget(m_splitter);
    connectParts();
    restoreGeometryAndState();
    m_outline->restoreSelection();
    m_outline->setFocus();
}

MainWindow::~MainWindow() = default;

QWidget *MainWindow::makeSidebar()
{
    auto *sidebar = new QWidget;
    sidebar->setObjectName(QStringLiteral("sidebar"));
    sidebar->setMinimumWidth(180);
    auto *layout = new QVBoxLayout(sidebar);
    layout->setContentsMargins(0, 12, 0, 0);
    m_outline = new FoldersOutlineView(m_sources, m_delegate.settings());
    layout->addWidget(m_outline);
    return sidebar;
}

QWidget *MainWindow::makeHeader()
{
    auto *header = new QWidget;
    auto *layout = new QHBoxLayout(header);
    layout->setContentsMargins(20, 14, 14, 6);
    layout->setSpacing(6);
    m_headline = new QLabel;
    m_headline->setObjectName(QStringLiteral("headline"));
    QFont font = m_headline->font();
    font.setPointSizeF(font.pointSizeF() * 1.9);
    font.setWeight(QFont::Bold);
    m_headline->setFont(font);
    m_subline = new QLabel;
    m_subline->setObjectName(QStringLiteral("subline"));
    layout->addWidget(m_headline);
    layout->addSpacing(8);
    const int raise = QFontMetrics(font).descent() - m_subline->fontMetrics().descent();
    m_subline->setContentsMargins(0, 0, 0, raise); // both stand on one line
    layout->addWidget(m_subline, 0, Qt::AlignBottom);
    layout->addStretch();
    auto *sync = new QToolButton;
    sync->setDefaultAction(m_syncAction);
    sync->setIconSize({20, 20});
    layout->addWidget(sync);
    return header;
}

QWidget *MainWindow::makeCenter()
{
    auto *center = new QWidget;
    center->setObjectName(QStringLiteral("center"));
    center->setMinimumWidth(320);
    auto *layout = new QVBoxLayout(center);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeHeader());

    m_newTask = new QLineEdit;
    m_newTask->setObjectName(QStringLiteral("newTaskField"));
    m_newTask->setPlaceholderText(tr("Add a task"));
    m_newTask->addAction(icon(QStringLiteral("add")), QLineEdit::LeadingPosition);
    auto *field = new QHBoxLayout;
    field->setContentsMargins(14, 2, 14, 8);
    field->addWidget(m_newTask);
    layout->addLayout(field);

    m_table = new TasksTableView(m_tasks, m_delegate.settings());
    layout->addWidget(m_table, 1);

    m_statusLine = new QLabel;
    m_statusLine->setObjectName(QStringLiteral("statusLine"));
    auto *bar = new QWidget;
    bar->setObjectName(QStringLiteral("statusBar"));
    auto *barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(20, 5, 14, 5);
    barLayout->addWidget(m_statusLine);
    layout->addWidget(bar);
    return center;
}

void MainWindow::makeActions()
{
    m_syncAction = new QAction(icon(QStringLiteral("sync")), tr("Sync with Toodledo"), this);
    m_syncAction->setShortcut(QKeySequence(tr("Ctrl+Shift+S")));
    connect(m_syncAction, &QAction::triggered, &m_delegate, &app::TMApplicationDelegate::synchronizeTasks);
    addAction(m_syncAction);

    auto *quit = new QAction(tr("Quit"), this);
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);
    addAction(quit);
}

void MainWindow::connectParts()
{
    connect(m_outline, &FoldersOutlineView::selectionMoved, this, &MainWindow::showSelectedSource);
    connect(&m_sources, &viewcontrollers::SourceListController::refreshed, this, &MainWindow::refreshTasks);
    connect(&m_tasks, &viewcontrollers::TasksArrayController::contentChanged, this, &MainWindow::updateStatusLine);
    connect(m_newTask, &QLineEdit::returnPressed, this, &MainWindow::addTaskFromField);
    connect(m_table, &TasksTableView::completeToggled, &m_commands, &viewcontrollers::TaskCommands::setComplete);
    connect(m_table, &TasksTableView::starToggled, &m_commands, &viewcontrollers::TaskCommands::setStar);
    connect(&m_delegate, &app::TMApplicationDelegate::statusTextChanged, this, &MainWindow::updateStatusLine);
    connect(&m_delegate, &app::TMApplicationDelegate::syncDidBegin, this, [this] { showSyncing(true); });
    connect(&m_delegate, &app::TMApplicationDelegate::syncDidEnd, this, [this] { showSyncing(false); });
    connect(&m_delegate, &app::TMApplicationDelegate::columnsDidChange, m_table, &TasksTableView::configureColumns);
}

void MainWindow::showSelectedSource()
{
    Q_EMIT m_delegate.commitEditing();
    m_tasks.setContent(m_sources.tasks(m_outline->selectedRow()));
    updateHeadline();
}

void MainWindow::refreshTasks()
{
    m_tasks.refreshContent(m_sources.tasks(m_outline->selectedRow()));
    updateHeadline();
}

void MainWindow::addTaskFromField()
{
    const QString title = m_newTask->text();
    if (title.simplified().isEmpty())
        return;
    const QModelIndex source = m_outline->selectedRow();
    auto *folder = model::as<model::Folders>(m_sources.record(source));
    if (!folder && m_sources.kind(source) != SourceKind::Inbox)
        m_outline->selectRow(m_sources.indexOf(SourceKind::Inbox));
    model::Tasks &task = m_commands.addTask(title, folder);
    m_newTask->clear();
    refreshTasks();
    m_table->selectTask(task);
}

void MainWindow::updateHeadline()
{
    const QModelIndex source = m_outline->selectedRow();
    const bool isToday = m_sources.kind(source) == SourceKind::Today;
    m_headline->setText(source.data().toString());
    const QDate today = viewcontrollers::toDateTime(m_delegate.clock().now()).date();
    m_subline->setText(isToday ? QLocale().toString(today, tr("dddd d MMMM", "today's date")) : QString());
    setWindowTitle(source.data().toString());
}

void MainWindow::updateStatusLine()
{
    QString text = m_delegate.statusText();
    if (text.isEmpty())
        text = m_tasks.rowCount() == 1 ? tr("1 task") : tr("%1 tasks").arg(QLocale().toString(m_tasks.rowCount()));
    m_statusLine->setText(text);
}

void MainWindow::showSyncing(bool isSyncing)
{
    m_syncAction->setEnabled(!isSyncing);
    m_syncAction->setToolTip(isSyncing ? QString() : tr("Sync with Toodledo"));
    updateStatusLine();
}

void MainWindow::showMainApplicationWindow()
{
    show();
    raise();
    activateWindow();
}

void MainWindow::restoreGeometryAndState()
{
    resize(1240, 780);
    m_splitter->setSizes({252, 988});
    const foundation::Settings &settings = m_delegate.settings();
    restoreGeometry(savedState(settings, geometryKey));
    m_splitter->restoreState(savedState(settings, splitterKey));
    m_splitter->setHandleWidth(1);
}

void MainWindow::saveGeometryAndState()
{
    foundation::Settings &settings = m_delegate.settings();
    settings.set(geometryKey, saveGeometry().toBase64().toStdString());
    settings.set(splitterKey, m_splitter->saveState().toBase64().toStdString());
    m_table->saveLayout();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    saveGeometryAndState();
    if (!m_delegate.applicationShouldTerminate()) {
        event->ignore();
        return;
    }
    event->accept();
    QCoreApplication::quit();
}

} // namespace views
