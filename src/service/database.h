// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/connection.h"
#include "service/result.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace service {

/// All accounts and their records in one SQLite file, or in memory. Any thread may read and write: writers take turns,
/// readers of a file do not wait for them.
///
/// What a function given to `read` or `write` throws comes out of the call, and the write is undone; so is a
/// DatabaseError where the file could not be read or the commit failed.
class Database
{
public:
    using Work = std::function<void(Connection &connection)>;

    /// Opens the data file in `folder`; makes both if they are not there, for their owner alone. A file that is
    /// damaged or from a newer version is left as it is.
    [[nodiscard]] static Result<std::unique_ptr<Database>> open(const std::filesystem::path &folder);
    [[nodiscard]] static std::unique_ptr<Database> inMemory();

    /// Everything that `work` reads is of one moment.
    void read(const Work &work);
    /// Returns once what `work` wrote is safely on the disk.
    void write(const Work &work);

private:
    explicit Database(std::string file) : m_file(std::move(file)), m_writer(m_file) { }
    void prepareFile();
    [[nodiscard]] std::unique_ptr<Connection> takeReader();

    std::string m_file;
    std::mutex m_writing;
    Connection m_writer;
    std::mutex m_idleMutex;
    std::vector<std::unique_ptr<Connection>> m_idleReaders;
};

} // namespace service
