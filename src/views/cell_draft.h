// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/entities.h"
#include "views/typing_pause.h"

#include <QLineEdit>

namespace views {

/// Keeps a title that is being typed in a cell in its record whenever the typing pauses, or lasts, so that it is saved
/// before the editor closes. Until then it is no step to undo, and the title from before can be had back. Lives with
/// the editor.
class CellDraft final : public QObject
{
    Q_OBJECT

public:
    CellDraft(QLineEdit &editor, model::Tasks &task);

    /// Gives the record the title from before; what is put into it next is one step from that.
    void takeBack();

private:
    void keep();
    void write(const std::string &title);

    QLineEdit &m_editor;
    model::Tasks &m_task;
    std::string m_before;
    std::optional<std::string> m_kept; ///< the title that we gave the record
    TypingPause m_typing;
};

} // namespace views
