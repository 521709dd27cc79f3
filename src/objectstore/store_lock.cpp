// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/store_lock.h"

#include "objectstore/store.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace objectstore {

foundation::Result<StoreLock> StoreLock::acquire(const std::filesystem::path &store)
{
    const std::string name = "\"" + store.filename().string() + "\"";
    const auto failure = [](StoreErrorCode code, std::string sentence) {
        return foundation::Failure({"ObjectStoreErrorDomain", static_cast<int>(code), std::move(sentence),
            std::generic_category().message(errno)});
    };
    // the file stays when the lock goes: removing it would let two processes lock two files of one name
    const int descriptor
        = ::open((store.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return failure(StoreErrorCode::CannotOpen, "The store " + name + " could not be locked.");
    StoreLock lock(descriptor);
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        return errno == EWOULDBLOCK
            ? failure(StoreErrorCode::InUse, "The store " + name + " is already open in another window.")
            : failure(StoreErrorCode::CannotOpen, "The store " + name + " could not be locked.");
    }
    return lock;
}

StoreLock::~StoreLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace objectstore
