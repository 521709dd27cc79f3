// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/result.h"

#include <filesystem>

namespace service {

/// Keeps a second service off a data folder until it goes: what slows down who guesses is in one service's memory, and
/// two would let through twice as much. The system drops the lock of a process that dies.
class FolderLock
{
public:
    /// Does not wait; the sentence says so where another service holds the lock.
    [[nodiscard]] static Result<FolderLock> take(const std::filesystem::path &folder);
    FolderLock(FolderLock &&other) noexcept;
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;
    ~FolderLock();

private:
    explicit FolderLock(int descriptor) : m_descriptor(descriptor) { }
    int m_descriptor;
};

} // namespace service
