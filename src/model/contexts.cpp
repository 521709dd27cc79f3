// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/entities.h"

#include <array>
#include <charconv>

namespace model {

namespace {

constexpr std::string_view beginMarker = "\n--- Begin Location Info ---";
constexpr std::string_view endMarker = "--- End Location Info ---";

/// The shortest decimal number that reads back as `value`.
std::string decimal(double value)
{
    std::array<char, 400> buffer; // the longest double has 308 digits before its point
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed).ptr;
    return std::string(buffer.data(), end);
}

} // namespace

void Contexts::updateNotesLocation()
{
    std::string changed(notes());
    if (const auto begin = changed.find(beginMarker); begin != std::string::npos) {
        // a block whose end somebody typed over reaches to the end of the notes
        const auto end = changed.find(endMarker, begin + beginMarker.size());
        changed.erase(begin, end == std::string::npos ? end : end + endMarker.size() - begin);
    }
    changed += beginMarker;
    changed += "\n" + decimal(latitude()) + "," + decimal(longitude()) + "\n";
    changed += endMarker;
    setNotes(std::move(changed)); // the same notes again are no change
}

} // namespace model
