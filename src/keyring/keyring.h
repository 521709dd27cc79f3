// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/secret_store.h"

#include <filesystem>
#include <memory>

namespace keyring {

inline constexpr const char *keyringErrorDomain = "KeyringErrorDomain";

/// The keyring of the user's desktop, reached over the session bus by the Secret Service protocol
/// (specifications.freedesktop.org/secret-service), which GNOME Keyring, KWallet and KeePassXC speak. Without a
/// session bus every call fails at once.
class Keyring final : public foundation::SecretStore
{
public:
    /// Secrets of programs with another file of settings are other ones.
    explicit Keyring(const std::filesystem::path &settingsFile);
    ~Keyring() override;

    [[nodiscard]] foundation::Result<std::optional<std::string>> read(const std::string &name) override;
    [[nodiscard]] foundation::Result<void> write(const std::string &name, const std::string &secret) override;
    [[nodiscard]] foundation::Result<void> remove(const std::string &name) override;

    /// Ends every call, now and later, that waits for the user or the bus; each then fails. Any thread.
    void cancel();

private:
    struct State;

    std::unique_ptr<State> m_state;
};

} // namespace keyring
