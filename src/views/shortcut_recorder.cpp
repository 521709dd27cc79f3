// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/shortcut_recorder.h"

#include "hotkeys/qvl_key_code_translator.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QKeySequence>

namespace views {

using hotkeys::QVLKeyCodeTranslator;
using hotkeys::QVLKeyCombo;

namespace {

constexpr std::pair<Qt::KeyboardModifier, std::int64_t> modifierBits[] = {{Qt::ControlModifier, hotkeys::controlKey},
    {Qt::AltModifier, hotkeys::optionKey}, {Qt::ShiftModifier, hotkeys::shiftKey}, {Qt::MetaModifier, hotkeys::cmdKey}};

/// The names of the modifiers, which keyboards of some countries print in their own words.
[[maybe_unused]] constexpr const char *modifierNames[] = {QT_TRANSLATE_NOOP("Keys", "Ctrl"),
    QT_TRANSLATE_NOOP("Keys", "Alt"), QT_TRANSLATE_NOOP("Keys", "Shift"), QT_TRANSLATE_NOOP("Keys", "Super")};

std::int64_t modifiersOf(Qt::KeyboardModifiers modifiers)
{
    std::int64_t bits = 0;
    for (const auto &[modifier, bit] : modifierBits) {
        if (modifiers & modifier)
            bits |= bit;
    }
    return bits;
}

/// The key at the place that was pressed, or, where the platform does not tell, the one of that name.
const hotkeys::KeyCode *keyOf(const QKeyEvent &event)
{
    constexpr quint32 firstScanCode = 8; // X servers and Wayland count the kernel's codes from here
    if (event.nativeScanCode() > firstScanCode)
        return QVLKeyCodeTranslator::withLinuxCode(static_cast<int>(event.nativeScanCode() - firstScanCode));
    return QVLKeyCodeTranslator::withName(QKeySequence(event.key()).toString(QKeySequence::PortableText).toStdString());
}

bool isModifier(int key)
{
    constexpr Qt::Key keys[]
        = {Qt::Key_Control, Qt::Key_Alt, Qt::Key_AltGr, Qt::Key_Shift, Qt::Key_Meta, Qt::Key_Super_L, Qt::Key_Super_R,
            Qt::Key_Hyper_L, Qt::Key_Hyper_R, Qt::Key_CapsLock, Qt::Key_NumLock, Qt::Key_ScrollLock};
    return std::find(std::begin(keys), std::end(keys), key) != std::end(keys);
}

QString joined(const std::vector<std::string> &parts)
{
    QStringList words;
    for (const std::string &part : parts)
        words.append(QCoreApplication::translate("Keys", part.c_str()));
    return words.join(QStringLiteral(" + "));
}

} // namespace

ShortcutRecorder::ShortcutRecorder(Parts parts, QWidget *parent) : QPushButton(parent), m_parts(std::move(parts))
{
    setObjectName(QStringLiteral("shortcutRecorder"));
    setCheckable(true);
    setAutoDefault(false);
    setMinimumWidth(230);
    connect(this, &QPushButton::toggled, this, [this](bool isOn) {
        showText();
        Q_EMIT recordingChanged(isOn);
    });
    showText();
}

void ShortcutRecorder::setKeyCombo(const QVLKeyCombo &keyCombo)
{
    m_keyCombo = keyCombo;
    showText();
}

void ShortcutRecorder::showText(Qt::KeyboardModifiers held, bool isTooLittle)
{
    if (!isRecording()) {
        setText(m_keyCombo.isValidHotKeyCombo() ? joined(m_parts(m_keyCombo)) : tr("None"));
        return;
    }
    QStringList parts;
    for (std::size_t place = 0; place < std::size(modifierBits); ++place) {
        if (held & modifierBits[place].first)
            parts.append(QCoreApplication::translate("Keys", modifierNames[place]));
    }
    if (isTooLittle)
        setText(tr("With Ctrl, Alt or Super, please"));
    else
        setText(
            parts.isEmpty() ? tr("Type the new keys…") : parts.join(QStringLiteral(" + ")) + QStringLiteral(" + …"));
}

bool ShortcutRecorder::event(QEvent *event)
{
    if (isRecording()) {
        if (event->type() == QEvent::ShortcutOverride) {
            event->accept(); // the keys are no command of the window now
            return true;
        }
        if (event->type() == QEvent::KeyPress) {
            record(*static_cast<QKeyEvent *>(event)); // before Tab moves the focus
            return true;
        }
    }
    return QPushButton::event(event);
}

void ShortcutRecorder::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QPushButton::keyPressEvent(event);
}

void ShortcutRecorder::keyReleaseEvent(QKeyEvent *event)
{
    if (isRecording())
        showText(event->modifiers());
    else
        QPushButton::keyReleaseEvent(event);
}

void ShortcutRecorder::focusOutEvent(QFocusEvent *event)
{
    setChecked(false);
    QPushButton::focusOutEvent(event);
}

void ShortcutRecorder::record(const QKeyEvent &event)
{
    if (event.isAutoRepeat())
        return;
    constexpr Qt::KeyboardModifiers needed = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const bool isBare = !(event.modifiers() & (needed | Qt::ShiftModifier));
    if (isModifier(event.key())) {
        showText(event.modifiers());
    } else if (isBare && event.key() == Qt::Key_Escape) {
        setChecked(false);
    } else if (isBare && (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete)) {
        finish({});
    } else if (const hotkeys::KeyCode *key = keyOf(event); key && (event.modifiers() & needed)) {
        finish(QVLKeyCombo::keyComboWithKeyCode(key->keyCode, modifiersOf(event.modifiers())));
    } else {
        showText({}, true);
    }
}

void ShortcutRecorder::finish(const QVLKeyCombo &keyCombo)
{
    m_keyCombo = keyCombo;
    setChecked(false);
    Q_EMIT keyComboDidChange(keyCombo);
}

} // namespace views
