// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/grid.h"

#include <atomic>
#include <gmock/gmock.h>
#include <thread>

using namespace network;
using testing::IsEmpty;

namespace {

/// What went wrong in the grid without TLS.
std::vector<std::string> tryGrid()
{
    const auto cells = operations().size() * faults().size();
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::vector<std::string> wrong;
    const auto work = [&] {
        HurriedTransport transport;
        for (std::size_t number = next++; number < cells; number = next++) {
            const Cell cell{operations()[number % operations().size()], faults()[number / operations().size()]};
            const auto verdict = tryCell(cell, transport, [&](bool hurried) { transport.beInAHurry(hurried); });
            const std::scoped_lock lock(mutex);
            if (verdict)
                wrong.push_back(std::string(cell.fault.name) + ": " + cell.operation.name + " " + *verdict);
        }
    };
    {
        std::vector<std::jthread> workers;
        for (int i = 0; i < 16; ++i) // they wait more than they work
            workers.emplace_back(work);
    }
    std::printf("%zu faults, %zu operations, %zu cells, %zu failures\n", faults().size(), operations().size(), cells,
        wrong.size());
    return wrong;
}

} // namespace

TEST(NetworkGrid, F25ToF37NoFaultIsBelievedOrOutlastsItsRequest)
{
    const LogReader log;
    EXPECT_THAT(tryGrid(), IsEmpty());
    EXPECT_EQ(log.leak(), "");
    EXPECT_GT(log.lines(), 0);
}
