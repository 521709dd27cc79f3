// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/command_set.h"

#include <QDialog>

namespace views {

/// All keys of the main window on one page, under the names of their menus.
class ShortcutsWindow final : public QDialog
{
    Q_OBJECT

public:
    explicit ShortcutsWindow(const CommandSet &commands, QWidget *parent = nullptr);
};

} // namespace views
