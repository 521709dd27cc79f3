// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>

namespace views {

/// The tick box of a task, as a button.
class TickBox final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit TickBox(QWidget *parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
};

} // namespace views
