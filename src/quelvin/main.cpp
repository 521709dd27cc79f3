// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/process_setup.h"
#include "app/store_opening.h"
#include "app/text.h"
#include "app/tm_application_delegate.h"
#include "model/settings_defaults.h"
#include "views/icons.h"
#include "views/main_window.h"
#include "views/theme.h"
#include "views/translations.h"
#include "views/window_user_interaction.h"

#include <QCommandLineParser>

namespace {

struct Arguments {
    std::filesystem::path store;
    std::filesystem::path settings;
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
    parser.addOptions({store, settings});
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);
    Arguments arguments{model::applicationSupportFolder(), model::settingsFile()};
    if (parser.isSet(store))
        arguments.store = parser.value(store).toStdString();
    if (parser.isSet(settings))
        arguments.settings = parser.value(settings).toStdString();
    return arguments;
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
    app::TMApplication application(argc, argv);
    application.setApplicationVersion(QStringLiteral(QUELVIN_VERSION));
    const views::Translations translations(QLocale::system());
    const Arguments arguments = parse(application);

    foundation::JsonSettingsFile settingsFile(arguments.settings);
    foundation::Settings settings(settingsFile, model::settingsDefaults());
    const foundation::SystemClock clock;
    const QPalette desktopPalette = QGuiApplication::palette();
    const auto applyTheme = [&] {
        auto theme = views::Theme::of(desktopPalette, app::toQString(settings.text("Appearance")));
        theme.takeUserColors(settings);
        theme.apply();
    };
    applyTheme();
    QGuiApplication::setWindowIcon(views::icon(QStringLiteral("quelvin")));
    views::WindowUserInteraction user;
    if (settings.loadError())
        user.presentError(*settings.loadError());

    auto store = app::openStore(arguments.store, clock, user);
    if (!store)
        return fail(user, store.error());
    app::TMApplicationDelegate delegate({.application = application,
        .store = std::move(store->tasks),
        .settings = settings,
        .clock = clock,
        .user = user});
    views::MainWindow window(delegate);
    user.setWindow(&window);
    window.showMainApplicationWindow();

    QObject::connect(&window, &views::MainWindow::appearanceChanged, &window, applyTheme);
    app::TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &app::TerminationSignals::terminationRequested, &window, &QWidget::close);
    if (delegate.isFirstRun())
        window.showFirstRun();
    delegate.applicationDidFinishLaunching();
    const int status = app::TMApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}
