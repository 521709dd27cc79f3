// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

namespace views {

/// Fusion with the tick boxes of the task list everywhere.
class QuelvinStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    QuelvinStyle();

    void drawPrimitive(
        PrimitiveElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const override;
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    void polish(QWidget *widget) override;
    [[nodiscard]] int styleHint(
        StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *returned) const override;
};

} // namespace views
