// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings_care.h"

namespace app {

using foundation::Error;

SettingsCare::SettingsCare(foundation::Settings &settings)
    : m_settings(settings)
    , m_isFailing(settings.loadError()
          && settings.loadError()->code == static_cast<int>(foundation::SettingsErrorCode::Unreadable)) // it was said
{ }

void SettingsCare::tick()
{
    if (m_isBusy)
        return;
    const std::size_t changes = m_settings.unsavedChanges();
    if (changes > 0 && changes == m_seenChanges)
        return write();
    m_seenChanges = changes;
    if (const auto keys = m_settings.refresh(); !keys.empty())
        Q_EMIT changedElsewhere(keys);
}

void SettingsCare::write()
{
    m_isBusy = true;
    m_thread = std::jthread([this](const std::stop_token &stop) {
        const auto written = m_settings.synchronizeWithSecrets({.stop = stop});
        const Error trouble = written ? Error() : written.error();
        QMetaObject::invokeMethod(
            this, [this, trouble] { endWriting(trouble); }, Qt::QueuedConnection);
    });
}

void SettingsCare::endWriting(const Error &trouble)
{
    m_isBusy = false;
    m_seenChanges = 0;
    const bool wasFailing = std::exchange(m_isFailing, static_cast<bool>(trouble));
    if (trouble && !wasFailing)
        Q_EMIT troubleFound(trouble);
}

} // namespace app
