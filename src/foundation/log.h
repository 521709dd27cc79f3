// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace foundation
{

/// Writes one line to the program's log (standard error unless `setLogSink` names another place). Every line passes
/// `redacted` first. Any thread may call.
void logLine(std::string_view line);

/// Sends log lines elsewhere; an empty function brings standard error back. Not to be called while others log.
void setLogSink(std::function<void(std::string_view)> sink);

/// `text` with the values of the parameters `pass`, `key`, `token` and `userid` of any URL in it, and the text of any
/// `token` element, replaced by "***".
[[nodiscard]] std::string redacted(std::string_view text);

} // namespace foundation
