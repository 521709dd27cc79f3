// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/settings.h"

#include "foundation/log.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <thread>

namespace foundation {

namespace {

// A value of another kind is read where it says the same; otherwise it counts as never set, and the default holds.

std::optional<std::int64_t> asInteger(const SettingValue &value)
{
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return *number;
    if (const auto *flag = std::get_if<bool>(&value))
        return *flag ? 1 : 0;
    if (const auto *real = std::get_if<double>(&value); real && std::fabs(*real) < 9e18)
        return static_cast<std::int64_t>(*real);
    if (const auto *text = std::get_if<std::string>(&value)) {
        std::int64_t number = 0;
        const auto [end, failure] = std::from_chars(text->data(), text->data() + text->size(), number);
        if (failure == std::errc{} && end == text->data() + text->size() && !text->empty())
            return number;
    }
    return std::nullopt;
}

std::optional<bool> asBoolean(const SettingValue &value)
{
    if (const auto number = asInteger(value))
        return *number != 0;
    return std::nullopt;
}

template <typename Kind> std::optional<Kind> as(const SettingValue &value)
{
    const auto *held = std::get_if<Kind>(&value);
    return held ? std::optional<Kind>(*held) : std::nullopt;
}

template <typename Table> const SettingValue *find(const Table &table, std::string_view key)
{
    const auto entry = table.find(key);
    return entry == table.end() ? nullptr : &entry->second;
}

} // namespace

Settings::Settings(SettingsFile &file, SettingsTable defaults, SecretSettings secrets)
    : m_file(file), m_secrets(std::move(secrets)), m_defaults(std::move(defaults))
{
    if (auto table = m_file.read())
        m_values = std::move(*table);
    else
        m_loadError = std::move(table.error());
}

/// What `read` makes of the value set for `key`, or else of its default.
template <typename Read> auto Settings::inForce(std::string_view key, Read read) const
{
    const std::scoped_lock lock(m_mutex);
    decltype(read(std::declval<const SettingValue &>())) result;
    if (const SettingValue *set = find(m_values, key))
        result = read(*set);
    if (!result)
        if (const SettingValue *preset = find(m_defaults, key))
            result = read(*preset);
    return result;
}

bool Settings::boolean(std::string_view key) const
{
    return inForce(key, asBoolean).value_or(false);
}

std::int64_t Settings::integer(std::string_view key) const
{
    return inForce(key, asInteger).value_or(0);
}

std::string Settings::text(std::string_view key) const
{
    return inForce(key, as<std::string>).value_or(std::string());
}

std::string Settings::secretMark(std::string_view key)
{
    return std::string(key).append("IsInKeyring");
}

Result<std::string> Settings::secret(std::string_view key, const Waiting &waiting) const
{
    {
        const std::scoped_lock lock(m_mutex);
        const SettingValue *known = find(m_values, key); // in the file, or on its way into the store
        const SettingValue *mark = find(m_values, secretMark(key));
        const std::string text = known ? as<std::string>(*known).value_or("") : std::string();
        if (!text.empty() || !mark)
            return text;
    }
    const auto failure = [](SecretStoreErrorCode code, std::string sentence) {
        return Failure(Error{secretStoreErrorDomain, static_cast<int>(code), std::move(sentence), {}});
    };
    if (!m_secrets.store)
        return failure(SecretStoreErrorCode::NoStore,
            "The password lies in the keyring of your desktop, which this program does not use.");
    auto kept = m_secrets.store->read(std::string(key), waiting);
    if (!kept)
        return Failure(std::move(kept.error()));
    if (!*kept)
        return failure(SecretStoreErrorCode::Lost,
            "The password is no longer in the keyring of your desktop. Enter it once more.");
    return std::move(**kept);
}

std::optional<Instant> Settings::date(std::string_view key) const
{
    return inForce(key, as<Instant>);
}

std::optional<SettingValue> Settings::value(std::string_view key) const
{
    return inForce(key, [](const SettingValue &value) { return std::optional<SettingValue>(value); });
}

std::optional<SettingValue> Settings::registeredDefault(std::string_view key) const
{
    const SettingValue *preset = find(m_defaults, key);
    return preset ? std::optional<SettingValue>(*preset) : std::nullopt;
}

SettingsTable Settings::all() const
{
    const std::scoped_lock lock(m_mutex);
    SettingsTable table = m_values;
    table.insert(m_defaults.begin(), m_defaults.end());
    return table;
}

bool Settings::isSecret(std::string_view key) const
{
    return m_secrets.store && m_secrets.keys.contains(key);
}

void Settings::set(std::string_view key, SettingValue value)
{
    const std::scoped_lock lock(m_mutex);
    const auto entry = m_values.find(key);
    if (entry != m_values.end() && entry->second == value && !isSecret(key))
        return; // a secret that is typed again may lie in the file and belong into the store
    m_values.insert_or_assign(std::string(key), std::move(value));
    noteChange(key);
}

void Settings::remove(std::string_view key)
{
    const std::scoped_lock lock(m_mutex);
    if (isSecret(key) && m_values.contains(secretMark(key)))
        m_values.insert_or_assign(std::string(key), std::string()); // which takes it out of the store
    else if (m_values.erase(std::string(key)) == 0)
        return;
    noteChange(key);
}

void Settings::noteChange(std::string_view key)
{
    m_changed.emplace(key);
    m_refused.erase(std::string(key));
    m_settled.erase(std::string(key));
    ++m_changes;
}

/// Nothing waits to be written where all that is left was refused.
void Settings::settleChanges()
{
    if (std::includes(m_refused.begin(), m_refused.end(), m_changed.begin(), m_changed.end()))
        m_changes = 0;
}

std::size_t Settings::unsavedChanges() const
{
    const std::scoped_lock lock(m_mutex);
    return m_changes;
}

Result<void> Settings::synchronize()
{
    return write();
}

Result<void> Settings::synchronizeWithSecrets(const Waiting &waiting)
{
    if (auto written = write(); !written) // a secret that has to wait keeps nothing else waiting
        return written;
    std::unique_lock keeping(m_keeping, std::defer_lock);
    const auto end = std::chrono::steady_clock::now() + waiting.patience;
    while (!keeping.try_lock()) {
        if (std::chrono::steady_clock::now() > end || waiting.stop.stop_requested())
            return Failure(Error{secretStoreErrorDomain, static_cast<int>(SecretStoreErrorCode::Refused),
                "The keyring of your desktop is waiting for you.", {}});
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (m_secrets.store) {
        for (const std::string &key : m_secrets.keys) {
            if (auto kept = keepSecret(key, waiting); !kept)
                return kept;
        }
    }
    return write();
}

/// Brings a secret that has changed into the secret store. A mark takes its place among the settings; where nothing
/// could keep it, it stays one of them.
Result<void> Settings::keepSecret(const std::string &key, const Waiting &waiting)
{
    const std::string mark = secretMark(key);
    std::string secret;
    {
        const std::scoped_lock lock(m_mutex);
        const SettingValue *value = find(m_values, key);
        if (!m_changed.contains(key) || m_refused.contains(key) || m_settled.contains(key))
            return {};
        if (value)
            secret = as<std::string>(*value).value_or("");
        if (secret.empty() && !m_values.contains(mark)) {
            m_settled.insert(key);
            return {};
        }
    }
    auto kept = secret.empty() ? m_secrets.store->remove(key, waiting) : m_secrets.store->write(key, secret, waiting);
    const bool isRefused = !kept && kept.error().code != static_cast<int>(SecretStoreErrorCode::NoStore);
    if (!kept && !isRefused)
        logLine("Settings: " + kept.error().message + " The settings' file has it. " + kept.error().detail);
    const std::scoped_lock lock(m_mutex);
    const SettingValue *value = find(m_values, key);
    if (!value || as<std::string>(*value).value_or("") != secret)
        return {}; // it has changed again
    if (isRefused) {
        m_refused.insert(key);
        settleChanges();
        return kept;
    }
    m_settled.insert(key);
    m_changed.insert(mark);
    m_values.erase(mark);
    if (kept && !secret.empty()) {
        m_values.erase(key);
        m_values.emplace(mark, true);
    }
    return {};
}

Result<void> Settings::write()
{
    const std::scoped_lock writing(m_writing);
    SettingsTable values;
    Keys changed;
    {
        const std::scoped_lock lock(m_mutex);
        values = m_values;
        for (const std::string &key : m_changed) {
            if (!isSecret(key) || m_settled.contains(key))
                changed.insert(key);
            else
                values.erase(key); // it has no place in the file, not even in one that is written anew as a whole
        }
        for (const std::string &key : changed)
            m_changed.erase(key);
        if (changed.empty()) {
            settleChanges();
            return {};
        }
    }
    Result<SettingsTable> stored = store(values, changed); // without the lock: a slow disk stops no reader
    if (!stored) {
        const std::scoped_lock lock(m_mutex);
        m_changed.merge(changed);
        return Failure(std::move(stored.error()));
    }
    adopt(std::move(*stored));
    const std::scoped_lock lock(m_mutex);
    for (const std::string &key : changed) {
        if (!m_changed.contains(key))
            m_settled.erase(key);
    }
    return {};
}

/// Lays what changed over what the file holds now.
Result<SettingsTable> Settings::store(const SettingsTable &values, const Keys &changed)
{
    const auto lock = m_file.lock();
    if (!lock)
        return Failure(Error{settingsErrorDomain, static_cast<int>(SettingsErrorCode::NotWritten),
            "The settings could not be stored: another program has been writing them for seconds.", {}});
    auto stored = m_file.read();
    if (!stored && stored.error().code == static_cast<int>(SettingsErrorCode::Unreadable))
        return stored;
    if (!stored)
        logLine(stored.error().message + " " + stored.error().detail);
    const bool isWhole = stored && !stored->empty(); // else what is known here is the best there is
    SettingsTable table = isWhole ? *stored : values;
    bool losesSecret = false;
    for (const auto &[key, value] : isWhole ? values : SettingsTable()) {
        if (changed.contains(key))
            table.insert_or_assign(key, value);
    }
    for (const std::string &key : changed) {
        if (!values.contains(key))
            losesSecret = (table.erase(key) > 0 && isSecret(key)) || losesSecret;
    }
    auto written = m_file.write(table);
    if (written && losesSecret)
        written = m_file.write(table); // so that the backup has it no longer, either
    return written ? Result<SettingsTable>(std::move(table)) : Failure(std::move(written.error()));
}

/// Makes what the file holds the values in force, but for what has been changed here since.
void Settings::adopt(SettingsTable stored)
{
    const std::scoped_lock lock(m_mutex);
    for (const std::string &key : m_changed) {
        if (const SettingValue *value = find(m_values, key))
            stored.insert_or_assign(key, *value);
        else
            stored.erase(key);
    }
    for (const auto &[key, value] : stored) {
        if (const SettingValue *before = find(m_values, key); !before || *before != value)
            m_news.insert(key);
    }
    for (const auto &[key, value] : m_values) {
        if (!stored.contains(key))
            m_news.insert(key);
    }
    m_values = std::move(stored);
    settleChanges();
}

Settings::Keys Settings::refresh()
{
    const std::unique_lock writing(m_writing, std::try_to_lock);
    if (!writing)
        return {};
    if (m_file.isChangedElsewhere()) {
        auto stored = m_file.peek();
        if (!stored)
            logLine(stored.error().message + " " + stored.error().detail);
        else if (!stored->empty())
            adopt(std::move(*stored));
    }
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_news, {});
}

} // namespace foundation
