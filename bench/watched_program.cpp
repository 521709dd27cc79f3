// SPDX-License-Identifier: GPL-3.0-or-later
#include "watched_program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <signal.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

extern char **environ;

namespace bench {

using namespace std::chrono_literals;

namespace {

constexpr auto patience = 60s;
constexpr auto lookAgain = 500us;

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

/// The first true answer of `look`.
template <typename Look> auto waitFor(const char *what, const Look &look)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < end) {
        if (const auto seen = look())
            return seen;
        std::this_thread::sleep_for(lookAgain);
    }
    throw std::runtime_error(std::string("waited in vain for ") + what);
}

std::string read(const std::filesystem::path &file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

double numberAfter(const std::string &text, const std::string &name)
{
    const std::size_t place = text.find(name);
    return place == std::string::npos ? 0 : std::strtod(text.c_str() + place + name.size(), nullptr);
}

} // namespace

Screen::Screen(const QString &display) : m_connection(xcb_connect(display.toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(m_connection))
        throw std::runtime_error("the X server does not answer");
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    xcb_change_window_attributes(m_connection, root, XCB_CW_EVENT_MASK, &events);
    xcb_flush(m_connection);
}

Screen::~Screen()
{
    xcb_disconnect(m_connection);
}

std::uint32_t Screen::nextWindow()
{
    return waitFor("a window", [this]() -> std::uint32_t {
        while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
            if ((event->response_type & 0x7fU) != XCB_MAP_NOTIFY)
                continue;
            const auto window = reinterpret_cast<const xcb_map_notify_event_t *>(event.get())->window;
            const Owned<xcb_get_geometry_reply_t> place{
                xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr)};
            if (place && place->width > 200)
                return window;
        }
        return 0;
    });
}

void Screen::waitForContent(std::uint32_t window)
{
    const Owned<xcb_get_geometry_reply_t> size{
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr)};
    if (!size)
        throw std::runtime_error("the window went");
    const auto column = static_cast<std::int16_t>(size->width / 2);
    const auto top = static_cast<std::int16_t>(size->height / 3);
    const auto height = static_cast<std::uint16_t>(size->height / 3);
    waitFor("the window's content", [&] {
        const Owned<xcb_get_image_reply_t> image{xcb_get_image_reply(m_connection,
            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, column, top, 100, height, ~0U), nullptr)};
        if (!image)
            return false;
        const auto *pixels = reinterpret_cast<const std::uint32_t *>(xcb_get_image_data(image.get()));
        return std::any_of(pixels, pixels + 100 * height, [pixels](std::uint32_t pixel) { return pixel != *pixels; });
    });
}

WatchedProgram::WatchedProgram(const QString &program, const QStringList &arguments)
{
    std::vector<std::string> words{program.toStdString()};
    for (const QString &argument : arguments)
        words.push_back(argument.toStdString());
    std::vector<char *> pointers;
    for (std::string &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    if (posix_spawn(&m_process, pointers[0], nullptr, nullptr, pointers.data(), environ) != 0)
        throw std::runtime_error(words[0] + " does not start");
}

WatchedProgram::~WatchedProgram()
{
    ::kill(m_process, SIGTERM);
    ::waitpid(m_process, nullptr, 0);
}

Cost WatchedProgram::cost() const
{
    Cost cost;
    const std::filesystem::path tasks = "/proc/" + std::to_string(m_process) + "/task";
    for (const auto &thread : std::filesystem::directory_iterator(tasks)) {
        cost.wakeUps
            += static_cast<std::int64_t>(numberAfter(read(thread.path() / "status"), "\nvoluntary_ctxt_switches:"));
        cost.processorSeconds += numberAfter(read(thread.path() / "schedstat"), "") / 1e9;
    }
    return cost;
}

double WatchedProgram::memory() const
{
    return numberAfter(read("/proc/" + std::to_string(m_process) + "/smaps_rollup"), "\nPss:") / 1024;
}

} // namespace bench
