// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <string>
#include <string_view>
#include <vector>

namespace cli {

using CsvRow = std::vector<std::string>;

/// One line of comma-separated values with its line end; whatever is in a value comes back from `readCsv`.
void appendCsv(std::string &out, const CsvRow &row);

/// Reads such text: quoted values may hold commas, quotes and line ends; a byte order mark and CR LF are taken too.
[[nodiscard]] foundation::Result<std::vector<CsvRow>> readCsv(std::string_view text);

} // namespace cli
