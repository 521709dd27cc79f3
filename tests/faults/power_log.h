// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace faults {

/// A file layer for SQLite that does everything the default one does and keeps a log of it, from which the disk after a
/// power cut at any moment can be made: what was synced is there; of the rest each sector may be there, missing or
/// garbage, in any order. One log at a time; not for several threads.
class PowerLog
{
public:
    /// Registers the layer as SQLite's default for as long as the log lives.
    PowerLog();
    ~PowerLog();
    PowerLog(const PowerLog &) = delete;
    PowerLog &operator=(const PowerLog &) = delete;

    /// Notes that a save begins, or that it was acknowledged.
    void saveBegins(int number);
    void saveAcknowledged(int number);

    /// Moments at which the power can fail: after so many operations.
    [[nodiscard]] std::size_t moments() const { return m_operations.size() + 1; }

    struct Disk {
        std::map<std::string, std::string> files; ///< by name
        int savesTried = 0;
        int savesAcknowledged = 0;
    };
    /// The disk after a power cut at `moment`, as chance has it.
    [[nodiscard]] Disk diskAfterCut(std::size_t moment, std::mt19937_64 &random) const;

    struct Operation {
        enum class Kind {
            Write,
            Truncate,
            Sync,
            SyncWithFolder,
            Delete,
            DeleteSynced,
            SaveBegins,
            SaveAcknowledged
        } kind;
        std::string file;
        std::int64_t place = 0; ///< offset, size or number
        std::string bytes;
    };
    void add(Operation operation);

private:
    std::vector<Operation> m_operations;
};

} // namespace faults
