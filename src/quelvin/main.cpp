// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/process_setup.h"
#include "app/store_opening.h"
#include "app/text.h"
#include "app/tm_application_delegate.h"
#include "foundation/log.h"
#include "keyring/keyring.h"
#include "model/settings_defaults.h"
#include "platform/desktop_notifications.h"
#include "platform/hot_key_back_ends.h"
#include "platform/launcher_badge.h"
#include "platform/location_managers.h"
#include "platform/running_instance.h"
#include "views/first_picture.h"
#include "views/icons.h"
#include "views/main_window.h"
#include "views/quick_task_controller.h"
#include "views/theme.h"
#include "views/translations.h"
#include "views/tray_icon.h"
#include "views/window_user_interaction.h"

#include <QCommandLineParser>
#include <QCryptographicHash>
#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace {

/// The actions of the desktop file, by which one start of the program also speaks to the other.
const QString quickTaskAction = QStringLiteral("quick-task");
const QString addSelectedTextAction = QStringLiteral("add-selected-text");
const QString syncAction = QStringLiteral("sync");

struct Arguments {
    std::filesystem::path store;
    std::filesystem::path settings;
    QString action; ///< empty for none
    QStringList actionArguments;
};

struct Main {
    Q_DECLARE_TR_FUNCTIONS(Main)
};

Arguments parse(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(Main::tr("Tasks, the getting-things-done way."));
    const QCommandLineOption store(
        QStringLiteral("store"), Main::tr("The folder of the task store."), Main::tr("folder"));
    const QCommandLineOption settings(
        QStringLiteral("settings"), Main::tr("The file of the settings."), Main::tr("file"));
    const QCommandLineOption add(
        QStringLiteral("add"), Main::tr("Open the quick entry with this title, which may be empty."), Main::tr("text"));
    const QCommandLineOption addSelection(QStringLiteral("add-selection"),
        Main::tr("Open the quick entry with the text that is selected on the desktop."));
    const QCommandLineOption sync(QStringLiteral("sync"), Main::tr("Synchronise the tasks."));
    parser.addOptions({store, settings, add, addSelection, sync});
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);
    Arguments arguments{model::applicationSupportFolder(), model::settingsFile(), {}, {}};
    if (parser.isSet(store))
        arguments.store = parser.value(store).toStdString();
    if (parser.isSet(settings))
        arguments.settings = parser.value(settings).toStdString();
    if (parser.isSet(add)) {
        arguments.action = quickTaskAction;
        arguments.actionArguments = {parser.value(add)};
    } else if (parser.isSet(addSelection)) {
        arguments.action = addSelectedTextAction;
    } else if (parser.isSet(sync)) {
        arguments.action = syncAction;
    }
    return arguments;
}

/// One program runs for each store; the user's own store has the plain name.
QString busName(const QString &name, const std::filesystem::path &store)
{
    std::error_code ignored;
    const auto place = std::filesystem::weakly_canonical(store, ignored);
    if (place == std::filesystem::weakly_canonical(model::applicationSupportFolder(), ignored))
        return name;
    const QByteArray hash
        = QCryptographicHash::hash(QByteArray::fromStdString(place.string()), QCryptographicHash::Sha256).toHex();
    return name + QStringLiteral(".Store_") + QString::fromLatin1(hash.left(16));
}

void runAction(
    views::MainWindow &window, views::QuickEntry &quickEntry, const QString &action, const QStringList &texts)
{
    if (action == quickTaskAction)
        quickEntry.quickTask(texts.value(0));
    else if (action == addSelectedTextAction)
        quickEntry.addSelectedText();
    else if (action == syncAction)
        window.action(views::Command::Sync)->trigger();
    else if (!action.isEmpty())
        foundation::logLine(
            "Another program asked for the action \"" + action.left(100).toStdString() + "\", which is not there.");
}

