// SPDX-License-Identifier: GPL-3.0-or-later
#include "hotkeys/qvl_hot_key_center.h"

#include "hotkeys/qvl_key_code_translator.h"

#include <algorithm>

namespace hotkeys {

QVLHotKeyCenter::~QVLHotKeyCenter()
{
    while (!m_hotKeys.empty())
        unregisterHotKey(*m_hotKeys.back());
}

bool QVLHotKeyCenter::registerHotKey(QVLHotKey &hotKey)
{
    m_lastError.reset();
    unregisterHotKey(hotKey);
    if (!hotKey.keyCombo().isValidHotKeyCombo())
        return true;
    installEventHandler();
    hotKey.setHotKeyID({hotKeySignature, ++m_lastNumber});
    if (auto registered = m_backEnd.registerEventHotKey(hotKey); !registered) {
        hotKey.setHotKeyID({});
        m_lastError = std::move(registered.error());
        return false;
    }
    m_hotKeys.push_back(&hotKey);
    return true;
}

void QVLHotKeyCenter::unregisterHotKey(QVLHotKey &hotKey)
{
    const auto found = std::find(m_hotKeys.begin(), m_hotKeys.end(), &hotKey);
    if (found == m_hotKeys.end())
        return;
    m_hotKeys.erase(found);
    m_backEnd.unregisterEventHotKey(hotKey.hotKeyID());
    hotKey.setHotKeyID({});
}

void QVLHotKeyCenter::installEventHandler()
{
    if (std::exchange(m_hasEventHandler, true))
        return;
    m_backEnd.installEventHandler({
        .event = [this](HotKeyID id, HotKeyEvent event) { sendEvent(id, event); },
        .failure =
            [this](const foundation::Error &error) {
                if (m_lateFailure)
                    m_lateFailure(error);
            },
    });
}

void QVLHotKeyCenter::sendEvent(HotKeyID id, HotKeyEvent event)
{
    if (event != HotKeyEvent::Pressed)
        return;
    const auto found = std::find_if(
        m_hotKeys.begin(), m_hotKeys.end(), [id](const QVLHotKey *hotKey) { return hotKey->matchesHotKeyID(id); });
    if (found != m_hotKeys.end())
        (*found)->invoke();
}

std::vector<std::string> QVLHotKeyCenter::parts(const QVLKeyCombo &combo) const
{
    return QVLKeyCodeTranslator::parts(combo, m_backEnd.keyLabel(combo.keyCode()));
}

} // namespace hotkeys
