// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/local_zone_watch.h"

#include "foundation/instant.h"

#include <cstdlib>
#include <sys/stat.h>

namespace foundation {

LocalZoneWatch::LocalZoneWatch(std::filesystem::path zoneFile) : m_zoneFile(std::move(zoneFile)), m_last(fingerprint())
{ }

std::string LocalZoneWatch::fingerprint() const
{
    const char *zone = std::getenv("TZ");
    std::string print = zone ? zone : "";
    // stat follows the link: a zone is changed by another link, and its rules by another file under the same link
    struct stat file = {};
    if (::stat(m_zoneFile.c_str(), &file) == 0)
        print += ' ' + std::to_string(file.st_dev) + ' ' + std::to_string(file.st_ino) + ' '
            + std::to_string(file.st_mtim.tv_sec) + ' ' + std::to_string(file.st_mtim.tv_nsec);
    return print;
}

bool LocalZoneWatch::hasChanged()
{
    std::string now = fingerprint();
    if (now == m_last)
        return false;
    m_last = std::move(now);
    localZoneChanged();
    return true;
}

} // namespace foundation
