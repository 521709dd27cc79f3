// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/digest.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// What is said to a service, and what it answers, as text.
namespace calling {

using Parameters = std::vector<std::pair<std::string, std::string>>;

/// Everything but letters and digits as "%XX".
inline std::string escaped(const std::string &text)
{
    std::string result;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if ((byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z')) {
            result += static_cast<char>(byte);
        } else {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02X", byte);
            result += code;
        }
    }
    return result;
}

inline std::string target(const std::string &method, const Parameters &parameters)
{
    std::string text = "/api.php?method=" + method + ";";
    for (const auto &[name, value] : parameters)
        text += name + "=" + escaped(value) + ";";
    return text;
}

/// What stands inside the first element `name` of `xml`, as it stands there; "(none)" without one.
inline std::string inside(const std::string &xml, const std::string &name)
{
    std::size_t start = xml.find("<" + name + ">");
    if (start == std::string::npos)
        start = xml.find("<" + name + " ");
    if (start == std::string::npos)
        return "(none)";
    start = xml.find('>', start) + 1;
    return xml.substr(start, xml.find("</" + name + ">", start) - start);
}

inline int countOf(const std::string &xml, const std::string &part)
{
    int count = 0;
    for (std::size_t at = 0; (at = xml.find(part, at)) != std::string::npos; at += part.size())
        ++count;
    return count;
}

inline std::string keyOf(const std::string &password, const std::string &token, const std::string &userid)
{
    return service::md5(service::md5(password) + token + userid);
}

} // namespace calling
