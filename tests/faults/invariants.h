// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/object_model.h"

#include <filesystem>
#include <string>
#include <vector>

namespace faults {

/// What is wrong with a store file, looked at with plain SQL and none of the code under test: damage, tables of unknown
/// make, records that point at records that are not there. Empty when all is well.
[[nodiscard]] std::vector<std::string> storeProblems(
    const std::filesystem::path &file, const objectstore::ObjectModel &model);

/// What is wrong with the records that every task store holds once.
[[nodiscard]] std::vector<std::string> defaultRecordProblems(const std::filesystem::path &file);

/// The text of one column of every row, sorted.
[[nodiscard]] std::vector<std::string> column(const std::filesystem::path &file, const std::string &select);

} // namespace faults
