// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/folder_lock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace service {

Result<FolderLock> FolderLock::take(const std::filesystem::path &folder)
{
    const std::filesystem::path file = folder / "service.lock";
    FolderLock lock(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock.m_descriptor >= 0 && ::flock(lock.m_descriptor, LOCK_EX | LOCK_NB) == 0)
        return lock;
    if (errno == EWOULDBLOCK)
        return Failure("Another service is running on the folder \"" + folder.string() + "\".");
    return Failure("The file \"" + file.string() + "\" cannot be locked: " + std::strerror(errno) + ".");
}

FolderLock::FolderLock(FolderLock &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) { }

FolderLock::~FolderLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace service
