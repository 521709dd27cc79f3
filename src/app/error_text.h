// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <QString>

namespace app {

/// The sentence of an error in the user's language; a sentence that has no translation stays as it is. Any thread.
[[nodiscard]] QString errorText(const foundation::Error &error);

} // namespace app
