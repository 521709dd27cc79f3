// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/tray_icon.h"

#include "views/icons.h"

#include <QPainter>

namespace views {

namespace {

constexpr int sizes[] = {16, 22, 24, 32, 48, 64}; // a tray scales badly, so it gets each size drawn
constexpr QColor badgeColor(0xd0, 0x2f, 0x2a); // the tray has colours of its own, so the theme is no guide

/// What of a badge can be read in a tray: three characters, so a long one is cut to its first number. The tooltip has
/// all.
QString fitting(const QString &badge)
{
    if (badge.size() <= 3)
        return badge;
    const QString first = badge.section(QLatin1Char('/'), 0, 0);
    return first.size() <= 2 ? first : QStringLiteral("99+");
}

QPixmap badgedPixmap(const QString &badge, int size)
{
    QPixmap pixmap = icon(QStringLiteral("quelvin")).pixmap(QSize(size, size), 1.0);
    if (badge.isEmpty())
        return pixmap;
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setPixelSize(qMax(8, size * 7 / 16));
    font.setWeight(QFont::Bold);
    const QString text = fitting(badge);
    const qreal height = font.pixelSize() * 1.15;
    const qreal width
        = qMin<qreal>(size, qMax(QFontMetricsF(font).horizontalAdvance(text) + font.pixelSize() * 0.5, height));
    const QRectF pill(size - width, size - height, width, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(badgeColor);
    painter.drawRoundedRect(pill, height / 2, height / 2);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(pill, Qt::AlignCenter, text);
    return pixmap;
}

} // namespace

QIcon badgedIcon(const QString &badge)
{
    QIcon drawn;
    for (const int size : sizes)
        drawn.addPixmap(badgedPixmap(badge, size));
    return drawn;
}

TrayIcon::TrayIcon(app::TMApplicationDelegate &delegate, const QList<QAction *> &actions) : m_delegate(delegate)
{
    m_menu.addActions(actions);
    m_icon.setContextMenu(&m_menu);
    connect(&m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason != QSystemTrayIcon::Context)
            Q_EMIT activated();
    });
    connect(&m_delegate, &app::TMApplicationDelegate::dockBadgeChanged, this, &TrayIcon::showBadge);
    showBadge();
    m_icon.show(); // also where a tray comes up later
}

void TrayIcon::showBadge()
{
    const QString &badge = m_delegate.badge();
    m_icon.setIcon(badgedIcon(badge));
    m_icon.setToolTip(badge.isEmpty() ? QStringLiteral("Quelvin") : tr("Quelvin: %1 waiting").arg(badge));
}

} // namespace views
