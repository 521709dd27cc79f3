// SPDX-License-Identifier: GPL-3.0-or-later
// How long a person waits in the windows over a large store, on an X server that nobody sees: choosing a list,
// searching, editing, scrolling, taking over what others wrote, the editor of smart folders and the quick
// entry.
#include "canned_service.h"
#include "generator.h"
#include "measure.h"

#include "app/tm_application_delegate.h"
#include "model/settings_defaults.h"
#include "model/smart_folder.h"
#include "platform/desktop_notifications.h"
#include "support/x_server.h"
#include "views/main_window.h"
#include "views/quick_task_controller.h"
#include "views/smart_folder_edit_controller.h"
#include "views/source_list_view.h"
#include "views/tasks_table_view.h"
#include "views/theme.h"
#include "views/window_user_interaction.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QWindow>
#include <cstdio>
#include <cstring>

namespace {

using viewcontrollers::SourceKind;
using viewcontrollers::SourceListController;

/// The program over the store in `folder`, as `main` ties it together.
class Program
{
public:
    Program(app::TMApplication &application, const std::filesystem::path &folder,
        std::function<std::unique_ptr<toodledo::HttpTransport>()> makeTransport = {})
        : m_settings(m_settingsFile, model::settingsDefaults())
    {
        auto store = model::TaskStore::open(folder, m_clock, m_user);
        if (!store)
            throw std::runtime_error(store.error().message);
        m_settings.set("ShowDueDateColumn", true);
        m_settings.set("ToodledoHost", std::string("127.0.0.1"));
        m_delegate = std::make_unique<app::TMApplicationDelegate>(
            app::Environment{application, std::move(*store), m_settings, m_clock, m_user, std::move(makeTransport)});
        m_window = std::make_unique<views::MainWindow>(*m_delegate);
        m_window->showMainApplicationWindow();
        m_quickEntry = std::make_unique<views::QuickEntry>(*m_delegate);
        m_delegate->applicationDidFinishLaunching();
    }
    ~Program() { m_delegate->applicationWillTerminate(); }

    [[nodiscard]] views::MainWindow &window() { return *m_window; }
    [[nodiscard]] app::TMApplicationDelegate &delegate() { return *m_delegate; }

private:
    foundation::SystemClock m_clock;
    platform::DesktopNotifications m_notifications{QDBusConnection(QString()), {}, {}}; // to no desktop
    views::WindowUserInteraction m_user{m_notifications};
    foundation::MemorySettingsFile m_settingsFile;
    foundation::Settings m_settings;
    std::unique_ptr<app::TMApplicationDelegate> m_delegate;
    std::unique_ptr<views::MainWindow> m_window;
    std::unique_ptr<views::QuickEntry> m_quickEntry;
};

/// Lets the program run until it has nothing more to do at once, and until what changed of `widget` is on the screen.
void show(QWidget &widget)
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    widget.repaint();
}

/// The longest time for which the main thread answered nothing, while `isDone` says no.
double longestSilence(const std::function<bool()> &isDone)
{
    double longest = 0;
    QElapsedTimer sinceAnswer;
    QTimer heart;
    heart.setTimerType(Qt::PreciseTimer);
    QObject::connect(&heart, &QTimer::timeout, [&] {
        longest = std::max(longest, static_cast<double>(sinceAnswer.nsecsElapsed()) / 1e6);
        sinceAnswer.start();
    });
    sinceAnswer.start();
    heart.start(1);
    while (!isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QElapsedTimer after; // what the end of the work left to do belongs to it
    after.start();
    while (after.elapsed() < 1000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return longest;
}

void press(QWidget &widget, int key, const QString &text = {})
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &up);
}

/// The middle and the worst of what was measured, against what is to be reached.
class Times
{
public:
    void add(const std::function<void()> &work) { m_times.push_back(bench::secondsFor(work) * 1000); }
    void print(const std::string &work, double reach)
    {
        bench::printLimit(work, bench::middle(m_times), *std::max_element(m_times.begin(), m_times.end()), "ms", reach);
    }

private:
    std::vector<double> m_times;
};

