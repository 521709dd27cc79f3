// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/growth.h"

#include "faults/sabotage.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <stdexcept>
#include <unistd.h>

namespace faults {

namespace {

constexpr int patience = 20; ///< a leak stays; what a thread's pool holds for the moment goes
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double mostGrowth = 1e6; // a sanitizer keeps what is freed, and finds leaks itself
#else
constexpr double mostGrowth = 1.05;
#endif

} // namespace

Growth::Holdings Growth::Holdings::now()
{
    ::malloc_trim(0); // what was freed is no leak
    std::int64_t size = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return {resident * ::sysconf(_SC_PAGESIZE), std::distance(begin(open), end(open))};
}

std::optional<std::string> Growth::judge(std::int64_t number)
{
    if (number < m_warmUp)
        return {};
    m_after = Holdings::now();
    // a service closes its end of a connection a moment after the client
    for (int i = 0; i < 200 && m_judged > 0 && m_after.descriptors != m_before.descriptors; ++i) {
        ::usleep(10'000);
        m_after = Holdings::now();
    }
    if (m_judged++ == 0) {
        ::usleep(500'000);
        m_before = Holdings::now();
        return {};
    }
    const auto grown = [&](const char *what, std::int64_t before, std::int64_t after) {
        return std::string(what) + ": " + std::to_string(before) + " after case " + std::to_string(m_warmUp) + ", "
            + std::to_string(after) + " after " + std::to_string(number);
    };
    if (m_after.descriptors != m_before.descriptors)
        return grown("descriptors", m_before.descriptors, m_after.descriptors);
    const bool isAbove = static_cast<double>(m_after.memory) > static_cast<double>(m_before.memory) * mostGrowth;
    m_above = isAbove ? m_above + 1 : 0;
    if (m_above == patience)
        return grown("bytes of memory", m_before.memory, m_after.memory);
    return {};
}

std::string Growth::seen() const
{
    if (m_judged == 0)
        throw std::runtime_error("too few cases to tell a leak from a start");
    char text[160];
    std::snprintf(text, sizeof text, "%.2f MiB and %td descriptors after case %lld, %+.2f %% and %td at the end",
        static_cast<double>(m_before.memory) / 1048576, m_before.descriptors, static_cast<long long>(m_warmUp),
        100.0 * static_cast<double>(m_after.memory - m_before.memory) / static_cast<double>(m_before.memory),
        m_after.descriptors);
    return text;
}

void Growth::leak()
{
    if (isPlanted("memory-leaked")) {
        constexpr std::size_t size = 16 * 1024;
        auto *lost = new volatile char[size]; // NOLINT: to be found
        for (std::size_t i = 0; i < size; ++i)
            lost[i] = 'x'; // a compiler may leave out what nobody can see
    }
    if (isPlanted("descriptor-leaked"))
        static_cast<void>(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

} // namespace faults
