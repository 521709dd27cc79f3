// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/settings.h"

#include "foundation/log.h"

#include <charconv>
#include <cmath>

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

Result<std::string> Settings::secret(std::string_view key) const
{
    std::string known = text(key); // in the file, or on its way into the store
    if (!known.empty() || !isInSecretStore(key))
        return known;
    const auto lost = [](int code, std::string sentence) {
        return Failure(Error{settingsErrorDomain, code, std::move(sentence), {}});
    };
    constexpr int code = static_cast<int>(SettingsErrorCode::NoSecret);
    if (!m_secrets.store)
        return lost(code, "The password lies in the keyring of your desktop, which this program does not use.");
    auto kept = m_secrets.store->read(std::string(key));
    if (!kept)
        return Failure(std::move(kept.error()));
    if (!*kept)
        return lost(code, "The password is no longer in the keyring of your desktop. Enter it once more.");
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

void Settings::set(std::string_view key, SettingValue value)
{
    const std::scoped_lock lock(m_mutex);
    const auto entry = m_values.find(key);
    if (entry != m_values.end() && entry->second == value)
        return;
    m_values.insert_or_assign(std::string(key), std::move(value));
    noteChange(key);
}

void Settings::remove(std::string_view key)
{
    const std::scoped_lock lock(m_mutex);
    const auto entry = m_values.find(key);
    if (entry == m_values.end())
        return;
    m_values.erase(entry);
    noteChange(key);
}

void Settings::noteChange(std::string_view key)
{
    m_changed.emplace(key);
    ++m_changes;
}

std::size_t Settings::unsavedChanges() const
{
    const std::scoped_lock lock(m_mutex);
    return m_changes;
}

Result<void> Settings::synchronize()
{
    const std::scoped_lock writing(m_writing);
    SettingsTable values;
    Keys changed;
    {
        const std::scoped_lock lock(m_mutex);
        if (m_changed.empty())
            return {};
        if (m_loadError && m_loadError->code == static_cast<int>(SettingsErrorCode::Unreadable))
            return Failure(*m_loadError);
        values = m_values;
        changed = std::exchange(m_changed, {});
        m_changes = 0;
    }
    keepSecrets(values, changed);
    Result<SettingsTable> stored = store(values, changed); // without the lock: a slow disk stops no reader
    if (!stored) {
        const std::scoped_lock lock(m_mutex);
        m_changed.merge(changed);
        ++m_changes;
        return Failure(std::move(stored.error()));
    }
    adopt(std::move(*stored));
    return {};
}

/// Brings the secrets that changed into the secret store; in the file a mark takes the place of each.
void Settings::keepSecrets(SettingsTable &values, Keys &changed) const
{
    for (const std::string &key : m_secrets.keys) {
        if (!m_secrets.store || !changed.contains(key))
            continue;
        const SettingValue *value = find(values, key);
        const auto *secret = value ? std::get_if<std::string>(value) : nullptr;
        const std::string mark = secretMark(key);
        changed.insert(mark);
        if (keepSecret(key, secret ? *secret : std::string(), values.erase(mark) > 0)) {
            values.erase(key);
            values.emplace(mark, true);
        }
    }
}

/// False where the secret store has nothing of it afterwards, or should have nothing.
bool Settings::keepSecret(const std::string &key, const std::string &secret, bool wasKept) const
{
    if (secret.empty() && !wasKept)
        return false;
    const auto done = secret.empty() ? m_secrets.store->remove(key) : m_secrets.store->write(key, secret);
    if (!done)
        logLine("Settings: " + done.error().message + " The settings' file has it. " + done.error().detail);
    return done && !secret.empty();
}

/// Lays what changed over what the file holds now.
Result<SettingsTable> Settings::store(const SettingsTable &values, const Keys &changed)
{
    const auto lock = m_file.lock();
    auto table = m_file.read();
    if (!table && table.error().code == static_cast<int>(SettingsErrorCode::Unreadable))
        return table;
    if (!table || table->empty()) { // damaged or gone meanwhile: what is known here is the best there is
        table = values;
    } else {
        for (const std::string &key : changed) {
            if (const SettingValue *value = find(values, key))
                table->insert_or_assign(key, *value);
            else
                table->erase(key);
        }
    }
    if (auto written = m_file.write(*table); !written)
        return Failure(std::move(written.error()));
    return table;
}

/// Makes what the file holds the values in force, but for what has been changed here since. Returns what is another.
Settings::Keys Settings::adopt(SettingsTable stored)
{
    const std::scoped_lock lock(m_mutex);
    for (const std::string &key : m_changed) {
        if (const SettingValue *value = find(m_values, key))
            stored.insert_or_assign(key, *value);
        else
            stored.erase(key);
    }
    Keys others;
    for (const auto &[key, value] : stored) {
        if (const SettingValue *before = find(m_values, key); !before || *before != value)
            others.insert(key);
    }
    for (const auto &[key, value] : m_values) {
        if (!stored.contains(key))
            others.insert(key);
    }
    m_values = std::move(stored);
    return others;
}

Settings::Keys Settings::refresh()
{
    const std::unique_lock writing(m_writing, std::try_to_lock);
    if (!writing || !m_file.isChangedElsewhere())
        return {};
    auto stored = m_file.read();
    if (!stored)
        logLine(stored.error().message + " " + stored.error().detail);
    return stored && !stored->empty() ? adopt(std::move(*stored)) : Keys();
}

} // namespace foundation