class Measurement
{
public:
    Measurement(app::TMApplication &application, const std::filesystem::path &folder)
        : m_program(application, folder)
        , m_outline(*window().findChild<views::FoldersOutlineView *>())
        , m_table(*window().findChild<views::TasksTableView *>())
        , m_search(*window().findChild<QLineEdit *>(QStringLiteral("searchField")))
        , m_sources(*qobject_cast<SourceListController *>(m_outline.model()))
        , m_tasks(*static_cast<viewcontrollers::TasksArrayController *>(m_table.model()))
    {
        show(window());
        longestSilence([] { return true; });
    }

    void lists()
    {
        const QModelIndex folders = m_sources.indexOf(SourceKind::FoldersGroup);
        settings().set(model::keys::ShowCompletedTasks, true);
        m_sources.refreshOutlineView();
        Times folder;
        for (int i = 0; i < 21; ++i)
            folder.add([&] {
                m_outline.selectRow(m_sources.index(20 + i, 0, folders));
                show(*m_table.viewport());
            });
        std::printf("tasks in the folder: %d\n", m_table.model()->rowCount());
        folder.print("choose a folder of 500 tasks", 8);
        Times first;
        first.add([&] { showEveryTask(); });
        std::printf("tasks in the list: %d\n", m_table.model()->rowCount());
        first.print("show every task, for the first time", 60);
        Times every;
        for (int i = 0; i < 7; ++i) {
            m_outline.selectRow(m_sources.index(i, 0, folders));
            show(*m_table.viewport());
            every.add([&] { showEveryTask(); });
        }
        every.print("show every task, again", 60);
        bench::printFigure("heap with every task on show", bench::heapInUse() / 1048576, "MiB", "<= 250");
        Times scroll;
        for (int i = 0; i < 200; ++i)
            scroll.add([&] {
                QScrollBar *bar = m_table.verticalScrollBar();
                bar->setValue(bar->value() + 57);
                show(*m_table.viewport());
            });
        scroll.print("scroll a little and repaint", 4);
        settings().set(model::keys::ShowCompletedTasks, false);
        m_search.clear();
        m_sources.refreshOutlineView();
    }

    void search()
    {
        Times keys;
        for (const QString &word : {QStringLiteral("piano"), QStringLiteral("winter"), QStringLiteral("łódź")}) {
            m_search.clear();
            for (const QChar letter : word)
                keys.add([&] {
                    press(m_search, letter.unicode(), letter);
                    show(*m_table.viewport());
                });
            std::printf("tasks found: %d\n", m_table.model()->rowCount());
            for (int i = 0; i < 2; ++i)
                keys.add([&] {
                    press(m_search, Qt::Key_Backspace);
                    show(*m_table.viewport());
                });
        }
        keys.print("one key in the search field", 30);
        press(m_search, Qt::Key_Escape);
    }

    void badges()
    {
        Times counted;
        counted.add([&] { readBadges(); });
        counted.print("every badge, for the first time", 1e9);
        Times refreshed;
        for (int i = 0; i < 11; ++i)
            refreshed.add([&] {
                m_sources.refreshOutlineView();
                readBadges();
            });
        refreshed.print("refreshOutlineView and every badge", 16);
        m_outline.selectRow(m_sources.indexOf(SourceKind::Today));
        Times edits;
        Times drops;
        Times undos;
        const QModelIndex folders = m_sources.indexOf(SourceKind::FoldersGroup);
        for (int i = 0; i < 21; ++i) {
            edits.add([&] {
                Q_EMIT m_table.completeToggled({m_tasks.task(i)}, true);
                readBadges();
            });
            drops.add([&] {
                const std::unique_ptr<QMimeData> dragged(m_tasks.mimeData({m_tasks.index(i + 30, 0)}));
                (void)m_sources.dropMimeData(dragged.get(), Qt::MoveAction, -1, -1, m_sources.index(i, 0, folders));
                readBadges();
            });
            undos.add([&] {
                window().action(views::Command::Undo)->trigger();
                readBadges();
            });
        }
        edits.print("tick a task off, and every badge", 16);
        drops.print("drop a task onto a folder, and every badge", 16);
        undos.print("undo that, and every badge", 16);
        context().rollback();
    }

