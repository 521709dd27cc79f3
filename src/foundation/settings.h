// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "foundation/instant.h"
#include "foundation/secret_store.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace foundation {

/// What a setting can hold; the dictionary form serves keyed values such as a key combination.
using SettingValue = std::variant<bool, std::int64_t, double, std::string, Instant, std::vector<std::byte>,
    std::map<std::string, std::int64_t>>;
using SettingsTable = std::map<std::string, SettingValue, std::less<>>;

inline constexpr const char *settingsErrorDomain = "SettingsErrorDomain";

/// The codes of errors in `settingsErrorDomain`.
enum class SettingsErrorCode {
    Unreadable = 1, ///< the file is there but could not be read; nothing is written over it
    Damaged = 2, ///< the file is no settings file; reading it has moved it aside
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

    /// The same, but a damaged file stays where it is: whoever is writing it may not be done.
    [[nodiscard]] virtual Result<SettingsTable> peek() { return read(); }

    /// Replaces what is stored, all of it or nothing of it.
    [[nodiscard]] virtual Result<void> write(const SettingsTable &table) = 0;

    /// Keeps other programs from writing while it is held; null where one has been writing for seconds, as if it hung.
    [[nodiscard]] virtual std::shared_ptr<const void> lock() { return std::make_shared<int>(); }

    /// Whether something else is stored than was last read or written here.
    [[nodiscard]] virtual bool isChangedElsewhere() { return false; }
};

/// Settings as one JSON file with mode 0600 in a folder with mode 0700. A write goes to a new file that is read back,
/// synced and renamed over the old one, of which one ".bak" is kept; a full disk leaves the old settings whole.
class JsonSettingsFile final : public SettingsFile
{
public:
    explicit JsonSettingsFile(std::filesystem::path path);

    [[nodiscard]] Result<SettingsTable> read() override;
    [[nodiscard]] Result<SettingsTable> peek() override;
    [[nodiscard]] Result<void> write(const SettingsTable &table) override;
    [[nodiscard]] std::shared_ptr<const void> lock() override;
    [[nodiscard]] bool isChangedElsewhere() override;

private:
    /// What tells one version of the file from the next, as each is a file of its own.
    struct Version {
        std::uint64_t number = 0; ///< of the inode; 0 where there is no file
        std::int64_t seconds = 0; ///< of its last change
        std::int64_t nanoseconds = 0;
        friend bool operator==(const Version &, const Version &) = default;
    };

    [[nodiscard]] Version currentVersion() const;

    std::filesystem::path m_path;
    Version m_known;
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

using SettingKeys = std::set<std::string, std::less<>>;

/// The settings that belong into a secret store, and the store; where there is none they are like all others.
struct SecretSettings {
    SecretStore *store = nullptr;
    SettingKeys keys = {};
};

/// The user's settings over registered defaults: a key that was never set reads as its default, one with neither as
/// false, 0, "" or nothing. Several programs may have the same file: each writes only what it changed, and takes over
/// what the others wrote. Any thread may use it.
class Settings
{
public:
    using Keys = SettingKeys;

    /// Reads `file`, which must outlive the settings, as the secret store must. `loadError` tells what could not be
    /// read.
    Settings(SettingsFile &file, SettingsTable defaults, SecretSettings secrets = {});

    [[nodiscard]] const std::optional<Error> &loadError() const { return m_loadError; }

    [[nodiscard]] bool boolean(std::string_view key) const;
    [[nodiscard]] std::int64_t integer(std::string_view key) const;
    [[nodiscard]] std::string text(std::string_view key) const;
    [[nodiscard]] std::optional<Instant> date(std::string_view key) const;
    [[nodiscard]] std::optional<SettingValue> value(std::string_view key) const;
    [[nodiscard]] std::optional<SettingValue> registeredDefault(std::string_view key) const;

    /// The text of a secret setting, from the secret store where it lies there.
    [[nodiscard]] Result<std::string> secret(std::string_view key, const Waiting &waiting) const;
    /// Whether the setting has a value that lies in the secret store.
    [[nodiscard]] bool isInSecretStore(std::string_view key) const { return boolean(secretMark(key)); }
    /// The key of the setting that says so in the file.
    [[nodiscard]] static std::string secretMark(std::string_view key);

    /// Every key that has a value or a default, with the value in force.
    [[nodiscard]] SettingsTable all() const;

    /// Sets a value; nothing is written before `synchronize`.
    void set(std::string_view key, SettingValue value);
    /// Removes a value, so that the default holds again.
    void remove(std::string_view key);

    /// Writes what has changed to the file, and takes over what other programs have changed there. Secrets that belong
    /// into a secret store wait for `synchronizeWithSecrets`. A file that cannot be read is never written over.
    [[nodiscard]] Result<void> synchronize();
    /// The same, and brings the secrets that changed into the secret store, or into the file where nothing answers that
    /// could keep them. One that is refused stays unsaved until it is set again.
    [[nodiscard]] Result<void> synchronizeWithSecrets(const Waiting &waiting);
    /// Grows with each change while one waits to be written; 0 when none does.
    [[nodiscard]] std::size_t unsavedChanges() const;
    /// Takes over what other programs have written, and returns the keys whose values became others by that since the
    /// last call. It does not wait for a thread that writes.
    [[nodiscard]] Keys refresh();

private:
    template <typename Read> [[nodiscard]] auto inForce(std::string_view key, Read read) const;
    [[nodiscard]] bool isSecret(std::string_view key) const;
    [[nodiscard]] Result<void> write();
    [[nodiscard]] Result<SettingsTable> store(const SettingsTable &values, const Keys &changed);
    void adopt(SettingsTable stored);
    void noteChange(std::string_view key);
    void settleChanges();
    [[nodiscard]] Result<void> keepSecret(const std::string &key, const Waiting &waiting);

    SettingsFile &m_file;
    const SecretSettings m_secrets;
    std::mutex m_keeping; ///< held while the secret store is spoken to, and taken before the next
    std::mutex m_writing; ///< one writer at a time, so that the file ends as the last of them
    const SettingsTable m_defaults;
    mutable std::mutex m_mutex;
    SettingsTable m_values;
    Keys m_changed; ///< what is not in the file yet
    Keys m_refused; ///< the secrets among that which the secret store did not take
    Keys m_settled; ///< the secrets among that which it took, or which nothing could keep: the file can be written
    std::size_t m_changes = 0; ///< since all was in the file
    Keys m_news; ///< what other programs have changed and `refresh` has not told yet
    std::optional<Error> m_loadError;
};

} // namespace foundation
