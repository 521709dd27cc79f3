// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/random_number.h"

#include <mutex>
#include <random>

namespace objectstore {

std::uint64_t randomNumber()
{
    static std::mutex mutex;
    static std::mt19937_64 generator{std::random_device{}()};
    const std::scoped_lock lock(mutex);
    return generator();
}

} // namespace objectstore
