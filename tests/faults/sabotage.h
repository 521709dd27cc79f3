// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace faults {

/// Bugs that can be planted in a test program to see whether it finds them. Most rewrite the SQL that the object store
/// hands to SQLite, on its way; the store itself knows nothing of it.

/// Plants the bug of this name for the rest of the process; false when there is none of that name.
[[nodiscard]] bool plant(std::string_view name);
[[nodiscard]] bool isPlanted(std::string_view name);
[[nodiscard]] std::vector<std::string> plantableBugs();

/// Keeps the SQL of this thread as it is while it lives: a service in this process has no bugs planted in it.
class Spared
{
public:
    Spared();
    Spared(const Spared &) = delete;
    Spared &operator=(const Spared &) = delete;
    ~Spared();
};

} // namespace faults
