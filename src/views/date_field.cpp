// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/date_field.h"

#include "viewcontrollers/date_text.h"
#include "viewcontrollers/task_cells.h"
#include "views/icons.h"
#include "views/theme.h"

#include <QAction>
#include <QCalendarWidget>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTextCharFormat>
#include <QTimeEdit>
#include <QToolButton>
#include <QVBoxLayout>

namespace views {

using foundation::Instant;
using viewcontrollers::toDateTime;
using viewcontrollers::toInstant;

DateField::DateField(const foundation::Clock &clock, QWidget *parent) : QLineEdit(parent), m_clock(clock)
{
    setProperty("isFlat", true);
    setPlaceholderText(tr("None"));
    auto *calendar = addAction(icon(QStringLiteral("calendar")), QLineEdit::TrailingPosition);
    calendar->setText(tr("Calendar"));
    m_clear = addAction(icon(QStringLiteral("close")), QLineEdit::TrailingPosition);
    m_clear->setText(tr("Clear"));
    m_clear->setVisible(false);
    connect(calendar, &QAction::triggered, this, &DateField::openCalendar);
    connect(m_clear, &QAction::triggered, this, [this] { pick(std::nullopt); });
    connect(this, &QLineEdit::editingFinished, this, &DateField::commit);
}

void DateField::setDate(std::optional<Instant> date)
{
    if (!isModified())
        resetDate(date);
}

void DateField::resetDate(std::optional<Instant> date)
{
    m_date = date;
    showDate();
}

void DateField::showDate()
{
    setText(m_date ? viewcontrollers::fullDate(*m_date) : QString()); // which also counts as not modified
    setCursorPosition(0);
    setToolTip({});
    setProperty("isWrong", false);
    style()->polish(this);
    m_clear->setVisible(m_date.has_value());
}

void DateField::commit()
{
    if (!isModified())
        return;
    if (text().simplified().isEmpty()) {
        pick(std::nullopt);
    } else if (const auto date = viewcontrollers::parseDate(text(), m_clock.now())) {
        pick(date);
    } else {
        setToolTip(tr("This is not a date. Try \"tomorrow\", \"fri 14:00\" or \"26 Nov\"."));
        setProperty("isWrong", true);
        style()->polish(this);
    }
}

void DateField::pick(std::optional<Instant> date)
{
    const bool isChanged = date != m_date;
    resetDate(date);
    if (isChanged)
        Q_EMIT dateEdited(date);
}

void DateField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && isModified())
        showDate();
    else if (event->key() == Qt::Key_Down)
        openCalendar();
    else
        QLineEdit::keyPressEvent(event);
}

void DateField::openCalendar()
{
    commit();
    auto *popup = new CalendarPopup(m_date, m_clock.now(), this);
    connect(popup, &CalendarPopup::picked, this, &DateField::pick);
    popup->adjustSize();
    QPoint place = mapToGlobal(QPoint(width() - popup->width(), height() + 2));
    const QRect room = screen()->availableGeometry();
    if (place.y() + popup->height() > room.bottom())
        place.setY(mapToGlobal(QPoint(0, 0)).y() - popup->height() - 2);
    popup->move(std::clamp(place.x(), room.left(), std::max(room.left(), room.right() - popup->width())), place.y());
    popup->show();
}

CalendarPopup::CalendarPopup(std::optional<Instant> date, Instant now, QWidget *parent) : QFrame(parent, Qt::Popup)
{
    setObjectName(QStringLiteral("popup"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(8);

    const QDate today = toDateTime(now).date();
    const std::pair<QString, QDate> days[] = {{tr("Today"), today}, {tr("Tomorrow"), today.addDays(1)},
        {tr("Next week"), today.addDays(8 - today.dayOfWeek())}};
    auto *shortcuts = new QHBoxLayout;
    for (const auto &[label, day] : days) {
        auto *button = new QPushButton(label);
        connect(button, &QPushButton::clicked, this, [this, picked = day] { pickDay(picked); });
        shortcuts->addWidget(button);
    }
    layout->addLayout(shortcuts);

    m_calendar = new QCalendarWidget;
    m_calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    m_calendar->setHorizontalHeaderFormat(QCalendarWidget::ShortDayNames);
    QTextCharFormat plain;
    plain.setForeground(Theme::current().text);
    for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday})
        m_calendar->setWeekdayTextFormat(day, plain);
    m_calendar->setSelectedDate(date ? toDateTime(*date).date() : today);
    connect(m_calendar, &QCalendarWidget::clicked, this, &CalendarPopup::pickDay);
    connect(m_calendar, &QCalendarWidget::activated, this, &CalendarPopup::pickDay);
    for (const auto &[name, image] : {std::pair("qt_calendar_prevmonth", "chevron-left"),
             std::pair("qt_calendar_nextmonth", "chevron-right")}) { // whose own pictures heed neither light nor dark
        auto *button = m_calendar->findChild<QToolButton *>(QString::fromLatin1(name));
        button->setIcon(icon(QString::fromLatin1(image)));
    }
    layout->addWidget(m_calendar);

    const QTime time = date ? toDateTime(*date).time() : QTime(0, 0);
    m_hasTime = new QCheckBox(tr("At"));
    m_hasTime->setChecked(time != QTime(0, 0));
    m_time = new QTimeEdit(m_hasTime->isChecked() ? time : QTime(9, 0));
    if (QLocale().language() == QLocale::C) // which would show seconds
        m_time->setDisplayFormat(QStringLiteral("HH:mm"));
    m_time->setEnabled(m_hasTime->isChecked());
    connect(m_hasTime, &QCheckBox::toggled, m_time, &QWidget::setEnabled);
    auto *set = new QPushButton(tr("Set"));
    set->setDefault(true);
    connect(set, &QPushButton::clicked, this, [this] { pickDay(m_calendar->selectedDate()); });
    auto *last = new QHBoxLayout;
    last->addWidget(m_hasTime);
    last->addWidget(m_time, 1);
    last->addWidget(set);
    layout->addLayout(last);
    m_calendar->setFocus();
}

void CalendarPopup::pickDay(const QDate &day)
{
    const QTime time = m_hasTime->isChecked() ? m_time->time() : QTime(0, 0);
    Q_EMIT picked(toInstant(QDateTime(day, time)));
    close();
}

} // namespace views
