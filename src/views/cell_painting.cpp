// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/cell_painting.h"

#include <QCache>
#include <QTextLayout>

namespace views {

namespace {

constexpr int linesKept = 500; // some screens of them

struct LineKey {
    QString text;
    QString font;
    int width = 0;

    friend bool operator==(const LineKey &, const LineKey &) = default;
    friend size_t qHash(const LineKey &key, size_t seed) { return qHashMulti(seed, key.text, key.font, key.width); }
};

/// The text as it fits, laid out. Finding its glyphs takes longer than drawing them, and a list that is scrolled draws
/// the same lines again and again.
QTextLayout &fittingLine(const QString &text, const QFont &font, int width)
{
    static QCache<LineKey, QTextLayout> lines(linesKept); // they look the same in every window
    const LineKey key{text, font.key(), width};
    if (QTextLayout *line = lines.object(key))
        return *line;
    auto *line = new QTextLayout(QFontMetrics(font).elidedText(text, Qt::ElideRight, width), font);
    QTextOption option;
    option.setTextDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight); // the order of its words
    option.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::NoWrap);
    line->setTextOption(option);
    line->setCacheEnabled(true);
    line->beginLayout();
    line->createLine();
    line->endLayout();
    lines.insert(key, line);
    return *line;
}

} // namespace

void drawLine(QPainter *painter, const QStyleOption &option, const QRect &place, const QString &text)
{
    if (text.isEmpty())
        return;
    const QTextLayout &layout = fittingLine(text, painter->font(), place.width());
    const QTextLine line = layout.lineAt(0);
    const qreal left
        = option.direction == Qt::RightToLeft ? place.left() + place.width() - line.naturalTextWidth() : place.left();
    layout.draw(painter, {left, place.top() + (place.height() - line.ascent() - line.descent()) / 2});
}

} // namespace views
