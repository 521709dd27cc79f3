// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>

namespace views {

/// One line of text that is wrapped and as high as it needs. Return ends the editing; line ends in pasted text become
/// blanks.
class GrowingTextEdit final : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit GrowingTextEdit(QWidget *parent = nullptr);

    /// Makes the field as high as its text; text that is set with signals blocked needs it.
    void fitHeight();

Q_SIGNALS:
    void returnPressed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;
    void resizeEvent(QResizeEvent *event) override;
};

} // namespace views
