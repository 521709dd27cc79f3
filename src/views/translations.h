// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QTranslator>
#include <memory>
#include <vector>

namespace views {

/// Lets the program speak the language of a locale, where there is a translation, for as long as it lives. Made before
/// the first window, on the main thread.
class Translations
{
public:
    explicit Translations(const QLocale &locale);

private:
    std::vector<std::unique_ptr<QTranslator>> m_translators; // each uninstalls itself
};

} // namespace views
