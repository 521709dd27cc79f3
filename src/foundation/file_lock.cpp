// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/file_lock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace foundation {

Result<std::optional<FileLock>> FileLock::tryLock(const std::filesystem::path &file)
{
    const auto failure = [&file] {
        const int number = errno;
        return Failure(Error{fileLockErrorDomain, number, {}, file.string() + ": " + std::strerror(number)});
    };
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return failure();
    FileLock lock(descriptor);
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        return lock;
    if (errno == EWOULDBLOCK)
        return std::nullopt;
    return failure();
}

FileLock::FileLock(FileLock &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) { }

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace foundation
