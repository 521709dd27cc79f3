// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/date_text.h"

#include "viewcontrollers/task_cells.h"

#include <QLocale>
#include <QRegularExpression>

namespace viewcontrollers {

namespace {

struct Dates {
    Q_DECLARE_TR_FUNCTIONS(Dates)
};

/// Takes the time of day off the end of `text`; nothing where there is none.
std::optional<QTime> takeTime(QString &text)
{
    static const QRegularExpression time(QStringLiteral("(?:^|[\\s,T])(\\d{1,2})(?::(\\d{2}))?\\s*([ap]m)?$"),
        QRegularExpression::CaseInsensitiveOption);
    const auto match = time.match(text);
    if (!match.hasMatch() || (match.captured(2).isEmpty() && match.captured(3).isEmpty()))
        return std::nullopt;
    int hour = match.captured(1).toInt();
    if (!match.captured(3).isEmpty())
        hour = hour % 12 + (match.captured(3).startsWith(QLatin1Char('p'), Qt::CaseInsensitive) ? 12 : 0);
    const QTime found(hour, match.captured(2).toInt());
    if (!found.isValid())
        return std::nullopt;
    text = text.left(match.capturedStart()).trimmed();
    while (text.endsWith(QLatin1Char(',')))
        text.chop(1);
    return found;
}

std::optional<QDate> relativeDay(const QString &text, QDate today)
{
    static const QRegularExpression distance(
        QStringLiteral("^(?:in\\s+|\\+)(\\d{1,4})\\s*(d|w|m|y)[a-z]*$"), QRegularExpression::CaseInsensitiveOption);
    const std::pair<QString, int> words[] = {{Dates::tr("today"), 0}, {Dates::tr("tomorrow"), 1},
        {Dates::tr("yesterday"), -1}, {Dates::tr("next week"), 8 - today.dayOfWeek()}};
    for (const auto &[word, days] : words) {
        if (text.compare(word, Qt::CaseInsensitive) == 0)
            return today.addDays(days);
    }
    if (const auto match = distance.match(text); match.hasMatch()) {
        const int number = match.captured(1).toInt();
        switch (match.captured(2).toLower().at(0).unicode()) {
        case 'd':
            return today.addDays(number);
        case 'w':
            return today.addDays(7 * number);
        case 'm':
            return today.addMonths(number);
        default:
            return today.addYears(number);
        }
    }
    return std::nullopt;
}

std::optional<QDate> weekday(const QString &text, QDate today)
{
    const QLocale locales[] = {QLocale(), QLocale(QLocale::English)};
    for (const QLocale &locale : locales) {
        for (int day = 1; day <= 7; ++day) {
            const bool isNamed = text.compare(locale.dayName(day, QLocale::LongFormat), Qt::CaseInsensitive) == 0
                || text.compare(locale.dayName(day, QLocale::ShortFormat), Qt::CaseInsensitive) == 0;
            if (isNamed)
                return today.addDays((day - today.dayOfWeek() + 6) % 7 + 1); // the next one, not today
        }
    }
    return std::nullopt;
}

std::optional<QDate> calendarDay(const QString &text, QDate today)
{
    static const char *const withYear[] = {"yyyy-M-d", "d MMM yyyy", "d MMMM yyyy", "MMM d yyyy", "MMMM d yyyy",
        "ddd d MMM yyyy", "d. MMM yyyy", "d. MMMM yyyy", "ddd d. MMM yyyy", "d.M.yyyy", "d/M/yyyy"};
    static const char *const withoutYear[]
        = {"d MMM", "d MMMM", "MMM d", "MMMM d", "ddd d MMM", "d. MMM", "d. MMMM", "d.M.", "d.M"};
    const QLocale locales[] = {QLocale(), QLocale(QLocale::English)};
    for (const QLocale &locale : locales) {
        for (const char *format : withYear) {
            if (const QDate day = locale.toDate(text, QString::fromLatin1(format)); day.isValid())
                return day;
        }
        if (QDate day = locale.toDate(text, QLocale::ShortFormat); day.isValid())
            return day.year() < 1970 ? day.addYears(100) : day; // two digits of a year mean this century
        for (const char *format : withoutYear) {
            // the year belongs to the text that is read, since 29 February is a day of some years only
            for (int year = today.year(); year < today.year() + 5; ++year) {
                const QDate day = locale.toDate(
                    text + QStringLiteral(" %1").arg(year), QString::fromLatin1(format) + QStringLiteral(" yyyy"));
                if (day.isValid() && day >= today)
                    return day;
            }
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<foundation::Instant> parseDate(const QString &text, foundation::Instant now)
{
    QString words = text.simplified();
    if (words.isEmpty())
        return std::nullopt;
    const QDate today = toDateTime(now).date();
    const std::optional<QTime> time = takeTime(words);
    std::optional<QDate> day = words.isEmpty() ? std::optional(today) : relativeDay(words, today);
    if (!day)
        day = weekday(words, today);
    if (!day)
        day = calendarDay(words.remove(QLatin1Char(',')), today);
    if (!day || !day->isValid())
        return std::nullopt;
    return toInstant(day->startOfDay().time() == QTime(0, 0) || time ? QDateTime(*day, time.value_or(QTime(0, 0)))
                                                                     : day->startOfDay());
}

QString fullDate(foundation::Instant date)
{
    const QLocale locale;
    const QDateTime when = toDateTime(date);
    const QString day = locale.toString(when.date(), Dates::tr("ddd d MMM yyyy", "a full date"));
    if (when.time() == QTime(0, 0))
        return day;
    return Dates::tr("%1, %2", "date, time").arg(day, timeText(when.time()));
}

} // namespace viewcontrollers
