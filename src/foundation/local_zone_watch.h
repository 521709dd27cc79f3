// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

namespace foundation {

/// Notices that the computer has moved to another time zone: what `TZ` says, or the file behind it, is another one.
/// Cheap enough to be asked every few seconds. One thread; a file that cannot be read counts as no file.
class LocalZoneWatch
{
public:
    explicit LocalZoneWatch(std::filesystem::path zoneFile = "/etc/localtime");

    /// Whether the zone has changed since the last call, or since the start; the program then knows the new one.
    [[nodiscard]] bool hasChanged();

private:
    [[nodiscard]] std::string fingerprint() const;

    std::filesystem::path m_zoneFile;
    std::string m_last;
};

} // namespace foundation
