// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Seconds that `work` takes on the wall clock.
[[nodiscard]] double secondsFor(const std::function<void()> &work);

/// Seconds since the program started, for telling the steps of a long piece of work apart.
[[nodiscard]] double secondsSinceStart();

/// Seconds that this thread computes for `work`: for work that no other thread, process or disk has a part in.
[[nodiscard]] double processorSecondsFor(const std::function<void()> &work);

using Measure = double (*)(const std::function<void()> &);

/// The medians of `rounds` alternating runs of two pieces of work, so that both meet the same weather. `before` is done
/// ahead of each and not counted.
struct Pair {
    double ours = 0; ///< seconds
    double raw = 0;
};
[[nodiscard]] Pair alternate(
    int rounds, const std::function<void()> &ours, const std::function<void()> &raw, Measure measure = secondsFor,
    const std::function<void()> &before = [] {});
/// The median on the wall clock.
[[nodiscard]] double median(int rounds, const std::function<void()> &work);

/// The middle one of some figures.
[[nodiscard]] double middle(std::vector<double> values);

/// Bytes that the program holds on the heap now.
[[nodiscard]] double heapInUse();

void printHeader(const std::string &title);
/// One row: our figure, the raw one in the same unit, their ratio and what is to be reached.
void printRatio(const std::string &work, double ours, double raw, const std::string &unit, double reach);
/// One row with the middle of some figures, the worst of them, and what the middle one is to reach.
void printLimit(const std::string &work, double middle, double worst, const std::string &unit, double reach);
/// One row without a raw limit.
void printFigure(const std::string &work, double ours, const std::string &unit, const std::string &reach);

} // namespace bench
