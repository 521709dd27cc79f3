// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <tl/expected.hpp>

namespace foundation
{

/// What went wrong: a code for the caller, a sentence for the person, a detail for the log. No secret is in any of
/// them.
struct Error {
    std::string domain; ///< which room's codes `code` counts in
    int code = 0; ///< 0 means no error
    std::string message; ///< a plain sentence, or empty where the code says enough
    std::string detail; ///< for the log

    explicit operator bool() const { return code != 0; }
};

/// A value, or why there is none.
template <typename T> using Result = tl::expected<T, Error>;

using Failure = tl::unexpected<Error>;

/// Where an error is shown to the user; the window shows an alert, the command line writes to standard error.
/// Called on whichever thread met the error; returns when the user has been told.
class ErrorPresenter
{
public:
    virtual ~ErrorPresenter() = default;
    virtual void presentError(const Error &error) = 0;
};

} // namespace foundation
