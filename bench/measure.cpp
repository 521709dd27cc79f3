// SPDX-License-Identifier: GPL-3.0-or-later
#include "measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <malloc.h>
#include <vector>

namespace bench {

double middle(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

namespace {
double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}
} // namespace

double secondsFor(const std::function<void()> &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double secondsSinceStart()
{
    static const auto start = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double processorSecondsFor(const std::function<void()> &work)
{
    const double start = processorSeconds();
    work();
    return processorSeconds() - start;
}

Pair alternate(int rounds, const std::function<void()> &ours, const std::function<void()> &raw, Measure measure,
    const std::function<void()> &before)
{
    std::vector<double> our;
    std::vector<double> limit;
    for (int i = 0; i < rounds; ++i) {
        before();
        limit.push_back(measure(raw));
        before();
        our.push_back(measure(ours));
    }
    return {middle(our), middle(limit)};
}

double median(int rounds, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
        times.push_back(secondsFor(work));
    return middle(times);
}

double heapInUse()
{
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void printHeader(const std::string &title)
{
    std::printf("\n%-58s %12s %12s %8s  %s\n", title.c_str(), "ours", "raw", "ratio", "reach");
}

void printRatio(const std::string &work, double ours, double raw, const std::string &unit, double reach)
{
    std::printf("%-58s %9.3f %-2s %9.3f %-2s %8.2f  <= %.2f%s\n", work.c_str(), ours, unit.c_str(), raw, unit.c_str(),
        ours / raw, reach, ours / raw <= reach ? "" : "  MISSED");
    std::fflush(stdout);
}

void printLimit(const std::string &work, double middle, double worst, const std::string &unit, double reach)
{
    std::printf("%-58s %9.3f %-2s  worst %9.3f %-2s    <= %.4g%s\n", work.c_str(), middle, unit.c_str(), worst,
        unit.c_str(), reach, middle <= reach ? "" : "  MISSED");
    std::fflush(stdout);
}

void printFigure(const std::string &work, double ours, const std::string &unit, const std::string &reach)
{
    std::printf("%-58s %9.3f %-2s %12s %8s  %s\n", work.c_str(), ours, unit.c_str(), "", "", reach.c_str());
    std::fflush(stdout);
}

} // namespace bench
