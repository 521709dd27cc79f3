// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/theme.h"

#include "app/text.h"
#include "model/settings_defaults.h"
#include "views/icons.h"
#include "views/quelvin_style.h"

#include <QApplication>
#include <QFile>
#include <array>
#include <cmath>

namespace views {

namespace {

Theme &currentTheme()
{
    static Theme theme; // what widgets draw with, as the palette is the application's
    return theme;
}

const QColor neutralHighlight(48, 140, 198); // what Qt offers where the desktop states no accent

Theme lightTheme()
{
    Theme theme;
    theme.window = QColor(0xf6f6f4);
    theme.sidebar = QColor(0xefeeeb);
    theme.list = QColor(0xffffff);
    theme.field = QColor(0xffffff);
    theme.button = QColor(0xffffff);
    theme.text = QColor(0x1f2328);
    theme.muted = QColor(0x636970);
    theme.faint = QColor(0x9a9fa6);
    theme.hairline = QColor(0xe3e2de);
    theme.border = QColor(0xd6d5d0);
    theme.accent = QColor(0x2f6fde);
    theme.badge = QColor::fromRgbF(0.53F, 0.6F, 0.74F);
    theme.badgeInactive = QColor::fromRgbF(0.53F, 0.6F, 0.84F);
    theme.overdue = QColor(0xc4372b);
    theme.star = QColor(0xe8a317);
    return theme;
}

/// White, or the darkest that is needed: the accent may be any colour that a desktop has.
QColor readableOn(const QColor &accent)
{
    for (const QColor &ink : {QColor(0xffffff), QColor(0x101318)}) {
        if (contrast(ink, accent) >= leastContrast)
            return ink;
    }
    return Qt::black;
}

/// `ink` as it reads on a selected row: as much nearer to that of plain text as it needs to be.
QColor onSelection(const QColor &ink, const Theme &theme)
{
    QColor nearer = ink;
    for (int tenths = 1; tenths <= 10
         && std::min(contrast(nearer, theme.selection), contrast(nearer, theme.selectionInactive)) < leastContrast;
         ++tenths)
        nearer = mixed(theme.text, ink, tenths / 10.0);
    return nearer;
}

Theme darkTheme()
{
    Theme theme;
    theme.isDark = true;
    theme.window = QColor(0x1e2023);
    theme.sidebar = QColor(0x191b1e);
    theme.list = QColor(0x232629);
    theme.field = QColor(0x1b1d20);
    theme.button = QColor(0x2c3034);
    theme.text = QColor(0xe8e9eb);
    theme.muted = QColor(0x9aa0a8);
    theme.faint = QColor(0x6b7178);
    theme.hairline = QColor(0x33373c);
    theme.border = QColor(0x3d4248);
    theme.accent = QColor(0x6ea0ff);
    theme.badge = QColor(0x4b5a7a);
    theme.badgeInactive = QColor(0x434e66);
    theme.overdue = QColor(0xff8f7a);
    theme.star = QColor(0xe8a317);
    return theme;
}

} // namespace

QColor mixed(const QColor &front, const QColor &back, double amount)
{
    const auto part = [amount](int a, int b) { return static_cast<int>(a * amount + b * (1 - amount) + 0.5); };
    return {part(front.red(), back.red()), part(front.green(), back.green()), part(front.blue(), back.blue())};
}

double contrast(const QColor &text, const QColor &background)
{
    const auto luminance = [](const QColor &color) {
        const auto part
            = [](double value) { return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4); };
        return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(text), luminance(background)});
    return (lighter + 0.05) / (darker + 0.05);
}

Theme Theme::of(const QPalette &desktop, const QString &appearance)
{
    const bool desktopIsDark = desktop.color(QPalette::Window).lightness() < 128;
    const bool dark = appearance == QLatin1String("dark") || (appearance != QLatin1String("light") && desktopIsDark);
    Theme theme = dark ? darkTheme() : lightTheme();
    const QColor highlight = desktop.color(QPalette::Active, QPalette::Highlight);
    if (highlight != neutralHighlight && highlight.saturation() > 60)
        theme.accent = highlight;
    theme.onAccent = readableOn(theme.accent);
    theme.selection = mixed(theme.accent, theme.list, dark ? 0.27 : 0.15);
    theme.selectionInactive = mixed(theme.text, theme.list, dark ? 0.12 : 0.08);
    theme.hover = mixed(theme.text, theme.list, dark ? 0.07 : 0.045);
    theme.mutedSelected = onSelection(theme.muted, theme);
    theme.overdueSelected = onSelection(theme.overdue, theme);
    theme.detail = theme.window;
    theme.titleStart = theme.titleEnd = theme.list;
    theme.pressed = mixed(theme.text, theme.list, dark ? 0.14 : 0.10);
    return theme;
}

void Theme::takeUserColors(const foundation::Settings &settings)
{
    const std::pair<std::string_view, QColor *> colors[]
        = {{model::keys::BackgroundColor, &list}, {model::keys::DetailBackgroundColor, &detail},
            {model::keys::TitleStartColor, &titleStart}, {model::keys::TitleEndColor, &titleEnd}};
    for (const auto &[key, color] : colors) {
        const QColor chosen(app::toQString(settings.text(key)));
        if (chosen.isValid() && settings.value(key) != settings.registeredDefault(key))
            *color = chosen;
    }
}

QPalette Theme::palette() const
{
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, list);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, muted);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, onAccent);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, onAccent);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::ToolTipBase, list);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Mid, border);
    palette.setColor(QPalette::Light, mixed(QColor(Qt::white), window, isDark ? 0.1 : 0.6));
    palette.setColor(QPalette::Dark, border);
    palette.setColor(QPalette::Shadow, QColor(0, 0, 0, 60));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, selectionInactive);
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, text);
    return palette;
}

QString Theme::styleSheet() const
{
    QFile file(QStringLiteral(":/style/quelvin.qss"));
    if (!file.open(QFile::ReadOnly))
        return {};
    QString sheet = QString::fromUtf8(file.readAll());
    const std::array<std::pair<const char *, QColor>, 23> words{{
        {"window", window},
        {"sidebar", sidebar},
        {"list", list},
        {"field", field},
        {"button", button},
        {"text", text},
        {"muted", muted},
        {"faint", faint},
        {"hairline", hairline},
        {"border", border},
        {"hover", hover},
        {"pressed", pressed},
        {"accent", accent},
        {"accentHover", mixed(text, accent, 0.12)},
        {"onAccent", onAccent},
        {"selection", selection},
        {"selectionText", accent},
        {"scroll", mixed(text, list, 0.22)},
        {"scrollHover", mixed(text, list, 0.38)},
        {"overdue", overdue},
        {"detail", detail},
        {"titleStart", titleStart},
        {"titleEnd", titleEnd},
    }};
    for (const auto &[word, color] : words)
        sheet.replace(QStringLiteral("@%1@").arg(QLatin1String(word)), color.name());
    return sheet;
}

void Theme::apply() const
{
    currentTheme() = *this;
    clearIconCache();
    QApplication::setStyle(new QuelvinStyle);
    QApplication::setPalette(palette());
    qApp->setStyleSheet(styleSheet());
}

const Theme &Theme::current()
{
    return currentTheme();
}

} // namespace views
