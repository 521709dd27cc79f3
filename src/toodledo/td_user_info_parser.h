// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/td_parser.h"

#include <map>
#include <memory>

namespace toodledo {

using AccountInfo = std::map<std::string, std::string, std::less<>>;

/// Reads the reply to `getAccountInfo`: a list that holds one and the same dictionary twice, once for the start and
/// once for the end of `account`.
class TDUserInfoParser final : public TDListParser<std::shared_ptr<const AccountInfo>>
{
public:
    TDUserInfoParser();

private:
    void didStartElement(std::string_view name, const Attributes &attributes) override;
    void didEndElement(std::string_view name, std::string_view text) override;

    std::shared_ptr<AccountInfo> m_userInfos; ///< nothing once the account has ended
};

} // namespace toodledo
