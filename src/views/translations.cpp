// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>

namespace views {

Translations::Translations(const QLocale &locale)
{
    const std::pair<const char *, QString> catalogs[]
        = {{"qtbase", QLibraryInfo::path(QLibraryInfo::TranslationsPath)}, // the buttons of Qt's own windows
            {"quelvin", QStringLiteral(":/translations")}};
    for (const auto &[name, folder] : catalogs) {
        auto translator = std::make_unique<QTranslator>();
        if (!translator->load(locale, QString::fromLatin1(name), QStringLiteral("_"), folder))
            continue;
        QCoreApplication::installTranslator(translator.get());
        m_translators.push_back(std::move(translator));
    }
}

} // namespace views
