// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <cstdint>
#include <sys/types.h>

struct xcb_connection_t;

namespace bench {

/// Looks at an X server as a person does at a screen: when a window is there, and when something is drawn in it.
class Screen
{
public:
    explicit Screen(const QString &display);
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;
    ~Screen();

    /// Waits for the next window of more than 200 pixels that is mapped; its id.
    std::uint32_t nextWindow();
    /// Waits until the middle of a window shows more than one colour.
    void waitForContent(std::uint32_t window);

private:
    xcb_connection_t *m_connection;
};

/// What a running program costs, by what the kernel tells of it.
struct Cost {
    double processorSeconds = 0;
    std::int64_t wakeUps = 0; ///< times that any of its threads had waited and ran again
};

/// A program that was started and is ended with this object.
class WatchedProgram
{
public:
    WatchedProgram(const QString &program, const QStringList &arguments);
    WatchedProgram(const WatchedProgram &) = delete;
    WatchedProgram &operator=(const WatchedProgram &) = delete;
    ~WatchedProgram();

    [[nodiscard]] Cost cost() const;
    /// What of the memory is its own, with its share of what it has in common with others, in MiB.
    [[nodiscard]] double memory() const;

private:
    pid_t m_process = 0;
};

} // namespace bench
