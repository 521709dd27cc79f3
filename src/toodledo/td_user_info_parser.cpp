// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_user_info_parser.h"

#include <algorithm>
#include <array>

namespace toodledo {

namespace {

constexpr std::array<std::string_view, 13> accountElements{"userid", "alias", "pro", "dateformat", "timezone",
    "hidemonths", "hotlistpriority", "hotlistduedate", "lastaddedit", "lastdelete", "lastfolderedit", "lastcontextedit",
    "lastgoaledit"};

/// Only a service that does more than the protocol names these: that it knows an add that is sent again by its mark,
/// and how many calls it takes in one request.
constexpr std::array<std::string_view, 2> furtherElements{"addmarks", "mostcalls"};

/// The preset key of `dateformat` is spelled differently from the element, so a result holds both.
constexpr std::string_view presetDateFormat = "dateFormat";

} // namespace

TDUserInfoParser::TDUserInfoParser() : m_userInfos(std::make_shared<AccountInfo>())
{
    for (const std::string_view name : accountElements)
        m_userInfos->emplace(name == "dateformat" ? presetDateFormat : name, "");
}

void TDUserInfoParser::didStartElement(std::string_view name, const Attributes &)
{
    if (name == "account" && m_userInfos)
        m_results.push_back(m_userInfos);
}

void TDUserInfoParser::didEndElement(std::string_view name, std::string_view text)
{
    if (!m_userInfos)
        return;
    if (name == "account") {
        m_results.push_back(std::move(m_userInfos));
        m_userInfos.reset();
    } else if (std::find(furtherElements.begin(), furtherElements.end(), name) != furtherElements.end()
        || std::find(accountElements.begin(), accountElements.end(), name) != accountElements.end()) {
        if (text.empty())
            m_userInfos->erase(std::string(name));
        else
            m_userInfos->insert_or_assign(std::string(name), std::string(text));
    }
}

} // namespace toodledo