/// Whoever only asks for help needs no display, without which the toolkit would not start.
void helpWithoutDisplay(std::span<char *const> arguments)
{
    static constexpr std::array<std::string_view, 5> questions{"--help", "-h", "--help-all", "--version", "-v"};
    if (std::find_first_of(arguments.begin(), arguments.end(), questions.begin(), questions.end()) != arguments.end())
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

int fail(app::UserInteraction &user, const foundation::Error &error)
{
    user.presentError(error);
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    app::setUpProcess();
    helpWithoutDisplay({argv, static_cast<std::size_t>(argc)});
    app::TMApplication application(argc, argv);
    application.setApplicationVersion(QStringLiteral(QUELVIN_VERSION));
    const views::Translations translations(QLocale::system());
    const Arguments arguments = parse(application);

    const QDBusConnection bus = QDBusConnection::sessionBus();
    platform::RunningInstance instance(bus, busName(application.desktopFileName(), arguments.store));
    if (instance.handsOver(arguments.action, arguments.actionArguments))
        return 0;

    foundation::JsonSettingsFile settingsFile(arguments.settings);
    keyring::Keyring keyring(arguments.settings);
    foundation::Settings settings(settingsFile, model::settingsDefaults(), {&keyring, model::secretSettings()});
    const foundation::SystemClock clock;
    const QPalette desktopPalette = QGuiApplication::palette();
    const auto applyTheme = [&] {
        auto theme = views::Theme::of(desktopPalette, app::toQString(settings.text("Appearance")));
        theme.takeUserColors(settings);
        theme.apply();
    };
    applyTheme();
    QGuiApplication::setWindowIcon(views::icon(QStringLiteral("quelvin")));
    platform::DesktopNotifications notifications(bus, QStringLiteral("Quelvin"), application.desktopFileName());
    views::WindowUserInteraction user(notifications);
    if (settings.loadError())
        user.presentError(*settings.loadError());

    auto store = app::openStore(arguments.store, clock, user);
    if (!store)
        return fail(user, store.error());
    const auto hotKeys = platform::makeHotKeyBackEnd(bus);
    hotkeys::QVLHotKeyCenter hotKeyCenter(*hotKeys);
    app::TMApplicationDelegate delegate({.application = application,
        .store = std::move(store->tasks),
        .settings = settings,
        .clock = clock,
        .user = user,
        .hotKeyCenter = &hotKeyCenter,
        .makeLocationManager = [name = application.desktopFileName()](const foundation::Settings &chosen) {
            return platform::makeLocationManager(
                chosen.text(model::keys::NmeaSource), chosen.integer(model::keys::NmeaBaudRate), name);
        }});
    views::MainWindow window(delegate);
    user.setWindow(&window);
    QObject::connect(&window, &views::MainWindow::appearanceChanged, &window, applyTheme);
    views::QuickEntry quickEntry(delegate);
    app::TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &app::TerminationSignals::terminationRequested, &window, &QWidget::close);
    platform::LauncherBadge launcherBadge(bus, application.desktopFileName());
    QObject::connect(&delegate, &app::TMApplicationDelegate::dockBadgeChanged, &window,
        [&launcherBadge](const QString &badge) { launcherBadge.show(badge); });
    std::optional<views::TrayIcon> tray;
    const views::FirstPicture firstPicture(window, [&] {
        tray.emplace(delegate,
            QList{window.action(views::Command::QuickTask), window.action(views::Command::Sync),
                window.action(views::Command::Quit)});
        QObject::connect(&*tray, &views::TrayIcon::activated, &window, &views::MainWindow::showMainApplicationWindow);
        if (delegate.isFirstRun())
            window.showFirstRun();
        launcherBadge.show({}); // what a run that ended badly left there
        delegate.applicationDidFinishLaunching();
        instance.serve({
            .activate = [&window] { window.showMainApplicationWindow(); },
            .activateAction
            = [&](const QString &action, const QStringList &texts) { runAction(window, quickEntry, action, texts); },
            .addTask = [&quickEntry](const QString &text) { return quickEntry.addTaskService(text); },
        });
        runAction(window, quickEntry, arguments.action, arguments.actionArguments);
    });
    window.showMainApplicationWindow();
    const int status = app::TMApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}
