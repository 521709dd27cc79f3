// SPDX-License-Identifier: GPL-3.0-or-later
// A plugin that Qt loads into the built program where QT_QPA_GENERIC_PLUGINS names it: a user who works through a
// script of keys and reports, with the time, what the main thread has taken in. Nothing in the program knows of it.
//
// The script (QUELVIN_DRIVER_SCRIPT) has one step a line:
//     wait MILLISECONDS
//     key KEYS                 such as Ctrl+N
//     focus NAME               clicks into the control of this accessible name
//     expect NAME              until the keys go to the control of this accessible name
//     subject STEP             reports the text of that control
//     mark STEP                reports that the keys before it were taken
//     type STEP GAP TEXT       types with GAP milliseconds between two keys, and reports each
//     synced COUNT             until so many synchronisations have ended
// Each line of the report on the standard output is "MICROSECONDS WHAT STEP DETAIL", written before the next event.
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QFile>
#include <QGenericPlugin>
#include <QLineEdit>
#include <QMainWindow>
#include <QScopedValueRollback>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWindow>
#include <chrono>
#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

constexpr auto beat = 5ms;
constexpr qint64 toldSilence = 20'000; // microseconds
constexpr auto longestWait = 10s; ///< for what a step waits for

qint64 now()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void report(const char *what, const QString &step = {}, const QString &detail = {})
{
    const QByteArray line = QByteArray::number(now()) + ' ' + what + ' ' + (step.isEmpty() ? "-" : step.toUtf8()) + ' '
        + detail.toUtf8().replace('\n', ' ') + '\n';
    [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, line.constData(), static_cast<size_t>(line.size()));
}

/// For how long the main thread was ready to run and had no processor, in microseconds; what the test's own load costs.
qint64 waitedForProcessor()
{
    static const int file = ::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC);
    char text[96] = {};
    if (file < 0 || ::pread(file, text, sizeof text - 1, 0) <= 0)
        return 0;
    return QByteArray(text).split(' ').value(1).toLongLong() / 1000;
}

class Driver final : public QObject
{
    Q_OBJECT

public:
    Driver() : m_bug(qgetenv("QUELVIN_DRIVER_BUG"))
    {
        QFile file(qEnvironmentVariable("QUELVIN_DRIVER_SCRIPT"));
        if (file.open(QFile::ReadOnly))
            m_steps = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        qApp->installEventFilter(this);
        m_hands.setSingleShot(true);
        m_hands.setTimerType(Qt::PreciseTimer);
        connect(&m_hands, &QTimer::timeout, this, &Driver::go);
        m_heart.setTimerType(Qt::PreciseTimer);
        connect(&m_heart, &QTimer::timeout, this, &Driver::listen);
        m_hands.start(0);
    }

    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() == QEvent::MetaCall && !m_sync && receiver->inherits("app::MainThreadSyncHost")) {
            m_sync = receiver;
            connect(receiver, SIGNAL(syncDidBegin()), this, SLOT(syncBegan()));
            connect(receiver, SIGNAL(syncDidEnd()), this, SLOT(syncEnded()));
        }
        return event->type() == QEvent::Timer && isHeldBack(*receiver);
    }

private Q_SLOTS:
    void syncBegan() { report("sync-began"); }
    void syncEnded()
    {
        ++m_synced;
        if (m_bug == "window-blocked")
            QThread::msleep(250);
        report("sync-ended");
    }