    void newDay()
    {
        Times days;
        for (int i = 0; i < 7; ++i)
            days.add([&] {
                delegate().newDay();
                show(window());
            });
        days.print("newDay", 100);
        const auto folders = context().fetch({.entity = "SmartFolder", .predicate = {}, .sortDescriptors = {}}).value();
        for (objectstore::ManagedObject *folder : folders) // each with a date that the day moves
            model::as<model::SmartFolder>(folder)->setPredicate(objectstore::Predicate::format(
                "title CONTAINS[c] 'garlic' AND dueDate >= RELATIVE(-86400.0, 8e8, 0, YES)"));
        delegate().saveAction();
        Times renewals;
        foundation::Instant day = foundation::SystemClock().now();
        for (int i = 0; i < 7; ++i)
            renewals.add([&] {
                day.seconds += 86400;
                (void)model::renewSmartFolders(context(), day);
                context().processPendingChanges();
            });
        if (!context().hasChanges())
            throw std::runtime_error("no smart folder changed with the day");
        renewals.print("bring fifty smart folders with dates to a new day", 50);
        context().rollback();
    }

    void editor()
    {
        auto &smartFolder = model::insert<model::SmartFolder>(context());
        smartFolder.setPredicate(
            objectstore::Predicate::format("title CONTAINS[c] 'p' OR (notes CONTAINS[c] 'garlic' AND star == YES)"));
        delegate().saveAction();
        auto *editor = new views::SmartFolderEditController(delegate(), m_tasks.catalog(), smartFolder, &window());
        editor->show();
        show(*editor);
        (void)longestSilence([] { return true; });
        auto *field = qobject_cast<QLineEdit *>(editor->findChild<QWidget *>(QStringLiteral("operand")));
        auto *count = editor->findChild<QLabel *>(QStringLiteral("subline"));
        if (!field || !count)
            throw std::runtime_error("the editor has no text to type in");
        field->setText(QStringLiteral("p"));
        field->setCursorPosition(1);
        Times keys;
        double longest = 0;
        const auto type = [&](int key, const QString &text) {
            const QString before = count->text();
            QElapsedTimer waiting;
            waiting.start();
            keys.add([&] {
                press(*field, key, text);
                longest = std::max(longest, static_cast<double>(waiting.nsecsElapsed()) / 1e6);
                while (count->text() == before && waiting.elapsed() < 3000) {
                    QElapsedTimer turn;
                    turn.start();
                    QCoreApplication::processEvents();
                    longest = std::max(longest, static_cast<double>(turn.nsecsElapsed()) / 1e6);
                }
            });
        };
        for (const QChar letter : QStringLiteral("ilair")) { // after the p, each of which finds another number of tasks
            type(letter.unicode(), letter);
            type(Qt::Key_Backspace, {});
        }
        keys.print("a key in the smart folder editor, until its count is right", 15);
        bench::printLimit("the same: the main thread's longest silence", longest, longest, "ms", 15);
        editor->close();
        (void)longestSilence([] { return true; });
    }

    void quickEntry()
    {
        Times times;
        for (int i = 0; i < 11; ++i) {
            times.add([&] {
                delegate().quickTask();
                QWidget *entry = nullptr;
                while (!entry || !entry->windowHandle() || !entry->windowHandle()->isExposed()) {
                    QCoreApplication::processEvents();
                    for (QWidget *candidate : QApplication::topLevelWidgets()) {
                        if (qobject_cast<views::QuickTaskController *>(candidate) && !candidate->isHidden())
                            entry = candidate;
                    }
                }
                show(*entry);
                m_entry = entry;
            });
            closeEntry();
        }
        times.print("the quick entry, from its hot key to its window", 60);
    }

