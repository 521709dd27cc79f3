// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"
#include "foundation/settings.h"

#include <optional>
#include <string>

namespace toodledo {

/// The authentication key that is kept in the settings from one run to the next, with the user it was made for.
class StoredKey
{
public:
    explicit StoredKey(foundation::Settings &settings) : m_settings(settings) { }

    struct Entry {
        std::optional<std::string> key;
        std::optional<foundation::Instant> obtained;
    };

    /// What is stored. A key of another user than `userId`, or one dated later than `now`, is not believed.
    [[nodiscard]] Entry load(const std::string &userId, foundation::Instant now) const;

    /// Whether a key may still be used: for three hours, an hour less than the service holds it good.
    [[nodiscard]] static bool isFresh(const Entry &entry, foundation::Instant now);

    /// Stores the outcome of asking for a key, at `now`; without one the entry is removed.
    void store(const std::optional<std::string> &key, const std::string &userId, foundation::Instant now);

    /// Forgets a key that the service has refused.
    void drop();

private:
    void save();

    foundation::Settings &m_settings;
};

} // namespace toodledo
