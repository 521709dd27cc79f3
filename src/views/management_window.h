// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "viewcontrollers/main_menu_controller.h"

#include <QDialog>
#include <QListWidget>

namespace views {

class ContextPlaceView;

/// What a managing window is about.
enum class Managed { Folders, Contexts, Tags, SmartFolders };

/// All records of one kind, to be added, renamed and deleted; contexts are given their places, too.
class ManagementWindow final : public QDialog
{
    Q_OBJECT

public:
    /// All must outlive the window.
    ManagementWindow(Managed kind, app::TMApplicationDelegate &delegate, viewcontrollers::MainMenuController &commands,
        QWidget *parent = nullptr);

Q_SIGNALS:
    /// The conditions of a smart folder are to be edited.
    void editRequested(model::SmartFolder &smartFolder);

private:
    void reload();
    void rename(const QListWidgetItem *item);
    void add();
    void removeSelected();
    [[nodiscard]] objectstore::ManagedObject *record(const QListWidgetItem *item) const;

    Managed m_kind;
    app::TMApplicationDelegate &m_delegate;
    viewcontrollers::MainMenuController &m_commands;
    QListWidget *m_records = nullptr;
    ContextPlaceView *m_place = nullptr; ///< for contexts alone
};

} // namespace views
