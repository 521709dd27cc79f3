// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <filesystem>
#include <utility>

namespace objectstore {

/// One window for each store: holds an exclusive lock on the file "STORE.lock" until it goes or its process ends.
/// The command line works beside a window and takes no such lock. Any thread may hold one.
class StoreLock
{
public:
    /// Fails with StoreErrorCode::InUse where another lock of the store is held, in this process or in another.
    [[nodiscard]] static foundation::Result<StoreLock> acquire(const std::filesystem::path &store);

    StoreLock(StoreLock &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) { }
    StoreLock &operator=(StoreLock &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~StoreLock();

private:
    explicit StoreLock(int descriptor) : m_descriptor(descriptor) { }

    int m_descriptor;
};

} // namespace objectstore