private:
    /// The bugs that can be planted: a save, or what precedes it, that never comes.
    [[nodiscard]] bool isHeldBack(const QObject &receiver) const
    {
        if (m_bug == "typing-kept-back")
            return receiver.inherits("views::TypingPause");
        const auto *timer = qobject_cast<const QTimer *>(&receiver);
        return m_bug == "idle-save-off" && timer && timer->isSingleShot() && timer->intervalAsDuration() == 700ms;
    }

    void listen()
    {
        const qint64 at = now();
        const qint64 waited = waitedForProcessor();
        if (m_lastBeat > 0 && at - m_lastBeat > toldSilence)
            report("silence", QString::number(at - m_lastBeat), QString::number(waited - m_waitedBefore));
        else if (++m_beats % 4 == 0)
            report("alive");
        m_lastBeat = now();
        m_waitedBefore = waitedForProcessor();
    }

    static QWidget *inFront()
    {
        QWidget *window = QApplication::activeModalWidget();
        if (!window)
            window = QApplication::activeWindow();
        for (QWidget *candidate : QApplication::topLevelWidgets()) {
            if (!window && qobject_cast<QMainWindow *>(candidate) && candidate->isVisible())
                window = candidate;
        }
        return window && window->windowHandle() ? window : nullptr;
    }

    void press(const QKeySequence &keys)
    {
        const QScopedValueRollback pressing(m_isPressing, true);
        if (QWidget *window = inFront())
            QTest::keyClick(window->windowHandle(), keys[0].key(), keys[0].keyboardModifiers());
    }

    static void clickInto(const QString &name)
    {
        for (QWidget *widget : inFront()->findChildren<QWidget *>()) {
            if (widget->accessibleName() == name && widget->isVisible())
                return widget->setFocus(Qt::MouseFocusReason);
        }
        report("wrong", QStringLiteral("focus"), name);
    }

    void go()
    {
        if (!m_heart.isActive()) {
            if (!inFront() || !QApplication::focusWidget())
                return m_hands.start(2);
            report("ready");
            m_heart.start(beat);
        }
        if (m_isPressing && !QApplication::activeModalWidget())
            return m_hands.start(1); // between the press and the release of a key, where events are handled, too
        if (m_steps.isEmpty())
            return report("done");
        const QString step = m_steps.first();
        const QString word = step.section(QLatin1Char(' '), 0, 0);
        const QString rest = step.section(QLatin1Char(' '), 1);
        if (word == QLatin1String("type"))
            return type(rest);
        if (const auto isThere = awaited(word, rest); isThere && !*isThere) {
            if (m_waitingSince == 0)
                m_waitingSince = now();
            if (now() - m_waitingSince < std::chrono::microseconds(longestWait).count())
                return m_hands.start(2);
            report("wrong", word, rest + QStringLiteral(" but ") + focus());
        }
        m_waitingSince = 0;
        m_steps.removeFirst();
        m_hands.start(word == QLatin1String("wait") ? rest.toInt() : 1); // before the key: it may open a window
        if (word == QLatin1String("key"))
            press(QKeySequence(rest));
        else if (word == QLatin1String("focus"))
            clickInto(rest);
        else if (word == QLatin1String("mark"))
            report("mark", rest);
        else if (word == QLatin1String("subject")) {
            const auto *line = qobject_cast<QLineEdit *>(QApplication::focusWidget());
            report("subject", rest,
                line ? line->text()
                     : QString::fromUtf8(QApplication::focusWidget()->metaObject()->className())
                        + QApplication::focusWidget()->objectName());
        }
    }

    /// Whether what a step waits for is there; nothing for a step that waits for nothing.
    [[nodiscard]] std::optional<bool> awaited(const QString &word, const QString &rest) const
    {
        if (word == QLatin1String("expect"))
            return focus() == rest;
        if (word == QLatin1String("synced"))
            return m_synced >= rest.toInt();
        return std::nullopt;
    }

    [[nodiscard]] static QString focus()
    {
        const QWidget *widget = QApplication::focusWidget();
        return widget ? widget->accessibleName() : QStringLiteral("nothing");
    }

    void type(const QString &rest)
    {
        const QString step = rest.section(QLatin1Char(' '), 0, 0);
        const int gap = rest.section(QLatin1Char(' '), 1, 1).toInt();
        const QString text = rest.section(QLatin1Char(' '), 2);
        if (m_typed == text.size()) {
            m_typed = 0;
            m_steps.removeFirst();
        } else {
            QTest::keyClick(inFront()->windowHandle(), text[m_typed].toLatin1());
            report("typed", step, QString::number(++m_typed));
        }
        m_hands.start(gap);
    }

    const QByteArray m_bug;
    QStringList m_steps;
    QTimer m_hands;
    QTimer m_heart;
    QObject *m_sync = nullptr;
    qint64 m_lastBeat = 0;
    qint64 m_waitedBefore = 0;
    qint64 m_waitingSince = 0;
    qsizetype m_typed = 0;
    int m_synced = 0;
    int m_beats = 0;
    bool m_isPressing = false;
};

class DriverPlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "window_driver.json")

public:
    QObject *create(const QString &, const QString &) override { return new Driver; }
};

} // namespace

#include "window_driver.moc"
