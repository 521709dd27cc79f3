// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>

namespace app {

/// Makes the process one that leaks nothing of its user: no core dumps, no reading of its memory by others of the same
/// user, files for this user alone; and one that a closed pipe or a full quota does not end. Before anything else.
void setUpProcess();

/// Tells of SIGTERM, SIGINT and SIGHUP on the main thread, so that the program saves before it goes. One at a time.
class TerminationSignals final : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;

Q_SIGNALS:
    void terminationRequested();

private:
    void receive();

    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace app
