// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"

#include <QFrame>
#include <QLineEdit>
#include <optional>

class QCalendarWidget;
class QCheckBox;
class QTimeEdit;

namespace views {

/// A date that is typed ("tomorrow 14:00", "26 Nov") or picked from a calendar, with a button that clears it. Text that
/// is no date stays in the field, marked, until it is corrected.
class DateField final : public QLineEdit
{
    Q_OBJECT

public:
    /// `clock` must outlive the field.
    explicit DateField(const foundation::Clock &clock, QWidget *parent = nullptr);

    [[nodiscard]] std::optional<foundation::Instant> date() const { return m_date; }
    /// Shows a date; leaves alone what is being typed.
    void setDate(std::optional<foundation::Instant> date);
    /// The same, whatever is being typed.
    void resetDate(std::optional<foundation::Instant> date);
    /// Takes what was typed as the date.
    void commit();

Q_SIGNALS:
    void dateEdited(std::optional<foundation::Instant> date);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showDate();
    void pick(std::optional<foundation::Instant> date);
    void openCalendar();

    const foundation::Clock &m_clock;
    std::optional<foundation::Instant> m_date;
    QAction *m_clear = nullptr;
};

/// The calendar that drops from a date field: a month, a time of day, and the days that are picked most.
class CalendarPopup final : public QFrame
{
    Q_OBJECT

public:
    CalendarPopup(std::optional<foundation::Instant> date, foundation::Instant now, QWidget *parent);

Q_SIGNALS:
    void picked(std::optional<foundation::Instant> date);

private:
    void pickDay(const QDate &day);

    QCalendarWidget *m_calendar = nullptr;
    QCheckBox *m_hasTime = nullptr;
    QTimeEdit *m_time = nullptr;
};

} // namespace views
