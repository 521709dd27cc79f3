// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "foundation/instant.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace foundation
{

/// What a setting can hold; the dictionary form serves keyed values such as a key combination.
using SettingValue = std::variant<bool, std::int64_t, double, std::string, Instant, std::vector<std::byte>,
    std::map<std::string, std::int64_t>>;
using SettingsTable = std::map<std::string, SettingValue, std::less<>>;

inline constexpr const char *settingsErrorDomain = "SettingsErrorDomain";

/// The codes of errors in `settingsErrorDomain`.
enum class SettingsErrorCode {
    Unreadable = 1, ///< the file is there but could not be read; nothing is written over it
    Damaged = 2, ///< the file was no settings file and has been moved aside
    NotWritten = 3 ///< the new settings could not be stored; the old ones are whole
};

/// Where settings are kept between two runs of the program.
class SettingsFile
{
public:
    virtual ~SettingsFile() = default;

    /// Everything that is stored; an absent file is an empty table. A damaged file is kept aside under another name
    /// and reported; the caller then goes on with an empty table.
    [[nodiscard]] virtual Result<SettingsTable> read() = 0;

    /// Replaces what is stored, all of it or nothing of it.
    [[nodiscard]] virtual Result<void> write(const SettingsTable &table) = 0;
};

/// Settings as one JSON file with mode 0600 in a folder with mode 0700. A write goes to a new file that is read back,
/// synced and renamed over the old one, of which one ".bak" is kept; a full disk leaves the old settings whole.
class JsonSettingsFile final : public SettingsFile
{
public:
    explicit JsonSettingsFile(std::filesystem::path path);

    [[nodiscard]] Result<SettingsTable> read() override;
    [[nodiscard]] Result<void> write(const SettingsTable &table) override;

private:
    std::filesystem::path m_path;
};

/// Settings that live as long as the process.
class MemorySettingsFile final : public SettingsFile
{
public:
    [[nodiscard]] Result<SettingsTable> read() override { return m_table; }
    [[nodiscard]] Result<void> write(const SettingsTable &table) override
    {
        m_table = table;
        return {};
    }

private:
    SettingsTable m_table;
};

/// The user's settings over registered defaults: a key that was never set reads as its default, one with neither as
/// false, 0, "" or nothing. Any thread may use it.
class Settings
{
public:
    /// Reads `file`, which must outlive the settings. `loadError` tells what could not be read.
    Settings(SettingsFile &file, SettingsTable defaults);

    [[nodiscard]] const std::optional<Error> &loadError() const { return m_loadError; }

    [[nodiscard]] bool boolean(std::string_view key) const;
    [[nodiscard]] std::int64_t integer(std::string_view key) const;
    [[nodiscard]] std::string text(std::string_view key) const;
    [[nodiscard]] std::optional<Instant> date(std::string_view key) const;
    [[nodiscard]] std::optional<SettingValue> value(std::string_view key) const;
    [[nodiscard]] std::optional<SettingValue> registeredDefault(std::string_view key) const;

    /// Every key that has a value or a default, with the value in force.
    [[nodiscard]] SettingsTable all() const;

    /// Sets a value; nothing is written before `synchronize`.
    void set(std::string_view key, SettingValue value);
    /// Removes a value, so that the default holds again.
    void remove(std::string_view key);

    /// Writes what has changed to the file. Settings whose file could not be read are never written over it.
    [[nodiscard]] Result<void> synchronize();

private:
    template <typename Read> [[nodiscard]] auto inForce(std::string_view key, Read read) const;

    SettingsFile &m_file;
    std::mutex m_writing; ///< one writer at a time, so that the file ends as the last of them
    const SettingsTable m_defaults;
    mutable std::mutex m_mutex;
    SettingsTable m_values;
    bool m_changed = false;
    std::optional<Error> m_loadError;
};

} // namespace foundation