    /// What the end of a synchronisation asks of the main thread: ten thousand tasks were changed by another context.
    void merge()
    {
        objectstore::ObjectContext other(context().store(), objectstore::MergePolicy::Rollback);
        objectstore::FetchRequest some = model::everyTask();
        some.limit = 10000;
        const auto tasks = other.fetch(some);
        unsigned state = 3;
        for (objectstore::ManagedObject *task : tasks.value()) {
            task->setValue("title", bench::words(38, state));
            task->setValue("complete", state % 2 == 0);
        }
        const auto saved = other.save();
        if (!saved)
            throw std::runtime_error(saved.error().message);
        QTimer::singleShot(0, &window(), [this] { delegate().mergeExternalChanges(); });
        const double longest = longestSilence([] { return true; });
        bench::printLimit("10,000 tasks changed elsewhere: the longest silence", longest, longest, "ms", 50);
    }

private:
    [[nodiscard]] views::MainWindow &window() { return m_program.window(); }
    [[nodiscard]] app::TMApplicationDelegate &delegate() { return m_program.delegate(); }
    [[nodiscard]] objectstore::ObjectContext &context() { return delegate().managedObjectContext(); }
    [[nodiscard]] foundation::Settings &settings() { return delegate().settings(); }

    void showEveryTask()
    {
        m_search.clear();
        Q_EMIT m_search.textEdited(QString());
        show(*m_table.viewport());
    }

    /// Reads the number of every row, seen or not, until all are right.
    void readBadges()
    {
        do {
            QCoreApplication::processEvents();
            context().processPendingChanges();
            readEachBadge();
        } while (m_sources.isCounting());
    }

    void readEachBadge()
    {
        for (int top = 0; top < m_sources.rowCount(); ++top) {
            const QModelIndex parent = m_sources.index(top, 0);
            (void)parent.data(SourceListController::BadgeRole);
            for (int row = 0; row < m_sources.rowCount(parent); ++row)
                (void)m_sources.index(row, 0, parent).data(SourceListController::BadgeRole);
        }
    }

    void closeEntry()
    {
        m_entry->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    Program m_program;
    views::FoldersOutlineView &m_outline;
    views::TasksTableView &m_table;
    QLineEdit &m_search;
    SourceListController &m_sources;
    viewcontrollers::TasksArrayController &m_tasks;
    QWidget *m_entry = nullptr;
};

/// A synchronisation in which so many of the tasks were edited elsewhere, while the window shows a list of them.
void synchronise(app::TMApplication &application, int tasks)
{
    const int edited = tasks / 10;
    const bench::Replies before = bench::repliesFor(tasks);
    const bench::Replies after = bench::repliesFor(tasks, edited);
    const bench::Replies *replies = &before;
    const bench::Workplace workplace;
    Program program(application, workplace.path(), [&] { return std::make_unique<bench::CannedTransport>(*replies); });
    app::TMApplicationDelegate &delegate = program.delegate();
    const auto run = [&] {
        delegate.synchronizeTasks();
        return longestSilence([&] { return !delegate.isSyncing(); });
    };
    (void)run();
    replies = &after;
    const double longest = run();
    const auto found = delegate.managedObjectContext().count(model::tasksContaining("edited "));
    if (found.value_or(0) != edited)
        throw std::runtime_error("the edits did not arrive");
    bench::printLimit("a synchronisation that brings as many: the longest silence", longest, longest, "ms", 50);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        const support::XServer server;
        qputenv("DISPLAY", server.display().toLatin1());
        qputenv("QT_QPA_PLATFORM", "xcb");
        app::TMApplication application(argc, argv);
        views::Theme::of(QGuiApplication::palette(), QStringLiteral("light")).apply();
        bench::Amount amount;
        if (argc > 1)
            amount.tasks = std::max(std::atoi(argv[1]), 1);
        const bench::Workplace workplace;
        bench::generate(workplace.path(), amount).reset();
        bench::printHeader("the windows, " + std::to_string(amount.tasks) + " tasks");
        const auto isWanted = [&](const char *part) { return argc < 3 || std::strcmp(argv[2], part) == 0; };
        {
            Measurement measurement(application, workplace.path());
            constexpr std::array<std::pair<const char *, void (Measurement::*)()>, 7> parts{{
                {"badges", &Measurement::badges},
                {"lists", &Measurement::lists},
                {"search", &Measurement::search},
                {"newDay", &Measurement::newDay},
                {"editor", &Measurement::editor},
                {"quickEntry", &Measurement::quickEntry},
                {"merge", &Measurement::merge},
            }};
            for (const auto &[name, part] : parts) {
                if (isWanted(name))
                    (measurement.*part)();
            }
        }
        if (isWanted("synchronise"))
            synchronise(application, amount.tasks);
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
