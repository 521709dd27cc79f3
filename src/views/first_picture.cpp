// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/first_picture.h"

#include <QEvent>
#include <QTimer>
#include <QWindow>
#include <chrono>

namespace views {

using namespace std::chrono_literals;

namespace {
constexpr auto longestWait = 500ms;
} // namespace

FirstPicture::FirstPicture(QWidget &window, std::function<void()> then) : m_then(std::move(then))
{
    window.winId(); // makes the window that hears of its exposure
    window.windowHandle()->installEventFilter(this);
    QTimer::singleShot(longestWait, this, &FirstPicture::finish);
}

bool FirstPicture::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Expose) // the picture is drawn while this is handled, after the filter
        QTimer::singleShot(0, this, &FirstPicture::finish);
    return QObject::eventFilter(watched, event);
}

void FirstPicture::finish()
{
    if (const auto then = std::exchange(m_then, nullptr))
        then();
}

} // namespace views
