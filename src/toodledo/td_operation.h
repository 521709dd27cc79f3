// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace toodledo {

/// What the text of an error says.
enum class Wording {
    None,
    NotAuthenticated, ///< "… not authenticated while " and the action
    BadResult, ///< "… a bad result while " and the action
    BadResultAndError, ///< the same, and the first `error` text of the reply
    BadResultAndValue ///< the same, and the first value of the reply, whether awaited or an `error`
};

/// What the caller is told when something went wrong. Code 0 tells nothing.
struct Complaint {
    int code = 0;
    Wording wording = Wording::None;
    std::string_view action = {}; ///< "adding task."
};

/// One method of the service, with the answers to everything that can go wrong with it. They differ from one to the
/// next, and callers depend on which one they get.
struct Operation {
    std::string_view method;
    std::string_view root; ///< the outermost element of a true reply; empty: any that the service uses
    Complaint notAuthenticated;
    Complaint connectionFailure;
    Complaint badResult;
    bool asksForKey = true; ///< whether a key is obtained when there is none
};

inline constexpr int connectionFailed = 20;
inline constexpr int operationFailed = 30;
inline constexpr int unusableItem = 40;

} // namespace toodledo
