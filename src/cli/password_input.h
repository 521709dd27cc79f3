// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <string>

namespace cli {

/// One line of standard input without its line end; on a terminal it is asked for and not shown as it is typed.
[[nodiscard]] foundation::Result<std::string> readPassword();

} // namespace cli
