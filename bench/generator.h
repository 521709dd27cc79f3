// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/task_store.h"

#include <filesystem>

namespace bench {

/// How much data, and of which seed; the rest is fixed: notes in 40 % of the tasks, 70 % completed, two tags a task.
struct Amount {
    int tasks = 100000;
    int folders = 200;
    int contexts = 100;
    int tags = 300;
    int smartFolders = 50;
    unsigned seed = 20261124;
};

/// A fresh folder for one benchmark that goes away at the end.
class Workplace
{
public:
    Workplace();
    Workplace(const Workplace &) = delete;
    Workplace &operator=(const Workplace &) = delete;
    ~Workplace();
    [[nodiscard]] const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Fills the task store in `folder`, which is new, and returns it open. Throws std::runtime_error.
[[nodiscard]] std::unique_ptr<model::TaskStore> generate(const std::filesystem::path &folder, const Amount &amount);

/// A title of about 40 characters and a note of about 200, drawn from a fixed list of words.
[[nodiscard]] std::string words(std::size_t length, unsigned &state);

} // namespace bench
