// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/cell_draft.h"

#include "app/text.h"
#include "objectstore/object_context.h"
#include "objectstore/undo_manager.h"

namespace views {

CellDraft::CellDraft(QLineEdit &editor, model::Tasks &task)
    : QObject(&editor), m_editor(editor), m_task(task), m_before(task.title())
{
    connect(&editor, &QLineEdit::textEdited, &m_typing, &TypingPause::typed);
    connect(&m_typing, &TypingPause::paused, this, &CellDraft::keep);
}

void CellDraft::keep()
{
    if (!m_kept)
        m_before = m_task.title();
    write(app::toUtf8(m_editor.text()));
    m_kept = m_task.title();
}

void CellDraft::takeBack()
{
    m_typing.stop();
    const auto kept = std::exchange(m_kept, std::nullopt);
    if (kept && m_task.title() == *kept) // else another has written since, whose title stands
        write(m_before);
}

void CellDraft::write(const std::string &title)
{
    if (m_task.isDeleted() || m_task.title() == title)
        return;
    objectstore::ObjectContext &moc = m_task.context();
    objectstore::UndoManager *undo = moc.undoManager();
    moc.processPendingChanges(); // what came before belongs to the steps
    if (undo)
        undo->disableRegistration();
    m_task.setTitle(title);
    moc.processPendingChanges();
    if (undo)
        undo->enableRegistration();
}

} // namespace views
