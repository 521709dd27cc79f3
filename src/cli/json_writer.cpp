// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/json_writer.h"

#include "cli/text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace cli {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

void appendEscape(std::string &out, char letter)
{
    switch (letter) {
    case '"':
        out += "\\\"";
        return;
    case '\\':
        out += "\\\\";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        out += "\\u00";
        out += hexDigits[static_cast<unsigned char>(letter) >> 4];
        out += hexDigits[letter & 0xF];
    }
}

bool needsEscape(char letter)
{
    return static_cast<unsigned char>(letter) < 0x20 || letter == '"' || letter == '\\' || letter == 0x7F;
}

struct AppendField {
    std::string &out;

    void operator()(std::monostate) const { out += "null"; }
    void operator()(bool value) const { out += value ? "true" : "false"; }
    void operator()(std::int64_t value) const { out += std::to_string(value); }
    void operator()(double value) const { out += std::isfinite(value) ? shortest(value) : "null"; }
    void operator()(const std::string &value) const { appendJsonString(out, value); }
    void operator()(const std::vector<std::string> &values) const
    {
        out += '[';
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i > 0)
                out += ", ";
            appendJsonString(out, values[i]);
        }
        out += ']';
    }
};

} // namespace

void appendJsonString(std::string &out, std::string_view text)
{
    out += '"';
    while (!text.empty()) {
        if (static_cast<unsigned char>(text.front()) < 0x80) {
            if (needsEscape(text.front()))
                appendEscape(out, text.front());
            else
                out += text.front();
            text.remove_prefix(1);
            continue;
        }
        const std::string_view before = text;
        if (takeCodePoint(text))
            out += before.substr(0, before.size() - text.size());
        else
            out += "\uFFFD";
    }
    out += '"';
}

void appendJson(std::string &out, const Record &record)
{
    out += '{';
    bool first = true;
    for (const auto &[name, field] : record) {
        out += first ? "\"" : ", \"";
        out += name;
        out += "\": ";
        std::visit(AppendField{out}, field);
        first = false;
    }
    out += '}';
}

void appendJsonArray(std::string &out, std::span<objectstore::ManagedObject *const> objects, const RecordKind &kind)
{
    out += '[';
    for (std::size_t i = 0; i < objects.size(); ++i) {
        out += i > 0 ? ",\n " : "\n ";
        appendJson(out, recordOf(*objects[i], kind));
    }
    out += objects.empty() ? "]\n" : "\n]\n";
}

} // namespace cli
