// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace viewcontrollers {

/// What is taken of a text that another program gave. Nothing is known of such a text: it may be of any length, and
/// hold characters that are not seen and make a line read otherwise than it is.
struct ForeignText {
    QString text;
    bool isCut = false; ///< the other text was longer than what is taken of one

    /// One line for a title.
    [[nodiscard]] static ForeignText line(QStringView given);
    /// Lines for a note.
    [[nodiscard]] static ForeignText lines(QStringView given);
};

constexpr qsizetype longestForeignLine = 1000; // characters; more than anybody reads in a list
constexpr qsizetype longestForeignText = 65536;

} // namespace viewcontrollers
