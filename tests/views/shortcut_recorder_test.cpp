// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/shortcut_recorder.h"

#include "hotkeys/qvl_key_code_translator.h"
#include "support/test_application.h"
#include "views/preferences_window.h"

#include <QSignalSpy>
#include <QTest>

using hotkeys::QVLKeyCombo;
using views::ShortcutRecorder;

namespace {

class Recorder : public testing::Test
{
protected:
    Recorder()
    {
        window.show();
        window.findChild<QButtonGroup *>()->buttons().last()->click(); // the pane
        recorder = window.findChild<ShortcutRecorder *>();
        recorder->click();
        recorder->setFocus();
    }
    std::map<std::string, std::int64_t> stored()
    {
        return std::get<QVLKeyCombo::Plist>(*application.settings.value("Global Hot Key"));
    }

    support::TestApplication application;
    views::PreferencesWindow window{application.delegate()};
    ShortcutRecorder *recorder = nullptr;
};

} // namespace

TEST_F(Recorder, takesTheNextCombinationWhichIsInTheSettingsAtOnce)
{
    QTest::keyClick(recorder, Qt::Key_F9, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_FALSE(recorder->isRecording());
    const auto wanted = QVLKeyCombo::keyComboWithKeyCode(101, hotkeys::controlKey | hotkeys::optionKey);
    EXPECT_EQ(recorder->keyCombo(), wanted);
    EXPECT_EQ(stored(), wanted.plistRepresentation());
    EXPECT_EQ(application.delegate().hotKey().keyCombo(), wanted);
    EXPECT_EQ(recorder->text(), QStringLiteral("Ctrl + Alt + F9"));
}

TEST_F(Recorder, countsAKeyByItsPlaceAndTakesKeysThatMoveTheFocus)
{
    QKeyEvent umlaut(QEvent::KeyPress, Qt::Key_Udiaeresis, Qt::MetaModifier, 26 + 8, 0, 0);
    QCoreApplication::sendEvent(recorder, &umlaut);
    EXPECT_EQ(recorder->keyCombo(), QVLKeyCombo::keyComboWithKeyCode(33, hotkeys::cmdKey));
    recorder->click();
    QTest::keyClick(recorder, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(recorder->keyCombo(), QVLKeyCombo::keyComboWithKeyCode(48, hotkeys::controlKey));
}

TEST_F(Recorder, leavesItOnEscapeRemovesItOnBackspaceAndWaitsForAModifier)
{
    const QVLKeyCombo before = recorder->keyCombo();
    QTest::keyClick(recorder, Qt::Key_A);
    QTest::keyClick(recorder, Qt::Key_A, Qt::ShiftModifier);
    EXPECT_TRUE(recorder->isRecording()) << "the letter must stay one that can be typed";
    QTest::keyClick(recorder, Qt::Key_Escape);
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(recorder->keyCombo(), before);
    recorder->click();
    QTest::keyClick(recorder, Qt::Key_Backspace);
    EXPECT_FALSE(QVLKeyCombo::initWithPlistRepresentation(stored()).isValidHotKeyCombo());
    EXPECT_EQ(recorder->text(), QStringLiteral("None"));
}
