// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>
#include <string>
#include <string_view>

namespace app {

/// Between the UTF-8 of the rooms below and the text of the windows.
[[nodiscard]] inline QString toQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline std::string toUtf8(const QString &text)
{
    return text.toStdString();
}

/// A text of a room below in the user's language; the text itself is the key.
[[nodiscard]] inline QString translated(const char *context, std::string_view text)
{
    return QCoreApplication::translate(context, std::string(text).c_str());
}

} // namespace app
