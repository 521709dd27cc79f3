// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <string>

namespace cli {

inline constexpr const char *commandErrorDomain = "CommandErrorDomain";

/// The codes of errors in `commandErrorDomain`.
enum class CommandErrorCode {
    Failed = 1, ///< it was understood but could not be done
    NotUnderstood = 2 ///< an unknown name, a bad date, a malformed predicate; nothing was changed
};

[[nodiscard]] inline foundation::Failure notUnderstood(std::string sentence)
{
    return foundation::Failure(
        {commandErrorDomain, static_cast<int>(CommandErrorCode::NotUnderstood), std::move(sentence), {}});
}

[[nodiscard]] inline foundation::Failure failed(std::string sentence)
{
    return foundation::Failure(
        {commandErrorDomain, static_cast<int>(CommandErrorCode::Failed), std::move(sentence), {}});
}

/// What the program tells its caller: 2 where nothing was understood and nothing was done, 1 for every other error.
[[nodiscard]] inline int exitStatus(const foundation::Error &error)
{
    const int code = static_cast<int>(CommandErrorCode::NotUnderstood);
    return error.domain == commandErrorDomain && error.code == code ? 2 : 1;
}

} // namespace cli
