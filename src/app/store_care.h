// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "objectstore/store.h"

#include <QObject>
#include <thread>

namespace app {

/// Looks after the open store, on a thread of its own that keeps no window waiting: looks for damage once, and copies
/// the store once a day. A store that can only be read is only looked at.
///
/// Main thread. What goes wrong comes as `troubleFound`; destruction waits for the work under way.
class StoreCare final : public QObject
{
    Q_OBJECT

public:
    /// `store` must outlive the care; `backups` is the folder of the daily copies.
    StoreCare(const objectstore::Store &store, std::filesystem::path backups);

    // What is asked for while the work before is under way is left out.
    /// Looks for damage, and copies a store that has none unless it was copied today.
    void checkAndBackUp();
    /// Copies the store unless it was copied today.
    void backUp();

Q_SIGNALS:
    void troubleFound(const foundation::Error &error);
    /// The work that was asked for is done, well or ill.
    void finished();

private:
    void run(bool isChecking);

    const objectstore::Store &m_store;
    std::filesystem::path m_backups;
    bool m_isBusy = false;
    std::jthread m_thread; // last: joined before the rest goes
};

} // namespace app
