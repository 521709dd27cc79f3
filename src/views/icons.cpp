// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/icons.h"

#include "views/theme.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

// A library's resources are linked in by name; the macro wants to stand outside every namespace.
static void initResources()
{
    Q_INIT_RESOURCE(quelvin);
}

namespace views {

namespace {

QByteArray svgSource(const QString &name)
{
    static const bool isReady = (initResources(), true);
    Q_UNUSED(isReady)
    const bool isDay = name.startsWith(QLatin1String("today_"));
    QFile file(QStringLiteral(":/icons/%1.svg").arg(isDay ? QStringLiteral("today") : name));
    if (!file.open(QFile::ReadOnly))
        return {};
    QByteArray source = file.readAll();
    if (isDay)
        source.replace("@DAY@", name.mid(6).toUtf8());
    return source;
}

/// Draws an icon by name whenever it is asked for, in whatever size.
class TintedIconEngine final : public QIconEngine
{
public:
    TintedIconEngine(QString name, QColor color) : m_name(std::move(name)), m_color(std::move(color)) { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const int size = std::min(rect.width(), rect.height());
        const QPixmap drawn = iconPixmap(m_name, color(mode, state), size, painter->device()->devicePixelRatioF());
        painter->drawPixmap(
            rect.center().x() - size / 2 + 1 - size % 2, rect.center().y() - size / 2 + 1 - size % 2, drawn);
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        // `size` is in device pixels already
        QPixmap drawn
            = iconPixmap(m_name, color(mode, state), qRound(std::min(size.width(), size.height()) / scale), scale);
        return drawn;
    }
    QIconEngine *clone() const override { return new TintedIconEngine(*this); }

private:
    [[nodiscard]] QColor color(QIcon::Mode mode, QIcon::State state) const
    {
        if (mode == QIcon::Disabled)
            return Theme::current().faint;
        if (state == QIcon::On && !m_color.isValid())
            return Theme::current().accent;
        return m_color.isValid() ? m_color : Theme::current().muted;
    }

    QString m_name;
    QColor m_color; ///< invalid means the theme's, whichever it is when the icon is drawn
};

} // namespace

QPixmap iconPixmap(const QString &name, const QColor &color, int size, qreal devicePixelRatio)
{
    const QString key = QStringLiteral("%1/%2/%3/%4").arg(name, color.name()).arg(size).arg(devicePixelRatio);
    QPixmap pixmap;
    const int pixels = qRound(size * devicePixelRatio);
    if (pixels <= 0 || QPixmapCache::find(key, &pixmap)) // a button that has no room yet asks for an icon of no size
        return pixmap;
    pixmap = QPixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QByteArray source = svgSource(name);
    source.replace("currentColor", color.name().toLatin1());
    QSvgRenderer renderer(source);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QIcon icon(const QString &name)
{
    return icon(name, QColor());
}

QIcon icon(const QString &name, const QColor &color)
{
    return QIcon(new TintedIconEngine(name, color));
}

QColor iconTint(const QString &name)
{
    const Theme &theme = Theme::current();
    if (name.startsWith(QLatin1String("today")) || name == QLatin1String("inbox"))
        return theme.accent;
    if (name == QLatin1String("location") || name == QLatin1String("context"))
        return theme.isDark ? QColor(0x5fc795) : QColor(0x2b8a5b);
    if (name == QLatin1String("smartfolder"))
        return theme.isDark ? QColor(0xf0a35e) : QColor(0xc8701c);
    return theme.muted;
}

void clearIconCache()
{
    QPixmapCache::clear();
}

} // namespace views
