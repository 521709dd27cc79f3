// SPDX-License-Identifier: GPL-3.0-or-later
// How long a person waits in the main window over a large store: opening, choosing a list, sorting, searching, editing.
#include "generator.h"
#include "measure.h"

#include "app/tm_application_delegate.h"
#include "model/settings_defaults.h"
#include "platform/desktop_notifications.h"
#include "views/main_window.h"
#include "views/smart_folder_edit_controller.h"
#include "views/source_list_view.h"
#include "views/tasks_table_view.h"
#include "views/theme.h"
#include "views/window_user_interaction.h"

#include <cstdio>

namespace {

/// The window over the store in `folder`, up to what is painted.
class OpenWindow
{
public:
    OpenWindow(app::TMApplication &application, const std::filesystem::path &folder)
        : m_settings(m_settingsFile, model::settingsDefaults())
    {
        auto store = model::TaskStore::open(folder, m_clock, m_user);
        if (!store)
            throw std::runtime_error(store.error().message);
        m_settings.set("ShowDueDateColumn", true);
        m_delegate = std::make_unique<app::TMApplicationDelegate>(
            app::Environment{application, std::move(*store), m_settings, m_clock, m_user});
        m_window = std::make_unique<views::MainWindow>(*m_delegate);
        m_window->showMainApplicationWindow();
        paint();
    }

    [[nodiscard]] views::MainWindow &window() { return *m_window; }
    [[nodiscard]] app::TMApplicationDelegate &delegate() { return *m_delegate; }
    void paint()
    {
        QCoreApplication::processEvents();
        m_window->grab();
    }

private:
    foundation::SystemClock m_clock;
    platform::DesktopNotifications m_notifications{QDBusConnection(QString()), {}, {}}; // to no desktop
    views::WindowUserInteraction m_user{m_notifications};
    foundation::MemorySettingsFile m_settingsFile;
    foundation::Settings m_settings;
    std::unique_ptr<app::TMApplicationDelegate> m_delegate;
    std::unique_ptr<views::MainWindow> m_window;
};

void figure(const char *work, const char *reach, const std::function<void()> &run)
{
    bench::printFigure(work, bench::secondsFor(run) * 1000, "ms", reach);
}

void measure(app::TMApplication &application, const std::filesystem::path &folder, int number)
{
    bench::printHeader("main window, " + std::to_string(number) + " tasks");
    std::unique_ptr<OpenWindow> open;
    figure("open and paint the window", "1000", [&] { open = std::make_unique<OpenWindow>(application, folder); });
    auto &window = open->window();
    auto *outline = window.findChild<views::FoldersOutlineView *>();
    auto *table = window.findChild<views::TasksTableView *>();
    auto *sources = qobject_cast<viewcontrollers::SourceListController *>(outline->model());
    auto *tasks = static_cast<viewcontrollers::TasksArrayController *>(table->model());
    std::printf("tasks in Today: %d\n", table->model()->rowCount());

    const QModelIndex folders = sources->indexOf(viewcontrollers::SourceKind::FoldersGroup);
    figure("choose a folder", "50", [&] {
        outline->selectRow(sources->index(3, 0, folders));
        open->paint();
    });
    auto &smartFolder = model::insert<model::SmartFolder>(open->delegate().managedObjectContext());
    std::unique_ptr<views::SmartFolderEditController> editor;
    figure("open the editor of a smart folder and count", "100", [&] {
        editor = std::make_unique<views::SmartFolderEditController>(open->delegate(), smartFolder);
        editor->setAttribute(Qt::WA_DeleteOnClose, false);
        editor->show();
        editor->grab();
    });
    const auto rows = viewcontrollers::criteriaOf(objectstore::Predicate::format(
        "(title CONTAINS[c] 'a' OR notes CONTAINS[c] 'b' OR tags.title == 'c') AND priorities.priority >= 1"));
    figure("count what two texts, a tag and a priority find", "300", [&] {
        (void)open->delegate().managedObjectContext().count(
            model::smartFolderTasks(viewcontrollers::predicateOf(rows, open->delegate().clock().now()), std::nullopt));
    });
    editor.reset();
    figure("choose Today", "300", [&] {
        window.action(views::Command::GoToToday)->trigger();
        open->paint();
    });
    figure("sort Today by another column", "300", [&] {
        table->sortByColumn(static_cast<int>(viewcontrollers::TaskColumn::DueDate), Qt::DescendingOrder);
        open->paint();
    });
    figure("scroll to the end of Today", "50", [&] {
        table->scrollToBottom();
        open->paint();
    });
    figure("tick a task off and save", "50", [&] {
        Q_EMIT table->completeToggled({tasks->task(0)}, true);
        open->delegate().managedObjectContext().processPendingChanges();
        open->delegate().saveAction();
        open->paint();
    });
    auto *search = window.findChild<QLineEdit *>(QStringLiteral("searchField"));
    figure("search for a word, of all tasks", "500", [&] {
        search->setText(QStringLiteral("garden"));
        Q_EMIT search->textEdited(search->text());
        open->paint();
    });
    std::printf("tasks found: %d\n", table->model()->rowCount());
    figure("show every task", "1500", [&] {
        search->clear();
        Q_EMIT search->textEdited(search->text());
        open->paint();
    });
    bench::printFigure("heap", bench::heapInUse() / 1048576, "MiB", "");
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    app::TMApplication application(argc, argv);
    views::Theme::of(QGuiApplication::palette(), QStringLiteral("light")).apply();
    try {
        bench::Amount amount;
        if (argc > 1)
            amount.tasks = std::max(std::atoi(argv[1]), 1);
        const bench::Workplace workplace;
        bench::generate(workplace.path(), amount).reset();
        measure(application, workplace.path(), amount.tasks);
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
