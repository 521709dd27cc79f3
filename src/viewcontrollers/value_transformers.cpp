// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/value_transformers.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <cmath>

namespace viewcontrollers {

namespace {

struct Reminders {
    Q_DECLARE_TR_FUNCTIONS(Reminders)
};

struct ReminderLabel {
    const char *label;
    std::int64_t minutes;
};

constexpr std::int64_t longestReminder = 43200;

constexpr std::array<ReminderLabel, 18> reminders{{
    {QT_TRANSLATE_NOOP("Reminders", "No Reminder"), 0}, {QT_TRANSLATE_NOOP("Reminders", "15 minutes"), 15},
    {QT_TRANSLATE_NOOP("Reminders", "30 minutes"), 30}, {QT_TRANSLATE_NOOP("Reminders", "45 minutes"), 45},
    {QT_TRANSLATE_NOOP("Reminders", "60 minutes"), 60}, {QT_TRANSLATE_NOOP("Reminders", "90 minutes"), 90},
    {QT_TRANSLATE_NOOP("Reminders", "2 hours"), 120}, {QT_TRANSLATE_NOOP("Reminders", "3 hours"), 180},
    {QT_TRANSLATE_NOOP("Reminders", "4 hours"), 240}, {QT_TRANSLATE_NOOP("Reminders", "1 day"), 1440},
    {QT_TRANSLATE_NOOP("Reminders", "2 days"), 2880}, {QT_TRANSLATE_NOOP("Reminders", "3 days"), 4320},
    {QT_TRANSLATE_NOOP("Reminders", "4 days"), 5760}, {QT_TRANSLATE_NOOP("Reminders", "5 days"), 7200},
    {QT_TRANSLATE_NOOP("Reminders", "6 days"), 8640}, {QT_TRANSLATE_NOOP("Reminders", "1 week"), 10080},
    {QT_TRANSLATE_NOOP("Reminders", "2 weeks"), 20160},
    {QT_TRANSLATE_NOOP("Reminders", "4 weeks"), longestReminder}, // shown as "3 weeks"
}};

struct RepeatLabel {
    const char *label;
    std::int64_t code;
};

constexpr std::array<RepeatLabel, 10> repeats{{
    {QT_TRANSLATE_NOOP("Reminders", "Never"), 0},
    {QT_TRANSLATE_NOOP("Reminders", "Every day"), 4},
    {QT_TRANSLATE_NOOP("Reminders", "Every week"), 1},
    {QT_TRANSLATE_NOOP("Reminders", "Every 2 weeks"), 5},
    {QT_TRANSLATE_NOOP("Reminders", "Every month"), 2},
    {QT_TRANSLATE_NOOP("Reminders", "Every 2 months"), 6},
    {QT_TRANSLATE_NOOP("Reminders", "Every 3 months"), 8},
    {QT_TRANSLATE_NOOP("Reminders", "Every 6 months"), 7},
    {QT_TRANSLATE_NOOP("Reminders", "Every year"), 3},
    {QT_TRANSLATE_NOOP("Reminders", "With its parent"), 9},
}};
constexpr std::int64_t fromCompletion = 100;

} // namespace

QString reminderLabel(std::int64_t minutes)
{
    if (minutes == longestReminder)
        return Reminders::tr("3 weeks");
    const auto found
        = std::find_if(reminders.begin(), reminders.end(), [&](const auto &entry) { return entry.minutes == minutes; });
    return Reminders::tr(found == reminders.end() ? reminders.front().label : found->label);
}

std::int64_t reminderMinutes(const QString &label)
{
    const auto found = std::find_if(
        reminders.begin(), reminders.end(), [&](const auto &entry) { return Reminders::tr(entry.label) == label; });
    return found == reminders.end() ? 0 : found->minutes;
}

QStringList reminderLabels()
{
    QStringList labels;
    for (const ReminderLabel &entry : reminders)
        labels.append(Reminders::tr(entry.label));
    return labels;
}

QString repeatLabel(std::int64_t code)
{
    const bool isFromCompletion = code > fromCompletion;
    const std::int64_t base = isFromCompletion ? code - fromCompletion : code;
    const auto found
        = std::find_if(repeats.begin(), repeats.end(), [&](const auto &entry) { return entry.code == base; });
    if (found == repeats.end())
        return QString::number(code);
    const QString label = Reminders::tr(found->label);
    return isFromCompletion ? Reminders::tr("%1, after completion").arg(label) : label;
}

const std::vector<std::int64_t> &repeatCodes()
{
    static const std::vector<std::int64_t> codes = [] {
        std::vector<std::int64_t> all;
        for (const RepeatLabel &entry : repeats)
            all.push_back(entry.code);
        for (const RepeatLabel &entry : repeats) {
            if (entry.code > 0 && entry.code < 9)
                all.push_back(entry.code + fromCompletion);
        }
        return all;
    }();
    return codes;
}

std::optional<std::int64_t> parseLength(const QString &text)
{
    static const QRegularExpression clock(QStringLiteral("^(\\d{1,3}):([0-5]\\d)$"));
    static const QRegularExpression words(
        QStringLiteral(
            "^(?:(\\d{1,3}(?:[.,]\\d+)?)\\s*h(?:ours?|rs?)?)?\\s*(?:(\\d{1,5})\\s*(?:m|min|mins|minutes?)?)?$"),
        QRegularExpression::CaseInsensitiveOption);
    const QString wanted = text.simplified();
    if (wanted.isEmpty())
        return 0;
    if (const auto match = clock.match(wanted); match.hasMatch())
        return match.captured(1).toLongLong() * 60 + match.captured(2).toLongLong();
    const auto match = words.match(wanted);
    if (!match.hasMatch())
        return std::nullopt;
    const double hours = match.captured(1).replace(QLatin1Char(','), QLatin1Char('.')).toDouble();
    return std::llround(hours * 60) + match.captured(2).toLongLong();
}

} // namespace viewcontrollers
