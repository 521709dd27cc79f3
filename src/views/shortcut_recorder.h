// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hotkeys/qvl_key_combo.h"

#include <QPushButton>
#include <functional>

class QKeyEvent;

namespace views {

/// A button that shows a key combination, and after a press takes the next one that is typed: Escape leaves it as it
/// is, Backspace takes it away. A key counts by its place on the keyboard. Main thread.
class ShortcutRecorder final : public QPushButton
{
    Q_OBJECT

public:
    /// What the parts of a combination are called.
    using Parts = std::function<std::vector<std::string>(const hotkeys::QVLKeyCombo &)>;

    explicit ShortcutRecorder(Parts parts, QWidget *parent = nullptr);

    [[nodiscard]] const hotkeys::QVLKeyCombo &keyCombo() const { return m_keyCombo; }
    void setKeyCombo(const hotkeys::QVLKeyCombo &keyCombo);
    [[nodiscard]] bool isRecording() const { return isChecked(); }

Q_SIGNALS:
    /// The user has typed another combination, or none.
    void keyComboDidChange(const hotkeys::QVLKeyCombo &keyCombo);
    /// While recording, the combination in force should do nothing, so that it can be typed.
    void recordingChanged(bool isRecording);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void record(const QKeyEvent &event);
    void finish(const hotkeys::QVLKeyCombo &keyCombo);
    void showText(Qt::KeyboardModifiers held = {}, bool isTooLittle = false);

    Parts m_parts;
    hotkeys::QVLKeyCombo m_keyCombo;
};

} // namespace views
