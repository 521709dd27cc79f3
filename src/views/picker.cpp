// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/picker.h"

#include "views/cell_painting.h"
#include "views/theme.h"

#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QScreen>
#include <QStyleOptionToolButton>
#include <QStylePainter>
#include <QVBoxLayout>

namespace views {

namespace {
constexpr int filterFrom = 10; // fewer choices are seen at a glance
constexpr int mostRows = 12;
} // namespace

Picker::Picker(QWidget *parent) : QToolButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    connect(this, &QToolButton::clicked, this, &Picker::open);
}

void Picker::showValue(const QString &text, const QString &placeholder)
{
    m_isPlaceholder = text.isEmpty();
    setText(text.isEmpty() ? placeholder : text);
}

void Picker::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    option.text.clear();
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
    painter.setPen(m_isPlaceholder ? Theme::current().muted : Theme::current().text);
    drawLine(&painter, option, placed(option, rect(), rect().adjusted(10, 0, -8, 0)), text());
}

void Picker::open()
{
    if (!m_choices)
        return;
    const std::vector<viewcontrollers::Choice> choices = m_choices();
    m_popup = new QFrame(this, Qt::Popup);
    m_popup->setObjectName(QStringLiteral("popup"));
    m_popup->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_popup, &QObject::destroyed, this, &Picker::closed);
    auto *layout = new QVBoxLayout(m_popup);
    layout->setContentsMargins(6, 6, 6, 6);
    m_filter = new QLineEdit;
    m_filter->setPlaceholderText(tr("Find"));
    m_filter->setAccessibleName(tr("Find"));
    m_filter->setVisible(choices.size() >= filterFrom);
    m_list = new QListWidget;
    m_list->setObjectName(QStringLiteral("choices"));
    m_list->setAccessibleName(accessibleName());
    m_list->setUniformItemSizes(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    layout->addWidget(m_filter);
    layout->addWidget(m_list);
    for (const viewcontrollers::Choice &choice : choices) {
        auto *item = new QListWidgetItem(choice.text.isEmpty() ? tr("None") : choice.text, m_list);
        item->setData(Qt::UserRole, choice.value);
        if (choice.text == text())
            m_list->setCurrentItem(item);
    }
    connect(m_filter, &QLineEdit::textChanged, this, &Picker::narrow);
    connect(m_list, &QListWidget::itemClicked, this, &Picker::pickCurrent);
    m_filter->installEventFilter(this);
    m_list->installEventFilter(this);

    const int rowHeight = std::max(m_list->sizeHintForRow(0), 24);
    const int rows = static_cast<int>(std::clamp<std::size_t>(choices.size(), 1, mostRows));
    m_list->setFixedHeight(rows * rowHeight + 4);
    m_popup->setFixedWidth(std::clamp(m_list->sizeHintForColumn(0) + 44, std::max(width(), 160), 420));
    m_popup->adjustSize();
    QPoint place = mapToGlobal(QPoint(0, height() + 2));
    if (const QScreen *onScreen = screen()) {
        const QRect room = onScreen->availableGeometry();
        place.setX(std::clamp(place.x(), room.left(), std::max(room.left(), room.right() - m_popup->width())));
        if (place.y() + m_popup->height() > room.bottom())
            place.setY(mapToGlobal(QPoint(0, 0)).y() - m_popup->height() - 2);
    }
    m_popup->move(place);
    m_popup->show();
    (m_filter->isVisible() ? static_cast<QWidget *>(m_filter) : m_list)->setFocus();
    if (m_list->currentItem())
        m_list->scrollToItem(m_list->currentItem(), QAbstractItemView::PositionAtCenter);
}

void Picker::narrow(const QString &text)
{
    QListWidgetItem *first = nullptr;
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem *item = m_list->item(row);
        const bool isShown = item->text().contains(text, Qt::CaseInsensitive);
        item->setHidden(!isShown);
        if (isShown && !first)
            first = item;
    }
    m_list->setCurrentItem(first);
}

void Picker::pickCurrent()
{
    const QListWidgetItem *item = m_list->currentItem();
    if (!item || item->isHidden())
        return;
    const QVariant value = item->data(Qt::UserRole);
    m_popup->close();
    Q_EMIT picked(value);
}

void Picker::step(int rows)
{
    int row = m_list->currentRow() + rows;
    while (row >= 0 && row < m_list->count() && m_list->item(row)->isHidden())
        row += rows;
    if (row >= 0 && row < m_list->count())
        m_list->setCurrentRow(row);
}

bool Picker::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QToolButton::eventFilter(watched, event);
    switch (static_cast<QKeyEvent *>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        pickCurrent();
        return true;
    case Qt::Key_Escape:
        m_popup->close();
        return true;
    case Qt::Key_Down:
        step(1);
        return true;
    case Qt::Key_Up:
        step(-1);
        return true;
    default:
        return QToolButton::eventFilter(watched, event);
    }
}

} // namespace views
