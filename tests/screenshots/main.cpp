// SPDX-License-Identifier: GPL-3.0-or-later
// Draws the windows with made-up tasks: quelvin_screenshots FOLDER APPEARANCE SUFFIX [LOCALE]
#include "foundation/settings.h"
#include "model/settings_defaults.h"
#include "support/collected_errors.h"
#include "support/task_builder.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"
#include "support/test_location.h"
#include "views/context_place_view.h"
#include "views/date_field.h"
#include "views/detail_pane.h"
#include "views/main_window.h"
#include "views/management_window.h"
#include "views/preferences_window.h"
#include "views/quick_task_controller.h"
#include "views/shortcut_recorder.h"
#include "views/smart_folder_edit_controller.h"
#include "views/tag_browser.h"
#include "views/theme.h"
#include "views/translations.h"
#include "views/tray_icon.h"
#include "views/window_user_interaction.h"

#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QPainter>
#include <QTimer>
#include <QTreeView>
#include <cstdio>

using support::aTask;

namespace {

/// Answers nothing: in a picture nobody is asked.
class SilentUser final : public app::UserInteraction
{
public:
    void presentError(const foundation::Error &error) override
    {
        std::fprintf(stderr, "error: %s %s\n", error.message.c_str(), error.detail.c_str());
    }
    void displayAlert(const QString &, const QString &) override { }
    bool ask(const QString &, const QString &, const QString &) override { return false; }
    void displayNotification(const QString &, const QString &) override { }
};

void addEverydayTasks(const model::DataUtilities &records)
{
    aTask()
        .titled("Call the movers about the piano")
        .in("House move")
        .doneAt("Phone")
        .inState("Next Action")
        .ofPriority(2)
        .due("2026-11-24 14:00")
        .starred()
        .tagged("moving")
        .tagged("insurance")
        .noted("Ask whether the stairs are a problem (second floor, no lift) and what the insurance covers.\n\n"
               "Offer from 12 November: 480 €.")
        .addTo(records);
    aTask()
        .titled("Return the library books")
        .doneAt("Errands")
        .inState("Next Action")
        .due("2026-11-23")
        .addTo(records);
    aTask()
        .titled("Draft the release notes for the spring version")
        .in("Work – spring release")
        .inState("Active")
        .due("2026-11-24")
        .starred()
        .addTo(records);
    aTask()
        .titled("Plant the winter garlic")
        .in("Garden")
        .doneAt("Home")
        .inState("Someday")
        .starting("2026-11-20")
        .due("2026-11-26")
        .addTo(records);
    aTask()
        .titled("Ask Zoë for the Łódź tickets")
        .doneAt("Phone")
        .inState("Waiting")
        .starting("2026-11-22")
        .due("2026-11-30")
        .addTo(records);
    aTask().titled("Prune the apple tree").in("Garden").doneAt("Home").addTo(records);
    aTask().titled("Choose a paint for the hall").in("House move").addTo(records);
    aTask()
        .titled("Renew the passport before the trip; two photographs, the old passport and proof of address are "
                "needed, and the office closes at noon on Wednesdays")
        .doneAt("Errands")
        .due("2026-12-15")
        .addTo(records);
    for (int number = 1; number <= 112; ++number)
        aTask().titled("Review chapter " + std::to_string(number)).in("Work – spring release").addTo(records);
    aTask().titled("An idea that was none").inTheTrash().addTo(records);
    for (const char *title : {"Old house", "Taxes 2024"}) {
        auto &folder = model::insert<model::Folders>(records.moc());
        folder.setTitle(title);
        folder.setArchived(true);
    }
    using objectstore::Predicate;
    for (const auto &[title, predicate] :
        {std::pair{"Starred", "star == YES"}, {"Waiting for others", "states.state == 'Waiting'"}}) {
        auto &smart = records.moc().insert("SmartFolder");
        smart.setValue("title", std::string(title));
        smart.setValue("predicateData", objectstore::archive(Predicate::format(predicate)));
    }
}

class Gallery
{
public:
    Gallery(app::TMApplication &application, QString folder, QString suffix)
        : m_settings(m_settingsFile, model::settingsDefaults())
        , m_folder(std::move(folder))
        , m_suffix(std::move(suffix))
    {
        auto store = model::TaskStore::open(m_storeFolder.path(), m_clock, m_user);
        if (!store)
            qFatal("no store");
        m_settings.set("ShowDueDateColumn", true);
        m_delegate = std::make_unique<app::TMApplicationDelegate>(app::Environment{.application = application,
            .store = std::move(*store),
            .settings = m_settings,
            .clock = m_clock,
            .user = m_user,
            .makeLocationManager = m_location.makeManager()});
    }

    /// A new user's window.
    void empty()
    {
        views::MainWindow window(*m_delegate);
        window.resize(1280, 800);
        window.showMainApplicationWindow();
        save(window, QStringLiteral("empty"));
        window.action(views::Command::GoToInbox)->trigger();
        save(window, QStringLiteral("empty-inbox"));
    }

