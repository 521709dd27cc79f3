// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/secret_store.h"

#include <filesystem>

namespace keyring {

/// The keyring of the user's desktop, reached over the session bus by the Secret Service protocol, which GNOME Keyring,
/// KWallet and KeePassXC speak. Without a session bus every call fails at once.
///
/// Each call is made on a thread that is left alone when its caller stops waiting: a keyring that asks its user may not
/// answer for as long as the program lives.
class Keyring final : public foundation::SecretStore
{
public:
    /// Secrets of programs with another file of settings are other ones.
    explicit Keyring(const std::filesystem::path &settingsFile);

    [[nodiscard]] foundation::Result<std::optional<std::string>> read(
        const std::string &name, const foundation::Waiting &waiting) override;
    [[nodiscard]] foundation::Result<void> write(
        const std::string &name, const std::string &secret, const foundation::Waiting &waiting) override;
    [[nodiscard]] foundation::Result<void> remove(const std::string &name, const foundation::Waiting &waiting) override;

private:
    std::string m_settingsFile;
};

} // namespace keyring
