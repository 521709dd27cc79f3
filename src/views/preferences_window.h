// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/connection_test.h"
#include "app/tm_application_delegate.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStackedWidget>
#include <QToolButton>

namespace views {

/// The settings that a person changes, in panes. Every change holds at once; there is nothing to confirm.
class PreferencesWindow final : public QDialog
{
    Q_OBJECT

public:
    /// `delegate` must outlive the window.
    explicit PreferencesWindow(app::TMApplicationDelegate &delegate, QWidget *parent = nullptr);

Q_SIGNALS:
    /// Which tasks the lists show has changed.
    void visibilityChanged();
    /// Colours or the appearance have changed.
    void appearanceChanged();

private:
    void addPane(const QString &title, const QString &iconName, QWidget *pane);
    QWidget *makeGeneralPane();
    QWidget *makeColorsPane();
    QWidget *makeSyncPane();
    QWidget *makeColumnsPane();
    QWidget *makeShortcutPane();
    QCheckBox *checkBox(const QString &text, std::string_view key, const std::function<void()> &changed);
    QLineEdit *textField(std::string_view key, bool isSecret = false);
    void pickColor(std::string_view key);
    void resetColors();
    void showColors();
    void setAllTasksToNew();

    app::TMApplicationDelegate &m_delegate;
    app::ConnectionTest m_connectionTest;
    QHBoxLayout *m_bar = nullptr;
    QButtonGroup *m_buttons = nullptr;
    QStackedWidget *m_panes = nullptr;
    QLabel *m_connectionStatus = nullptr;
    std::vector<QToolButton *> m_colorWells; ///< in the order of the colours
};

} // namespace views
