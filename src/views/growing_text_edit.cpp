// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/growing_text_edit.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>
#include <QtMath>

namespace views {

GrowingTextEdit::GrowingTextEdit(QWidget *parent) : QPlainTextEdit(parent)
{
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabChangesFocus(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QPlainTextEdit::textChanged, this, &GrowingTextEdit::fitHeight);
}

void GrowingTextEdit::fitHeight()
{
    // the size of a plain-text document is counted in lines
    const int lines = std::max(1, qCeil(document()->documentLayout()->documentSize().height()));
    const QMargins around = contentsMargins();
    const int height = lines * fontMetrics().lineSpacing() + qCeil(2 * document()->documentMargin()) + around.top()
        + around.bottom() + 4;
    if (height != this->height())
        setFixedHeight(height);
}

void GrowingTextEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        Q_EMIT returnPressed();
    else
        QPlainTextEdit::keyPressEvent(event);
}

void GrowingTextEdit::insertFromMimeData(const QMimeData *source)
{
    insertPlainText(source->text().simplified());
}

void GrowingTextEdit::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    fitHeight();
}

} // namespace views
