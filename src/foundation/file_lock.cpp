// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace foundation {

std::optional<FileLock> FileLock::tryLock(const std::filesystem::path &file)
{
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return std::nullopt;
    FileLock lock(descriptor);
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0)
        return std::nullopt;
    return lock;
}

FileLock::FileLock(FileLock &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) { }

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace foundation
