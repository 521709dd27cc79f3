// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <chrono>
#include <optional>
#include <stop_token>
#include <string>

namespace foundation {

inline constexpr const char *secretStoreErrorDomain = "SecretStoreErrorDomain";

/// The codes of errors in `secretStoreErrorDomain`.
enum class SecretStoreErrorCode {
    NoStore = 1, ///< nothing answers that could keep a secret
    Refused = 2, ///< the user, or what keeps the secrets, refuses, or the wait for them ended
    Lost = 3 ///< what was kept is no longer there
};

/// How long a call may wait, as a user may have to unlock the store first.
struct Waiting {
    std::stop_token stop = {};
    std::chrono::milliseconds patience = std::chrono::minutes(2);
};

/// Where secrets are kept that should not lie in a file, such as the keyring of the desktop. Any thread may use it; a
/// call that is stopped or runs out of patience fails as refused.
class SecretStore
{
public:
    virtual ~SecretStore() = default;

    /// The secret that is kept under `name`, or nothing.
    [[nodiscard]] virtual Result<std::optional<std::string>> read(const std::string &name, const Waiting &waiting) = 0;
    /// Keeps `secret` under `name`, in place of the one before.
    [[nodiscard]] virtual Result<void> write(const std::string &name, const std::string &secret, const Waiting &waiting)
        = 0;
    /// Forgets what is kept under `name`, if anything is.
    [[nodiscard]] virtual Result<void> remove(const std::string &name, const Waiting &waiting) = 0;
};

} // namespace foundation
