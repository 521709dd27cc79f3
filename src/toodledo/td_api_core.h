// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/td_api.h"
#include "toodledo/td_operation.h"
#include "toodledo/td_text.h"

namespace toodledo {

// What the operations of all kinds of items are made of.

/// Whether an id may go on the wire: 32 bits are all that the parameters hold, and of a greater number the low ones
/// would name another item.
constexpr bool canBeSent(std::int64_t id)
{
    return id != -1 && id >= INT32_MIN && id <= INT32_MAX;
}

inline std::string flagText(bool flag)
{
    return flag ? "1" : "0";
}

/// Performs an operation that lists items.
template <typename Parser>
auto TDApi::performForList(const Operation &operation, const Parameters &parameters, Parser &&parser, TDError *error)
{
    using List = decltype(parser.parseResults());
    if (!perform(operation, parameters, parser, error))
        return List();
    List list = parser.parseResults();
    if (!list)
        complain(operation.badResult, error);
    return list;
}

} // namespace toodledo
