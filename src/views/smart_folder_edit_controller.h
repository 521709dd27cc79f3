// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "model/smart_folder.h"
#include "viewcontrollers/live_count.h"
#include "viewcontrollers/smart_criteria.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>

namespace views {

class CriteriaGroupView;

/// The window in which a smart folder gets its name and its conditions, with the number of tasks that they find.
///
/// Nothing is written before it is saved, which is one undoable step; closing the window otherwise drops what was
/// edited. A record that was deleted meanwhile is made anew by saving. Main thread.
class SmartFolderEditController final : public QDialog
{
    Q_OBJECT

public:
    /// `delegate` and `catalog` must outlive the window.
    SmartFolderEditController(app::TMApplicationDelegate &delegate, const viewcontrollers::TaskCatalog &catalog,
        model::SmartFolder &smartFolder, QWidget *parent = nullptr);

    [[nodiscard]] const model::SmartFolder &smartFolder() const { return *m_smartFolder; }
    /// What the rows say at this moment.
    [[nodiscard]] objectstore::Predicate predicate() const;
    /// Puts the name up to be typed over.
    void editTitle();
    /// Shows other conditions in place of those that are there.
    void setCriteria(const viewcontrollers::CriteriaGroup &group);
    /// Writes name and conditions into the record and closes the window; stays where a date is not understood, or
    /// says so where there are too many conditions.
    void persistPredicate();

Q_SIGNALS:
    void saved(model::SmartFolder &smartFolder);

private:
    QWidget *makeNameLine();
    QWidget *makeFooter();
    QPushButton *makeReadyMadeButton();
    void takeReadyMade(const char *title, const char *format);
    void predicateEditorChanged();
    void fitWindow(std::size_t rows);
    void orderFocus();
    [[nodiscard]] bool isWaitingForDate();
    void updateCount();

    app::TMApplicationDelegate &m_delegate;
    viewcontrollers::LiveCount m_liveCount;
    model::SmartFolder *m_smartFolder;
    QLineEdit *m_smartFolderTitle = nullptr;
    QLabel *m_notice = nullptr;
    QScrollArea *m_scroll = nullptr;
    CriteriaGroupView *m_predicateEditor = nullptr;
    QLabel *m_count = nullptr;
    QPushButton *m_save = nullptr;
    QPushButton *m_cancel = nullptr;
    QTimer m_countTimer;
    std::size_t m_previousRowCount = 0; ///< which the window was last fitted to
    QPropertyAnimation m_growth;
};

} // namespace views
