// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"

#include <chrono>

namespace app {

/// Something that is due again and again, told by the clock on the wall, so that the time passes while the computer
/// sleeps, too. A value; whoever owns it asks now and then.
class RepeatingSchedule
{
public:
    void start(foundation::Instant now, std::chrono::seconds interval)
    {
        m_last = now;
        m_interval = interval;
    }
    void stop() { m_interval = {}; }

    /// Whether the interval has passed since it was last due. However much later it is, it was due once; a clock that
    /// was set back starts the interval anew, so that the wait is never longer than one.
    [[nodiscard]] bool isDue(foundation::Instant now)
    {
        if (m_interval <= std::chrono::seconds::zero())
            return false;
        if (now < m_last)
            m_last = now;
        if (now.seconds - m_last.seconds < static_cast<double>(m_interval.count()))
            return false;
        m_last = now;
        return true;
    }

private:
    foundation::Instant m_last;
    std::chrono::seconds m_interval{};
};

} // namespace app
