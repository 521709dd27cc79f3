// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/error_text.h"

#include "app/text.h"

#include <QRegularExpression>
#include <QStringList>

namespace app {

namespace {

/// What the rooms below say when something goes wrong, with %1 and so on for the names in quotation marks.
[[maybe_unused]] constexpr const char *sentences[] = {
    QT_TRANSLATE_NOOP("Errors", "Your changes could not be saved. They are kept in the program."),
    QT_TRANSLATE_NOOP("Errors",
        "The file of the task store was moved, replaced or deleted while it was open. Your changes are kept in the "
        "program."),
    QT_TRANSLATE_NOOP("Errors",
        "The store \"%1\" can be read but not changed. To change tasks, make the file and its folder writable and "
        "start again."),
    QT_TRANSLATE_NOOP("Errors", "The store \"%1\" is already open in another window."),
    QT_TRANSLATE_NOOP("Errors", "The store \"%1\" could not be locked."),
    QT_TRANSLATE_NOOP("Errors", "The store \"%1\" could not be opened."),
    QT_TRANSLATE_NOOP("Errors", "The store \"%1\" is damaged. It was left as it is."),
    QT_TRANSLATE_NOOP("Errors", "The store \"%1\" is damaged. Some of your tasks may be missing."),
    QT_TRANSLATE_NOOP(
        "Errors", "The store \"%1\" was written by a newer version of the program. It was left as it is."),
    QT_TRANSLATE_NOOP("Errors", "The file \"%1\" is not a task store."),
    QT_TRANSLATE_NOOP("Errors", "Another store lies in the place of \"%1\"."),
    QT_TRANSLATE_NOOP("Errors", "The task store could not be read."),
    QT_TRANSLATE_NOOP("Errors", "The daily backup could not be written."),
    QT_TRANSLATE_NOOP("Errors", "The synchronisation broke off."),
    QT_TRANSLATE_NOOP("Errors", "A synchronisation is already under way. Wait until it has ended."),
    QT_TRANSLATE_NOOP("Errors",
        "The synchronisation cannot write its lock file beside your tasks. Make room on the disk, or make the folder "
        "writable."),
    QT_TRANSLATE_NOOP("Errors", "The settings could not be stored. Your former settings are kept."),
    QT_TRANSLATE_NOOP("Errors", "The settings could not be stored: another program has been writing them for seconds."),
    QT_TRANSLATE_NOOP("Errors", "The settings could not be read."),
    QT_TRANSLATE_NOOP("Errors", "The password could not be read from the keyring of your desktop."),
    QT_TRANSLATE_NOOP("Errors", "The password could not be kept in the keyring of your desktop."),
    QT_TRANSLATE_NOOP("Errors", "The password could not be taken out of the keyring of your desktop."),
    QT_TRANSLATE_NOOP("Errors", "The password is no longer in the keyring of your desktop. Enter it once more."),
    QT_TRANSLATE_NOOP("Errors", "The keyring of your desktop is waiting for you."),
    QT_TRANSLATE_NOOP("Errors", "This is no position. Write it as 52.4915, 13.4236 or as 52° 29.49' N, 13° 25.42' E."),
    QT_TRANSLATE_NOOP("Errors", "Minutes and seconds are below 60."),
    QT_TRANSLATE_NOOP("Errors", "The latitude lies between 90° south and 90° north."),
    QT_TRANSLATE_NOOP("Errors", "The longitude lies between 180° west and 180° east."),
};

} // namespace

QString errorText(const foundation::Error &error)
{
    static const QRegularExpression quotation(QStringLiteral("\"([^\"]*)\""));
    const QString sentence = toQString(error.message);
    QString pattern;
    QStringList names;
    qsizetype end = 0;
    for (auto found = quotation.globalMatch(sentence); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        names.append(match.captured(1));
        pattern += sentence.mid(end, match.capturedStart() - end) + QStringLiteral("\"%%1\"").arg(names.size());
        end = match.capturedEnd();
    }
    pattern += sentence.mid(end);
    const QString text = translated("Errors", toUtf8(pattern));
    if (text == pattern)
        return sentence;
    QString filled;
    end = 0;
    static const QRegularExpression place(QStringLiteral("%([1-9])"));
    for (auto found = place.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        filled += text.mid(end, match.capturedStart() - end) + names.value(match.captured(1).toInt() - 1);
        end = match.capturedEnd();
    }
    return filled + text.mid(end);
}

} // namespace app
