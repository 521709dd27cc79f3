// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_key.h"

#include "foundation/log.h"

namespace toodledo {

namespace {

constexpr std::string_view keySetting = "toodledoKey";
constexpr std::string_view obtainedSetting = "lastKeyUpdate";
constexpr std::string_view userSetting = "toodledoKeyUserId";
constexpr double longestUse = 10'800; // seconds

} // namespace

StoredKey::Entry StoredKey::load(const std::string &userId, foundation::Instant now) const
{
    Entry entry{std::nullopt, m_settings.date(obtainedSetting)};
    std::string key = m_settings.text(keySetting);
    // A key without a user is from before users were noted; one of nobody is what an account's creation left.
    const auto user = m_settings.value(userSetting);
    const bool ofThisUser = !user || *user == foundation::SettingValue(userId);
    const bool ofTheFuture = entry.obtained && *entry.obtained > now;
    if (!key.empty() && ofThisUser && !ofTheFuture)
        entry.key = std::move(key);
    return entry;
}

bool StoredKey::isFresh(const Entry &entry, foundation::Instant now)
{
    return entry.key && entry.obtained && now.seconds - entry.obtained->seconds <= longestUse;
}

void StoredKey::store(const std::optional<std::string> &key, const std::string &userId, foundation::Instant now)
{
    m_settings.set(obtainedSetting, now);
    if (key) {
        m_settings.set(keySetting, *key);
        m_settings.set(userSetting, userId);
        save();
    } else {
        drop();
    }
}

void StoredKey::drop()
{
    m_settings.remove(keySetting);
    m_settings.remove(userSetting);
    save();
}

void StoredKey::save()
{
    // A key that is not kept costs one request more in the next run.
    if (const auto saved = m_settings.synchronize(); !saved)
        foundation::logLine("The authentication key could not be stored: " + saved.error().detail);
}

} // namespace toodledo
