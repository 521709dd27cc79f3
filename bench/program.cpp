// SPDX-License-Identifier: GPL-3.0-or-later
// The built program on a screen of its own, watched from outside: how soon its window is there, what it takes of the
// memory with a hundred thousand tasks on show, how soon its hot key brings the quick entry, and what it costs while
// nobody does anything.
#include "generator.h"
#include "measure.h"
#include "watched_program.h"

#include "model/settings_defaults.h"
#include "support/private_bus.h"
#include "support/x_server.h"

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QWidget>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr int rounds = 11;

/// What a window of the toolkit costs at the least: one widget that draws two colours.
class EmptyWindow final : public QWidget
{
protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        painter.fillRect(rect().adjusted(0, height() / 2, 0, 0), Qt::darkGray);
    }
};

int showEmptyWindow(int count, char **arguments)
{
    QApplication application(count, arguments);
    EmptyWindow window;
    window.resize(1280, 800);
    window.show();
    return QApplication::exec();
}

struct Quelvin {
    QString program;
    QStringList arguments;
    QString emptyProgram;
    QStringList emptyArguments{QStringLiteral("--empty")};
};

void measureStart(const support::XServer &server, const Quelvin &quelvin)
{
    bench::Screen screen(server.display());
    std::vector<double> ours;
    std::vector<double> raw;
    const auto timed = [&screen](const QString &program, const QStringList &arguments) {
        const auto begin = std::chrono::steady_clock::now();
        const bench::WatchedProgram started(program, arguments);
        screen.waitForContent(screen.nextWindow());
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    for (int round = 0; round < rounds; ++round) {
        raw.push_back(timed(quelvin.emptyProgram, quelvin.emptyArguments));
        ours.push_back(timed(quelvin.program, quelvin.arguments));
    }
    bench::printRatio("start to the window with Today in it (raw: an empty Qt window)", bench::middle(ours) * 1000,
        bench::middle(raw) * 1000, "ms", 6);
}

/// From the key that is pressed, by a tool whose own start is in it, to the window with its content.
void measureHotKey(const support::XServer &server, bench::Screen &screen)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        server.xdotool(QStringLiteral("key --delay 0 ctrl+super+t")); // by itself it lingers over each key
        const auto entry = screen.nextWindow();
        screen.waitForContent(entry);
        times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() * 1000);
        server.xdotool(QStringLiteral("windowfocus %1 key Escape").arg(entry));
        std::this_thread::sleep_for(200ms);
    }
    bench::printLimit("the quick entry, from its hot key pressed to its window", bench::middle(times),
        *std::max_element(times.begin(), times.end()), "ms", 60);
}

void measureRest(const support::XServer &server, const Quelvin &quelvin, std::chrono::seconds idle)
{
    bench::Screen screen(server.display());
    const bench::WatchedProgram program(quelvin.program, quelvin.arguments);
    const auto window = screen.nextWindow();
    screen.waitForContent(window);
    std::this_thread::sleep_for(10s); // the look at the store and its copy at the start go by
    bench::printFigure("memory after the start", program.memory(), "MiB", "");
    measureHotKey(server, screen);
    server.xdotool(QStringLiteral("windowfocus %1").arg(window));
    server.xdotool(QStringLiteral("key --delay 100 ctrl+f x BackSpace")); // an empty search shows every task
    std::this_thread::sleep_for(3s);
    bench::printFigure("memory with the list of every task", program.memory(), "MiB", "<= 250");
    server.xdotool(QStringLiteral("key --delay 100 Escape"));
    std::this_thread::sleep_for(2s);

    const bench::Cost before = program.cost();
    std::this_thread::sleep_for(idle);
    const bench::Cost after = program.cost();
    const auto seconds = static_cast<double>(idle.count());
    bench::printFigure("idle: wake-ups", static_cast<double>(after.wakeUps - before.wakeUps) / seconds, "/s", "<= 1");
    bench::printFigure(
        "idle: of a processor core", (after.processorSeconds - before.processorSeconds) / seconds * 100, "%", "< 0.2");
}

} // namespace

int main(int count, char **arguments)
{
    if (count == 2 && std::strcmp(arguments[1], "--empty") == 0)
        return showEmptyWindow(count, arguments);
    try {
        const support::XServer server;
        const support::PrivateBus bus;
        qputenv("DISPLAY", server.display().toLatin1());
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
        const bench::Workplace workplace;
        bench::generate(workplace.path(), bench::Amount()).reset();
        const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
        const QString folder = QString::fromStdString(workplace.path().string());
        const QString settings = folder + QStringLiteral("/settings.json");
        QFile file(settings);
        if (!file.open(QIODevice::WriteOnly) || file.write("{\"HasBeenRun\": true}") < 0)
            throw std::runtime_error("the settings cannot be written");
        file.close();
        const Quelvin quelvin{
            .program = QString::fromStdString((self.parent_path() / "quelvin").string()),
            .arguments = {QStringLiteral("--store"), folder, QStringLiteral("--settings"), settings},
            .emptyProgram = QString::fromStdString(self.string()),
        };
        bench::printHeader("the program, 100,000 tasks");
        measureStart(server, quelvin);
        measureRest(server, quelvin, std::chrono::seconds(count > 1 ? std::max(std::atoi(arguments[1]), 10) : 180));
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
