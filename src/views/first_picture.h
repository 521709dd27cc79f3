// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QWidget>
#include <functional>

namespace views {

/// Does something once, as soon as a window has drawn its first picture, so that the picture does not wait for what it
/// does not need. Where no picture is wanted, as of a window that starts behind others, it is done after a moment.
class FirstPicture final : public QObject
{
    Q_OBJECT

public:
    /// To be made before the window is shown, which must outlive it.
    FirstPicture(QWidget &window, std::function<void()> then);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void finish();

    std::function<void()> m_then;
};

} // namespace views