    void everyday()
    {
        addEverydayTasks(m_delegate->records());
        m_delegate->saveAction();
        views::MainWindow window(*m_delegate);
        window.resize(1280, 800);
        window.showMainApplicationWindow();
        save(window, QStringLiteral("today"));
        auto *table = window.findChild<QTreeView *>(QStringLiteral("taskTable"));
        table->setFocus();
        table->setCurrentIndex(table->model()->index(0, 0));
        save(window, QStringLiteral("today-selected"));
        const QModelIndex first = table->model()->index(0, 0);
        table->edit(first);
        save(window, QStringLiteral("today-editing"));
        window.action(views::Command::GoToInbox)->trigger();
        table->setCurrentIndex(table->model()->index(table->model()->rowCount() - 2, 0));
        save(window, QStringLiteral("inbox-long-title"));
        table->selectAll();
        save(window, QStringLiteral("inbox-all-selected"));
        window.action(views::Command::GoToLocation)->trigger();
        save(window, QStringLiteral("location-empty"));
        window.action(views::Command::TagBrowser)->trigger();
        save(window, QStringLiteral("tag-browser"));
        window.findChild<views::TagBrowser *>()->item(0)->setCheckState(Qt::Checked);
        save(window, QStringLiteral("tag-browser-ticked"));
        window.action(views::Command::TagBrowser)->trigger();
        auto *search = window.findChild<QLineEdit *>(QStringLiteral("searchField"));
        search->setText(QStringLiteral("movers"));
        Q_EMIT search->textEdited(search->text());
        table->setCurrentIndex(table->model()->index(0, 0));
        window.action(views::Command::ShowMenuBar)->setChecked(true);
        table->setFocus();
        save(window, QStringLiteral("search"));
        detailsOf(window);
        window.showFirstRun();
        window.openPreferencesWindow();
        window.action(views::Command::Shortcuts)->trigger();
        window.action(views::Command::ManageFolders)->trigger();
        for (QDialog *dialog : window.findChildren<QDialog *>())
            save(*dialog, QString::fromLatin1(dialog->metaObject()->className()).remove(QStringLiteral("views::")));
        auto *quickTask = new views::QuickTaskController(*m_delegate, QStringLiteral("Ask Zoë for the Łódź tickets"));
        quickTask->showWindow();
        save(*quickTask, QStringLiteral("quick-entry"));
        quickTask->taskTitleField().clear();
        save(*quickTask, QStringLiteral("quick-entry-empty"));
        quickTask->close();
        auto *preferences = window.findChild<views::PreferencesWindow *>();
        for (int pane = 1; pane < 6; ++pane) {
            preferences->findChild<QButtonGroup *>()->button(pane)->click();
            save(*preferences, QStringLiteral("preferences-%1").arg(pane));
        }
        preferences->findChild<views::ShortcutRecorder *>()->click();
        save(*preferences, QStringLiteral("preferences-recording"));
        QTimer::singleShot(300, &window, [this] {
            QWidget *alert = QApplication::activeModalWidget();
            save(*alert, QStringLiteral("reminder"));
            alert->close();
        });
        platform::DesktopNotifications nowhere(QDBusConnection(QString()), {}, {});
        views::WindowUserInteraction user(nowhere);
        user.setWindow(&window);
        user.remind(QStringLiteral("Upcoming event(s): \nCall the movers about the piano \nReturn the library books "));
    }

    /// The pane of the selected task, and the calendar that a date opens.
    void detailsOf(const views::MainWindow &window)
    {
        auto *pane = window.findChild<views::DetailPane *>();
        save(*pane, QStringLiteral("details"));
        pane->findChildren<views::DateField *>().last()->actions().first()->trigger();
        QWidget *calendar = QApplication::activePopupWidget();
        save(*calendar, QStringLiteral("calendar"));
        calendar->close();
    }

    /// Where the user is, and what can be done there.
    void places()
    {
        constexpr location::Coordinate here{52.4915, 13.4236};
        for (const auto &[title, place] :
            {std::pair{"Home", here}, {"Errands", location::Coordinate{52.4951, 13.429}}}) {
            model::Contexts &context = *m_delegate->records().getContextByTitle(title);
            context.setUseLocation(true);
            context.setCoordinate(place);
        }
        views::MainWindow window(*m_delegate);
        window.resize(1280, 800);
        window.showMainApplicationWindow();
        m_settings.set(model::keys::UseLocation, true);
        m_delegate->locationController().applySettings();
        window.action(views::Command::GoToLocation)->trigger();
        save(window, QStringLiteral("location-waiting"));
        m_location.moveTo(here);
        window.action(views::Command::FilterByLocation)->setChecked(true);
        save(window, QStringLiteral("location"));
        window.action(views::Command::ManageContexts)->trigger();
        auto *contexts = window.findChild<views::ManagementWindow *>();
        auto *list = contexts->findChild<QListWidget *>();
        list->setCurrentItem(list->findItems(QStringLiteral("Errands"), Qt::MatchExactly).value(0));
        save(*contexts, QStringLiteral("contexts"));
        auto *field = contexts->findChild<views::ContextPlaceView *>()->findChild<QLineEdit *>();
        field->setText(QStringLiteral("52° 61' N, 13° 25' E"));
        field->setModified(true);
        Q_EMIT field->editingFinished();
        save(*contexts, QStringLiteral("contexts-refused"));
        window.action(views::Command::FilterByLocation)->setChecked(false);
    }

