// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/foreign_text.h"

#include <algorithm>

namespace viewcontrollers {

namespace {

/// Whether a character has no look of its own and changes that of others: a control, or one that turns the direction.
bool isTrick(QChar character)
{
    const char16_t code = character.unicode();
    return character.category() == QChar::Other_Control || (code >= 0x202A && code <= 0x202E)
        || (code >= 0x2066 && code <= 0x2069) || code == 0xFEFF;
}

/// At most so much of the beginning, without half a character at the end.
QStringView beginning(QStringView text, qsizetype length)
{
    if (text.size() <= length)
        return text;
    return text.first(text[length - 1].isHighSurrogate() ? length - 1 : length);
}

} // namespace

ForeignText ForeignText::lines(QStringView given)
{
    QString text = beginning(given, longestForeignText).toString();
    const auto end = std::remove_if(text.begin(), text.end(),
        [](QChar c) { return isTrick(c) && c != QLatin1Char('\n') && c != QLatin1Char('\t'); });
    text.truncate(end - text.begin());
    return {text, given.size() > longestForeignText};
}

ForeignText ForeignText::line(QStringView given)
{
    ForeignText taken = lines(given);
    taken.text = taken.text.simplified();
    if (taken.text.size() > longestForeignLine) {
        taken.text = beginning(taken.text, longestForeignLine).toString();
        taken.isCut = true;
    }
    return taken;
}

} // namespace viewcontrollers
