// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/process_setup.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace app {

namespace {

constexpr std::array handled{SIGTERM, SIGINT, SIGHUP};
std::array<int, 2> pipeEnds{-1, -1}; // a signal handler can reach nothing but what is static

extern "C" void passOn(int)
{
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(pipeEnds[1], &byte, 1);
}

} // namespace

void setUpProcess()
{
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
    ::umask(S_IRWXG | S_IRWXO);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

TerminationSignals::TerminationSignals()
{
    if (::pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals then end the program as they always do; what was saved stays
    m_notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &TerminationSignals::receive);
    struct sigaction action = {};
    action.sa_handler = passOn;
    action.sa_flags = SA_RESTART;
    for (const int signal : handled)
        ::sigaction(signal, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    if (!m_notifier)
        return;
    for (const int signal : handled)
        std::signal(signal, SIG_DFL);
    for (int &end : pipeEnds) {
        ::close(end);
        end = -1;
    }
}

void TerminationSignals::receive()
{
    std::array<char, 16> bytes{};
    while (::read(pipeEnds[0], bytes.data(), bytes.size()) > 0)
        continue;
    Q_EMIT terminationRequested();
}

} // namespace app