    void trayIcons()
    {
        QPixmap strip(600, 160);
        strip.fill(views::Theme::current().window);
        QPainter painter(&strip);
        int y = 8;
        for (const int size : {16, 22, 24, 64}) {
            int x = 8;
            for (const char *badge : {"", "3", "42", "3/7", "12/34", "128/1024"}) {
                painter.drawPixmap(x, y, views::badgedIcon(QString::fromLatin1(badge)).pixmap(size));
                x += 96;
            }
            y += size + 8;
        }
        strip.save(QDir(m_folder).filePath(QStringLiteral("tray") + m_suffix + QStringLiteral(".png")));
    }

    void smartFolderEditor()
    {
        using objectstore::Predicate;
        const std::pair<const char *, const char *> folders[] = {
            {"New Smart Folder", "title CONTAINS 'task'"},
            {"Waiting for others",
                "complete == NO AND states.state == 'Waiting' AND folders.title != 'House move'"
                " AND dueDate <= RELATIVE(1209600.0, 1209600.0, 1, NO) AND priorities.priority >= 1"
                " AND tags.title == 'insurance' AND length >= 30"},
            {"What the winter needs",
                "complete == NO AND (dueDate <= RELATIVE(604800.0, 604800.0, 1, NO) OR star == YES OR NOT "
                "(folders.title"
                " == 'Garden' OR contexts.title == 'Errands' OR (notes CONTAINS[c] 'snow' AND reminder != 0)))"
                " AND title MATCHES '(?i).*(winter|frost).*' AND startDate == nil"},
            {"A smart folder whose name is so long that it will not fit, however wide the window is made by its owner",
                "title CONTAINS[c] 'Renew the passport before the trip; two photographs, the old passport and proof of"
                " address are needed' AND folders.title == 'A folder that was renamed after the smart folder was made,"
                " and whose title was long' AND (title MATCHES '.*(photographs|proof of address|the office closes at"
                " noon on Wednesdays).*' OR modifiedDate >= RELATIVE(-2592000.0, -2592000.0, 0, YES))"},
            {"Soon and important",
                "complete == NO AND dueDate <= RELATIVE(604800.0, 604800.0, 1, NO)"
                " AND (star == YES OR priorities.priority >= 2)"},
        };
        const viewcontrollers::TaskCatalog catalog(*m_delegate);
        int number = 0;
        for (const auto &[title, predicate] : folders) {
            auto &folder = model::insert<model::SmartFolder>(m_delegate->managedObjectContext());
            folder.setTitle(title);
            folder.setPredicate(Predicate::format(predicate));
            views::SmartFolderEditController editor(*m_delegate, catalog, folder);
            editor.setAttribute(Qt::WA_DeleteOnClose, false);
            editor.show();
            save(editor, QStringLiteral("smart-folder-%1").arg(++number));
        }
    }

private:
    void save(QWidget &widget, const QString &name)
    {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        widget.grab().save(QDir(m_folder).filePath(name + m_suffix + QStringLiteral(".png")));
    }

    support::TemporaryFolder m_storeFolder;
    support::TestClock m_clock;
    SilentUser m_user;
    support::TestLocation m_location;
    foundation::MemorySettingsFile m_settingsFile;
    foundation::Settings m_settings;
    QString m_folder;
    QString m_suffix;
    std::unique_ptr<app::TMApplicationDelegate> m_delegate;
};

} // namespace

int main(int argc, char **argv)
{
    app::TMApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() != 4 && arguments.size() != 5) {
        std::fprintf(stderr, "usage: quelvin_screenshots FOLDER light|dark SUFFIX [LOCALE]\n");
        return 2;
    }
    const QLocale locale(arguments.value(4, QStringLiteral("en_GB")));
    QLocale::setDefault(locale);
    const views::Translations translations(locale);
    QGuiApplication::setLayoutDirection(locale.textDirection());
    QDir().mkpath(arguments[1]);
    views::Theme::of(QGuiApplication::palette(), arguments[2]).apply();
    Gallery(application, arguments[1], arguments[3]).empty();
    Gallery gallery(application, arguments[1], arguments[3]);
    gallery.everyday();
    gallery.places();
    gallery.trayIcons();
    gallery.smartFolderEditor();
    return 0;
}
