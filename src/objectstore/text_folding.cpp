// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/text_folding.h"

#include <QString>
#include <bit>
#include <cstring>

namespace objectstore {

namespace {

using Word = std::uint64_t;
constexpr Word ones = 0x0101010101010101ULL;
constexpr Word highBits = 0x80 * ones;

/// Eight ASCII letters at once in lower case.
Word lowerCase(Word word)
{
    const Word fromA = word + (0x80 - 'A') * ones;
    const Word beyondZ = word + (0x7f - 'Z') * ones;
    return word | (((fromA ^ beyondZ) & highBits) >> 2U);
}

/// Folded case of the characters that UTF-16 holds in one unit.
const std::vector<char16_t> &foldedUnits()
{
    static const std::vector<char16_t> units = [] {
        std::vector<char16_t> table(0x10000);
        for (char32_t c = 0; c < table.size(); ++c)
            table[c] = static_cast<char16_t>(QChar::toCaseFolded(c));
        return table;
    }();
    return units;
}

char32_t foldedCharacter(char32_t character)
{
    return character < 0x10000 ? foldedUnits()[character] : QChar::toCaseFolded(character);
}

/// The character that the bytes at `text` begin with and their number; one byte that is no character counts as 0.
std::pair<char32_t, int> decode(const unsigned char *text, std::size_t size)
{
    const int length = std::countl_one(text[0]);
    if (length < 2 || length > 4 || static_cast<std::size_t>(length) > size)
        return {0, 1};
    char32_t character = text[0] & (0x7fU >> static_cast<unsigned>(length));
    for (int i = 1; i < length; ++i) {
        if ((text[i] & 0xc0U) != 0x80U)
            return {0, 1};
        character = (character << 6U) | (text[i] & 0x3fU);
    }
    constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const bool valid = character >= smallest[static_cast<std::size_t>(length)] && character <= 0x10ffff
        && (character < 0xd800 || character > 0xdfff);
    return valid ? std::pair(character, length) : std::pair(char32_t{0}, 1);
}

char *encode(char32_t character, char *out)
{
    const auto tail = [&](unsigned shift) { *out++ = static_cast<char>(0x80U | ((character >> shift) & 0x3fU)); };
    if (character < 0x80) {
        *out++ = static_cast<char>(character);
    } else if (character < 0x800) {
        *out++ = static_cast<char>(0xc0U | (character >> 6U));
        tail(0);
    } else if (character < 0x10000) {
        *out++ = static_cast<char>(0xe0U | (character >> 12U));
        tail(6);
        tail(0);
    } else {
        *out++ = static_cast<char>(0xf0U | (character >> 18U));
        tail(12);
        tail(6);
        tail(0);
    }
    return out;
}

/// Writes `text` with its case folded to `out`, which has room for half as much again; returns the end.
char *foldCase(std::string_view text, char *out)
{
    std::size_t place = 0;
    while (place < text.size()) {
        Word word = 0;
        if (place + sizeof word <= text.size()) {
            std::memcpy(&word, text.data() + place, sizeof word);
            if ((word & highBits) == 0) {
                word = lowerCase(word);
                std::memcpy(out, &word, sizeof word);
                out += sizeof word;
                place += sizeof word;
                continue;
            }
        }
        const char letter = text[place];
        if (static_cast<unsigned char>(letter) < 0x80) {
            *out++ = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
            ++place;
            continue;
        }
        const auto [character, length]
            = decode(reinterpret_cast<const unsigned char *>(text.data()) + place, text.size() - place);
        if (character == 0)
            *out++ = letter;
        else
            out = encode(foldedCharacter(character), out);
        place += static_cast<std::size_t>(length);
    }
    return out;
}

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

void removeMarks(std::string &text)
{
    if (isAscii(text))
        return;
    QString string = QString::fromStdString(text).normalized(QString::NormalizationForm_D);
    string.removeIf([](QChar character) { return character.category() == QChar::Mark_NonSpacing; });
    text = string.toStdString();
}

} // namespace

std::string_view foldInto(std::string &buffer, std::string_view text, TextOptions options)
{
    if (options.foldCase) {
        if (const std::size_t room = text.size() + text.size() / 2 + sizeof(Word); buffer.size() < room)
            buffer.resize(room);
        const auto size = static_cast<std::size_t>(foldCase(text, buffer.data()) - buffer.data());
        if (!options.foldMarks)
            return {buffer.data(), size};
        buffer.resize(size);
    } else {
        buffer = text;
    }
    if (options.foldMarks)
        removeMarks(buffer);
    return buffer;
}

std::string folded(std::string_view text, TextOptions options)
{
    std::string buffer;
    return std::string(foldInto(buffer, text, options));
}

} // namespace objectstore
