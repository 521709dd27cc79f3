// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

namespace views {

/// Tells when typing pauses, or when there has been none for so long that what was typed is to be kept all the same.
class TypingPause final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// A key was pressed.
    void typed();
    /// What was typed is kept already.
    void stop();

Q_SIGNALS:
    void paused();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    QBasicTimer m_timer;
    QElapsedTimer m_sinceFirst; ///< the first key of those that are not kept yet
};

} // namespace views
