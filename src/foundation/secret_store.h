// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <optional>
#include <string>

namespace foundation {

/// Where secrets are kept that should not lie in a file, such as the keyring of the desktop. Any thread may use it; a
/// call may wait until the user has unlocked it.
class SecretStore
{
public:
    virtual ~SecretStore() = default;

    /// The secret that is kept under `name`, or nothing; an error where no store answers or the user refuses.
    [[nodiscard]] virtual Result<std::optional<std::string>> read(const std::string &name) = 0;
    /// Keeps `secret` under `name`, in place of the one before.
    [[nodiscard]] virtual Result<void> write(const std::string &name, const std::string &secret) = 0;
    /// Forgets what is kept under `name`, if anything is.
    [[nodiscard]] virtual Result<void> remove(const std::string &name) = 0;
};

} // namespace foundation
