// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace views {

/// One line of text, which ends with an ellipsis where it finds too little room.
class LineLabel final : public QLabel
{
    Q_OBJECT

public:
    LineLabel() { setTextFormat(Qt::PlainText); }

    [[nodiscard]] QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace views
