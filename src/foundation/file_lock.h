// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <filesystem>
#include <optional>

namespace foundation {

inline constexpr const char *fileLockErrorDomain = "FileLockErrorDomain"; ///< codes are the system's

/// Holds an exclusive lock on a file, against other programs and against other holders in this one, until it goes. The
/// kernel drops the lock of a process that dies, so no stale lock ever needs clearing.
class FileLock
{
public:
    /// Takes the lock, making the file (mode 0600) where there is none; nothing when another holds it. An error,
    /// without a sentence, when the file cannot be made, written or locked. Does not wait.
    [[nodiscard]] static Result<std::optional<FileLock>> tryLock(const std::filesystem::path &file);

    FileLock(FileLock &&other) noexcept;
    FileLock &operator=(FileLock &&) = delete;
    ~FileLock();

private:
    explicit FileLock(int descriptor) : m_descriptor(descriptor) { }

    int m_descriptor;
};

} // namespace foundation
