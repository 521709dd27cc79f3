// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace faults {

/// Whether this process holds more and more: memory may grow by 5 % after the warm-up, descriptors not at all.
class Growth
{
public:
    /// `warmUp` cases after which caches and pools have the size that they keep.
    explicit Growth(std::int64_t warmUp) : m_warmUp(warmUp) { }

    /// Looks after the case with this number; what is wrong.
    [[nodiscard]] std::optional<std::string> judge(std::int64_t number);
    /// What was held at first and at last; throws where there were too few cases to tell.
    [[nodiscard]] std::string seen() const;
    /// Loses a little where a bug is planted that is to be found.
    static void leak();

private:
    struct Holdings {
        std::int64_t memory = 0; ///< bytes that are resident
        std::ptrdiff_t descriptors = 0;

        static Holdings now();
    };

    std::int64_t m_warmUp;
    std::int64_t m_judged = 0;
    int m_above = 0; ///< cases on end
    Holdings m_before;
    Holdings m_after;
};

} // namespace faults
