// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/token_field.h"

#include "views/icons.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QStringListModel>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QToolButton>

namespace views {

namespace {
constexpr int gap = 5;
constexpr int leastEditWidth = 90;
constexpr int indent = 8; // so that pills stand where the text of other fields does
} // namespace

TokenField::TokenField(QWidget *parent) : QWidget(parent)
{
    m_edit = new QLineEdit(this);
    m_edit->setProperty("isFlat", true);
    m_edit->setPlaceholderText(tr("Add a tag"));
    m_edit->installEventFilter(this);
    m_words = new QStringListModel(this);
    auto *completer = new QCompleter(m_words, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->popup()->setObjectName(QStringLiteral("completions"));
    completer->popup()->setItemDelegate(new QStyledItemDelegate(completer->popup())); // which the style sheet reaches
    m_edit->setCompleter(completer);
    connect(m_edit, &QLineEdit::textEdited, this, &TokenField::complete);
    connect(m_edit, &QLineEdit::editingFinished, this, &TokenField::commit);
    connect(completer, qOverload<const QString &>(&QCompleter::activated), this, &TokenField::commit,
        Qt::QueuedConnection); // after the completer has put its text into the field
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setFocusProxy(m_edit);
}

void TokenField::setTokens(const QStringList &tokens)
{
    if (tokens == m_tokens)
        return;
    m_tokens = tokens;
    rebuild();
}

void TokenField::commit()
{
    const QStringList words = m_edit->text().split(QLatin1Char(','), Qt::SkipEmptyParts);
    m_edit->clear();
    QStringList tokens = m_tokens;
    for (const QString &word : words) {
        const QString token = word.simplified();
        if (!token.isEmpty() && !tokens.contains(token))
            tokens.append(token);
    }
    if (tokens == m_tokens)
        return;
    m_tokens = tokens;
    rebuild();
    Q_EMIT tokensEdited(m_tokens);
}

void TokenField::remove(const QString &token)
{
    m_tokens.removeAll(token);
    rebuild();
    Q_EMIT tokensEdited(m_tokens);
}

void TokenField::complete(const QString &text)
{
    if (text.endsWith(QLatin1Char(',')))
        commit();
    else if (m_completions)
        m_words->setStringList(text.isEmpty() ? QStringList() : m_completions(text.trimmed()));
}

void TokenField::rebuild()
{
    for (QWidget *pill : m_pills)
        pill->deleteLater();
    m_pills.clear();
    for (const QString &token : m_tokens) {
        auto *pill = new QFrame(this);
        pill->setObjectName(QStringLiteral("pill"));
        auto *layout = new QHBoxLayout(pill);
        layout->setContentsMargins(9, 2, 4, 2);
        layout->setSpacing(1);
        auto *label = new QLabel(token);
        label->setTextFormat(Qt::PlainText);
        auto *close = new QToolButton;
        close->setObjectName(QStringLiteral("pillClose"));
        close->setIcon(icon(QStringLiteral("close")));
        close->setIconSize({12, 12});
        close->setFocusPolicy(Qt::NoFocus);
        close->setToolTip(tr("Remove \"%1\"").arg(token));
        close->setAccessibleName(close->toolTip());
        connect(close, &QToolButton::clicked, this, [this, token] { remove(token); });
        layout->addWidget(label);
        layout->addWidget(close);
        pill->show();
        m_pills.append(pill);
    }
    updateGeometry();
    arrange(width(), true);
}

/// Sets the pills one after the other, line by line, with the field behind the last; returns the height.
int TokenField::arrange(int width, bool isMoving) const
{
    const int line = m_edit->sizeHint().height();
    int x = indent;
    int y = 0;
    for (QWidget *pill : m_pills) {
        const QSize size(std::min(pill->sizeHint().width(), width - indent), pill->sizeHint().height());
        if (x > indent && x + size.width() > width) {
            x = indent;
            y += line + gap;
        }
        if (isMoving)
            pill->setGeometry(QStyle::visualRect(layoutDirection(), {0, 0, width, line},
                {x, y + (line - size.height()) / 2, size.width(), size.height()}));
        x += size.width() + gap;
    }
    if (x > indent && x + leastEditWidth > width) {
        x = indent;
        y += line + gap;
    }
    if (x == indent)
        x = 0; // the field has a margin of its own
    if (isMoving)
        m_edit->setGeometry(QStyle::visualRect(layoutDirection(), {0, 0, width, line}, {x, y, width - x, line}));
    return y + line;
}

int TokenField::heightForWidth(int width) const
{
    return arrange(width, false);
}

QSize TokenField::sizeHint() const
{
    return {200, arrange(width() > 0 ? width() : 200, false)};
}

void TokenField::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange(width(), true);
}

bool TokenField::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Backspace && m_edit->text().isEmpty() && !m_tokens.isEmpty()) {
            remove(m_tokens.last());
            return true;
        }
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && !m_edit->text().isEmpty()
            && !m_edit->completer()->popup()->isVisible()) {
            commit();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace views
