// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/task_store.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace faults {

/// A read failed, so that nothing could be changed.
struct NotFetched : std::runtime_error {
    explicit NotFetched(const foundation::Error &why) : std::runtime_error("not fetched: " + why.detail), error(why) { }
    foundation::Error error;
};

/// A user's work in saves: each adds tasks, renames and deletes some of the save before, and counts itself in a task of
/// its own, so that the store tells which save it holds and whether it holds all of it.
class Story
{
public:
    /// One save for each number, which says how many tasks it adds.
    explicit Story(std::vector<int> tasksOfSaves) : m_tasks(std::move(tasksOfSaves)) { }

    [[nodiscard]] int saves() const { return static_cast<int>(m_tasks.size()); }

    /// Makes the changes of save `number` (from 1) in the context, without saving them. Throws NotFetched before the
    /// first change where a read fails.
    void change(objectstore::ObjectContext &context, int number) const;

    /// The titles, sorted, that the store holds after so many saves.
    [[nodiscard]] std::vector<std::string> titlesAfter(int saves) const;

    /// The save that the store holds, or a negative number and a problem where it is half a save or none.
    [[nodiscard]] int savedIn(const std::filesystem::path &file, std::vector<std::string> &problems) const;

private:
    std::vector<int> m_tasks;
};

} // namespace faults
