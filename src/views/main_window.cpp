// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/main_window.h"

#include "app/text.h"
#include "model/settings_defaults.h"
#include "platform/window_activation.h"
#include "viewcontrollers/task_cells.h"
#include "views/detail_pane.h"
#include "views/icons.h"
#include "views/line_label.h"
#include "views/source_list_view.h"
#include "views/tag_browser.h"
#include "views/tasks_table_view.h"
#include "views/tip_view.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLocale>
#include <QVBoxLayout>

namespace views {

using viewcontrollers::SourceKind;
using viewcontrollers::SourceListController;
using viewcontrollers::TasksArrayController;

namespace {

constexpr std::string_view geometryKey = "MainWindowGeometry";
constexpr std::string_view splitterKey = "MainWindowSplitter";
constexpr std::string_view menuBarKey = "ShowMenuBar";
constexpr std::string_view detailsKey = "HideDetails";
constexpr QSize toolIconSize(20, 20);

QByteArray savedState(const foundation::Settings &settings, std::string_view key)
{
    return QByteArray::fromBase64(QByteArray::fromStdString(settings.text(key)));
}

} // namespace

MainWindow::MainWindow(app::TMApplicationDelegate &delegate)
    : m_delegate(delegate)
    , m_sources(delegate)
    , m_tasks(delegate)
    , m_commands(delegate)
    , m_listCommands(delegate)
    , m_commandSet(this)
{
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(makeSidebar());
    m_splitter->addWidget(makeCenter());
    m_splitter->addWidget(m_detail = new DetailPane(m_delegate));
    m_splitter->setStretchFactor(1, 1);
    setCentralWidget(m_splitter);
    makeMenus();
    connectParts();
    connectTaskCommands();
    connectListCommands();
    connectViewCommands();
    connectWindowCommands();
    restoreGeometryAndState();
    m_outline->restoreSelection();
    m_outline->setFocus();
}

MainWindow::~MainWindow() = default;

QWidget *MainWindow::makeSidebar()
{
    auto *sidebar = new QWidget;
    sidebar->setObjectName(QStringLiteral("sidebar"));
    sidebar->setAttribute(Qt::WA_StyledBackground);
    sidebar->setMinimumWidth(190);
    m_searchField = new QLineEdit;
    m_searchField->setObjectName(QStringLiteral("searchField"));
    m_searchField->setPlaceholderText(tr("Search"));
    m_searchField->setAccessibleName(tr("Search"));
    m_searchField->addAction(icon(QStringLiteral("search")), QLineEdit::LeadingPosition)->setText(tr("Search"));
    m_searchField->installEventFilter(this);
    m_outline = new FoldersOutlineView(m_sources, m_delegate.settings());
    m_tagBrowser = new TagBrowser(m_delegate);
    m_sidebarPages = new QStackedWidget;
    m_sidebarPages->addWidget(m_outline);
    m_sidebarPages->addWidget(m_tagBrowser);
    auto *layout = new QVBoxLayout(sidebar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    auto *top = new QHBoxLayout;
    top->setContentsMargins(10, 12, 10, 2);
    top->addWidget(m_searchField);
    layout->addLayout(top);
    layout->addWidget(m_sidebarPages);
    return sidebar;
}

QToolButton *MainWindow::makeToolButton(Command command)
{
    auto *button = new QToolButton;
    button->setDefaultAction(action(command));
    button->setIconSize(toolIconSize);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

QWidget *MainWindow::makeHeader()
{
    auto *header = new QWidget;
    header->setObjectName(QStringLiteral("header"));
    header->setAttribute(Qt::WA_StyledBackground);
    auto *layout = new QHBoxLayout(header);
    layout->setContentsMargins(20, 14, 12, 6);
    layout->setSpacing(4);
    m_headline = new LineLabel;
    m_headline->setObjectName(QStringLiteral("headline"));
    QFont font = m_headline->font();
    font.setPointSizeF(font.pointSizeF() * 1.9);
    font.setWeight(QFont::Bold);
    m_headline->setFont(font);
    m_headline->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    m_subline = new LineLabel;
    m_subline->setObjectName(QStringLiteral("subline"));
    m_subline->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // gives way to the headline
    const int raise = QFontMetrics(font).descent() - m_subline->fontMetrics().descent();
    m_subline->setContentsMargins(8, 0, 0, raise); // both stand on one line
    layout->addWidget(m_headline);
    layout->addWidget(m_subline, 1, Qt::AlignBottom);
    for (const Command command : {Command::TagBrowser, Command::FilterByLocation, Command::Sync, Command::ShowDetails})
        layout->addWidget(makeToolButton(command));
    m_menuButton = new QToolButton;
    m_menuButton->setIcon(icon(QStringLiteral("menu")));
    m_menuButton->setIconSize(toolIconSize);
    m_menuButton->setToolTip(tr("Menu"));
    m_menuButton->setAccessibleName(tr("Menu"));
    m_menuButton->setPopupMode(QToolButton::InstantPopup);
    m_menuButton->setFocusPolicy(Qt::TabFocus);
    layout->addWidget(m_menuButton);
    return header;
}

QWidget *MainWindow::makeStatusBar()
{
    m_statusLine = new LineLabel;
    m_statusLine->setObjectName(QStringLiteral("statusLine"));
    auto *bar = new QWidget;
    bar->setObjectName(QStringLiteral("statusBar"));
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(20, 5, 14, 5);
    layout->addWidget(m_statusLine);
    return bar;
}

QWidget *MainWindow::makeCenter()
{
    m_newTask = new QLineEdit;
    m_newTask->setObjectName(QStringLiteral("newTaskField"));
    m_newTask->setAccessibleName(tr("New task"));
    m_newTask->setPlaceholderText(tr("Add a task"));
    m_newTask->addAction(icon(QStringLiteral("add")), QLineEdit::LeadingPosition)->setText(tr("Add a task"));
    auto *field = new QHBoxLayout;
    field->setContentsMargins(14, 2, 14, 8);
    field->addWidget(m_newTask);

    m_table = new TasksTableView(m_tasks, m_delegate.settings());
    m_tip = new TipPlaceHolderView(m_delegate.settings());
    m_listPages = new QStackedWidget;
    m_listPages->addWidget(m_table);
    m_listPages->addWidget(m_tip);

    auto *center = new QWidget;
    center->setObjectName(QStringLiteral("center"));
    center->setAttribute(Qt::WA_StyledBackground);
    center->setMinimumWidth(320);
    auto *layout = new QVBoxLayout(center);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeHeader());
    layout->addLayout(field);
    layout->addWidget(m_listPages, 1);
    layout->addWidget(makeStatusBar());
    return center;
}

void MainWindow::showTasks(Shown shown)
{
    Q_EMIT m_delegate.commitEditing();
    m_shown = shown;
    m_tasks.setContent(shownTasks(), shown == Shown::Search ? app::toUtf8(m_searchField->text()) : std::string());
    updateHeadline();
    updateCommands();
}

std::optional<objectstore::FetchRequest> MainWindow::shownTasks() const
{
    switch (m_shown) {
    case Shown::Search:
        return model::tasksContaining(app::toUtf8(m_searchField->text()));
    case Shown::Tags:
        return m_tagBrowser->tasksForSelectedTags();
    default:
        return m_sources.tasks(m_outline->selectedRow());
    }
}

void MainWindow::showSelectedSource()
{
    const QModelIndex source = m_outline->selectedRow();
    if (!source.isValid())
        return;
    m_searchField->clear();
    m_table->setMenu(m_sources.kind(source) == SourceKind::Trash ? m_trashContextMenu : m_tasksContextMenu);
    showTasks(Shown::Source);
}

void MainWindow::refreshTasks()
{
    m_tasks.refreshContent(shownTasks());
    updateHeadline();
}

void MainWindow::showSelectedTasks()
{
    m_detail->setTasks(m_table->selectedTasks());
    updateCommands();
}

void MainWindow::updateHeadline()
{
    const QModelIndex source = m_outline->selectedRow();
    QString title = source.data().toString();
    QString more;
    if (m_shown == Shown::Search) {
        title = tr("Search");
        more = m_searchField->text().isEmpty() ? tr("All tasks")
                                               : tr("Titles and notes with \"%1\"").arg(m_searchField->text());
    } else if (m_shown == Shown::Tags) {
        title = tr("Tags");
    } else if (m_sources.isExpandableGroup(source)) {
        title = title.left(1) + title.mid(1).toLower();
    } else if (m_sources.kind(source) == SourceKind::Today) {
        const QDate today = viewcontrollers::toDateTime(m_delegate.clock().now()).date();
        more = QLocale().toString(today, tr("dddd d MMMM", "today's date"));
    } else if (m_sources.kind(source) == SourceKind::Location) {
        more = placeText();
    }
    m_headline->setText(title);
    m_subline->setText(more);
    updateWindowTitle();
}

/// Which contexts are near.
QString MainWindow::placeText() const
{
    QStringList titles;
    for (const model::Contexts *context : m_delegate.contextsNear())
        titles.append(app::toQString(context->title()));
    return titles.isEmpty() ? QString()
                            : tr("At %1", "the places where the user is").arg(QLocale().createSeparatedList(titles));
}

bool MainWindow::isAboutLocation() const
{
    return m_delegate.application().isFilteringByLocation()
        || (m_shown == Shown::Source && m_sources.kind(m_outline->selectedRow()) == SourceKind::Location);
}

/// The badge stands first, where a task bar shows it, too.
void MainWindow::updateWindowTitle()
{
    const QString &badge = m_delegate.badge();
    setWindowTitle(badge.isEmpty() ? m_headline->text() : tr("(%1) %2").arg(badge, m_headline->text()));
}

void MainWindow::updateStatusLine()
{
    QString text = m_delegate.statusText();
    if (text.isEmpty() && isAboutLocation())
        text = m_delegate.locationController().statusText();
    if (text.isEmpty()) {
        text = m_tasks.rowCount() == 1 ? tr("1 task") : tr("%1 tasks").arg(QLocale().toString(m_tasks.rowCount()));
        if (const auto date = m_delegate.settings().date(model::keys::dateLastSynched))
            text = tr("%1 · synchronized %2").arg(text, viewcontrollers::nearDate(date, m_delegate.clock().now()));
    }
    m_statusLine->setText(text);
}

void MainWindow::updateTip()
{
    const bool isEmpty = m_tasks.rowCount() == 0;
    m_listPages->setCurrentIndex(isEmpty ? 1 : 0);
    if (!isEmpty)
        return;
    if (m_shown == Shown::Search)
        m_tip->setMessage(QStringLiteral("search"), tr("No task has these words in its title or notes."));
    else if (m_shown == Shown::Tags)
        m_tip->setMessage(QStringLiteral("tag"), tr("Tick tags at the left to see the tasks that carry any of them."));
    else if (const QString why = m_delegate.locationController().statusText(); isAboutLocation() && !why.isEmpty())
        m_tip->setMessage(QStringLiteral("location"), why);
    else
        m_tip->setTipType(m_sources.tip(m_outline->selectedRow()));
}

void MainWindow::showMainApplicationWindow()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    QMainWindow::show();
    platform::bringToFront(*windowHandle());
}

void MainWindow::restoreGeometryAndState()
{
    const QSize room = screen()->availableSize() - QSize(16, 56); // beside and above it, the frame
    resize(QSize(1280, 800).boundedTo(room));
    m_splitter->setSizes({250, 700, 330}); // a date with its time has room in the details
    const foundation::Settings &settings = m_delegate.settings();
    restoreGeometry(savedState(settings, geometryKey));
    m_splitter->restoreState(savedState(settings, splitterKey));
    m_splitter->setHandleWidth(1);
    action(Command::ShowMenuBar)->setChecked(settings.boolean(menuBarKey));
    action(Command::ShowDetails)->setChecked(!settings.boolean(detailsKey));
}

void MainWindow::saveGeometryAndState()
{
    foundation::Settings &settings = m_delegate.settings();
    settings.set(geometryKey, saveGeometry().toBase64().toStdString());
    settings.set(splitterKey, m_splitter->saveState().toBase64().toStdString());
    settings.set(menuBarKey, action(Command::ShowMenuBar)->isChecked());
    settings.set(detailsKey, !action(Command::ShowDetails)->isChecked());
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
