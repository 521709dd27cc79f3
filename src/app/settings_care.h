// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"

#include <QObject>
#include <thread>

namespace app {

/// Puts the settings into their file a moment after they were changed, and notices when another program changes them.
/// Main thread; the writing is done on a thread of its own, as a disk may be slow.
class SettingsCare final : public QObject
{
    Q_OBJECT

public:
    /// The settings must outlive the care of them.
    explicit SettingsCare(foundation::Settings &settings);

    /// To be called every few seconds. What has changed is written once it has not changed again since the last call.
    void tick();

Q_SIGNALS:
    /// Another program has changed the values of these keys.
    void changedElsewhere(const foundation::Settings::Keys &keys);
    /// The settings could not be written; said once, and tried again until it succeeds.
    void troubleFound(const foundation::Error &error);

private:
    void write();
    void endWriting(const foundation::Error &trouble);

    foundation::Settings &m_settings;
    std::size_t m_seenChanges = 0;
    bool m_isBusy = false;
    bool m_isFailing;
    std::jthread m_thread; // last: joined before the rest goes
};

} // namespace app
