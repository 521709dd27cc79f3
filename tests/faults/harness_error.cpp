// SPDX-License-Identifier: GPL-3.0-or-later
// Lets every call on a program's files fail, once and for good, and looks at what becomes of the user's work.
#include "faults/harness.h"
#include "faults/io_points.h"

#include <stdexcept>

int main(int argc, char **argv)
{
    faults::IoPoints io;
    std::vector<faults::IoPoint> points;
    const auto prepare = [&](std::uint64_t seed) {
        points = io.all(faults::scenarios(), faults::ioErrors(), seed);
        return static_cast<std::int64_t>(points.size());
    };
    const auto run = [&](std::int64_t number) -> std::optional<std::string> {
        const faults::IoPoint &point = points[static_cast<std::size_t>(number)];
        const auto failure = io.run(point);
        return failure ? std::optional(faults::IoPoints::describe(point) + ": " + *failure) : std::nullopt;
    };
    const auto seen = [&] {
        if (io.struck == 0 || io.acknowledged == 0)
            throw std::runtime_error("no fault struck or no save was acknowledged");
        return std::to_string(io.struck) + " faults struck, " + std::to_string(io.acknowledged)
            + " saves acknowledged, " + std::to_string(io.told) + " errors told";
    };
    return faults::runHarness(argc, argv, {"harness_error", prepare, run, seen});
}
