// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/typing_pause.h"

#include <algorithm>

namespace views {

namespace {
constexpr qint64 pause = 400; // milliseconds
constexpr qint64 longestWithoutOne = 1500; // a row that moves at every key would be a nuisance, and a lost title, too
} // namespace

void TypingPause::typed()
{
    if (!m_timer.isActive())
        m_sinceFirst.start();
    const qint64 left = std::max<qint64>(longestWithoutOne - m_sinceFirst.elapsed(), 0);
    m_timer.start(static_cast<int>(std::min(pause, left)), this);
}

void TypingPause::stop()
{
    m_timer.stop();
}

void TypingPause::timerEvent(QTimerEvent *)
{
    stop();
    Q_EMIT paused();
}

} // namespace views
