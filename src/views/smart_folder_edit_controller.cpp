// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/smart_folder_edit_controller.h"

#include "app/text.h"
#include "model/settings_defaults.h"
#include "model/task_queries.h"
#include "viewcontrollers/undo_group.h"
#include "views/criteria_view.h"
#include "views/date_field.h"
#include "views/icons.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QMenu>
#include <QScreen>
#include <QVBoxLayout>
#include <chrono>

namespace views {

using namespace std::chrono_literals;
using objectstore::Predicate;
namespace keys = model::keys;

namespace {

constexpr auto countDelay = 120ms; // between letters that are typed, where a count takes longer than is not felt
constexpr auto quickCount = 40ms;
constexpr int growDuration = 120; // ms
constexpr int sideMargin = 24;
constexpr int initialWidth = 720;

} // namespace

SmartFolderEditController::SmartFolderEditController(app::TMApplicationDelegate &delegate,
    const viewcontrollers::TaskCatalog &catalog, model::SmartFolder &smartFolder, QWidget *parent)
    : QDialog(parent)
    , m_delegate(delegate)
    , m_liveCount(delegate, catalog)
    , m_smartFolder(&smartFolder)
    , m_growth(this, "size")
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Smart Folder"));
    m_scroll = new QScrollArea;
    m_scroll->setObjectName(QStringLiteral("criteriaArea"));
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setWidgetResizable(true);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_notice = new QLabel(tr("The saved conditions cannot be read. Saving replaces them."));
    m_notice->setObjectName(QStringLiteral("notice"));
    m_notice->setWordWrap(true);
    m_notice->setContentsMargins(sideMargin, 0, sideMargin, 10);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeNameLine());
    layout->addWidget(m_notice);
    layout->addWidget(m_scroll, 1);
    layout->addWidget(makeFooter());
    m_countTimer.setSingleShot(true);
    m_countTimer.setInterval(countDelay);
    connect(&m_countTimer, &QTimer::timeout, this, &SmartFolderEditController::updateCount);
    connect(&m_delegate, &app::TMApplicationDelegate::objectsDidChange, &m_countTimer, qOverload<>(&QTimer::start));

    m_growth.setDuration(growDuration);
    m_growth.setEasingCurve(QEasingCurve::OutCubic);

    const auto stored = m_smartFolder->predicate();
    m_notice->setVisible(!stored && !objectstore::isNil(m_smartFolder->value("predicateData")));
    setCriteria(viewcontrollers::criteriaOf(stored.value_or(model::SmartFolder::defaultPredicate())));
    m_previousRowCount = m_predicateEditor->rowCount();
    const int rowsHeight = m_scroll->widget()->sizeHint().height();
    m_scroll->setMinimumHeight(std::min(rowsHeight, 2 * m_predicateEditor->rowHeight()));
    const int chrome = layout->sizeHint().height() - m_scroll->sizeHint().height();
    resize(initialWidth, std::min(chrome + rowsHeight, screen()->availableGeometry().height() - 80));
    updateCount();
    m_smartFolderTitle->setCursorPosition(0);
}

QWidget *SmartFolderEditController::makeNameLine()
{
    m_smartFolderTitle = new QLineEdit(app::toQString(m_smartFolder->title()));
    m_smartFolderTitle->setObjectName(QStringLiteral("smartFolderTitle"));
    m_smartFolderTitle->setPlaceholderText(tr("Name"));
    m_smartFolderTitle->setAccessibleName(tr("Name"));
    auto *top = new QWidget;
    auto *line = new QHBoxLayout(top);
    line->setContentsMargins(sideMargin, 20, sideMargin, 16);
    line->setSpacing(8);
    line->addWidget(m_smartFolderTitle, 1);
    line->addWidget(makeReadyMadeButton());
    return top;
}

QPushButton *SmartFolderEditController::makeReadyMadeButton()
{
    auto *menu = new QMenu(this);
    for (const viewcontrollers::ReadyMadeFolder &folder : viewcontrollers::readyMadeFolders()) {
        QAction *action = menu->addAction(QCoreApplication::translate("SmartFolderEditor", folder.title));
        connect(action, &QAction::triggered, this, [this, folder] { takeReadyMade(folder.title, folder.format); });
    }
    auto *button = new QPushButton(tr("Ready-Made"));
    button->setObjectName(QStringLiteral("readyMade"));
    button->setIcon(icon(QStringLiteral("chevron-down")));
    button->setIconSize({14, 14});
    button->setLayoutDirection(Qt::RightToLeft); // the icon last, where one reads from the left
    button->setToolTip(tr("Start from a smart folder that many people use"));
    button->setMenu(menu);
    button->setAutoDefault(false);
    return button;
}

QWidget *SmartFolderEditController::makeFooter()
{
    m_count = new QLabel;
    m_count->setObjectName(QStringLiteral("subline"));
    m_cancel = new QPushButton(tr("Cancel"));
    m_cancel->setAutoDefault(false);
    m_save = new QPushButton(tr("Save"));
    m_save->setObjectName(QStringLiteral("save"));
    m_save->setDefault(true);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_save, &QPushButton::clicked, this, &SmartFolderEditController::persistPredicate);
    auto *footer = new QWidget;
    footer->setObjectName(QStringLiteral("footer"));
    footer->setAttribute(Qt::WA_StyledBackground);
    auto *line = new QHBoxLayout(footer);
    line->setContentsMargins(sideMargin, 12, sideMargin, 12);
    line->setSpacing(8);
    line->addWidget(m_count, 1);
    line->addWidget(m_cancel);
    line->addWidget(m_save);
    return footer;
}

void SmartFolderEditController::editTitle()
{
    m_smartFolderTitle->setFocus();
    m_smartFolderTitle->selectAll();
}

void SmartFolderEditController::takeReadyMade(const char *title, const char *format)
{
    m_smartFolderTitle->setText(QCoreApplication::translate("SmartFolderEditor", title));
    setCriteria(viewcontrollers::criteriaOf(Predicate::format(format)));
    predicateEditorChanged();
}

void SmartFolderEditController::setCriteria(const viewcontrollers::CriteriaGroup &group)
{
    m_predicateEditor = new CriteriaGroupView(m_delegate, group);
    connect(m_predicateEditor, &CriteriaItemView::changed, this, &SmartFolderEditController::predicateEditorChanged);
    auto *content = new QWidget;
    content->setObjectName(QStringLiteral("criteriaContent"));
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(sideMargin, 0, sideMargin - 4, 16); // the last button's frame is not seen
    layout->addWidget(m_predicateEditor);
    layout->addStretch();
    m_scroll->setWidget(content);
    orderFocus();
}

Predicate SmartFolderEditController::predicate() const
{
    return viewcontrollers::predicateOf(m_predicateEditor->group(), m_delegate.clock().now());
}

void SmartFolderEditController::predicateEditorChanged()
{
    m_countTimer.start();
    const std::size_t rows = m_predicateEditor->rowCount();
    orderFocus();
    if (rows == m_previousRowCount)
        return;
    fitWindow(rows);
}

/// Grows or shrinks the window by the rows that came or went. Its top edge stays, and it ends where the screen ends.
void SmartFolderEditController::fitWindow(std::size_t rows)
{
    const int more = static_cast<int>(rows) - static_cast<int>(m_previousRowCount);
    m_previousRowCount = rows;
    const int before
        = m_growth.state() == QAbstractAnimation::Running ? m_growth.endValue().toSize().height() : height();
    const int wanted = before + more * m_predicateEditor->rowHeight();
    const int room = screen()->availableGeometry().bottom() - geometry().top();
    const QSize size(width(), std::max(minimumSizeHint().height(), std::min(wanted, room)));
    if (!isVisible()) {
        resize(size);
        return;
    }
    m_growth.stop();
    m_growth.setEndValue(size);
    m_growth.start();
}

/// Tab goes through the rows as they stand, whenever they came.
void SmartFolderEditController::orderFocus()
{
    QWidget *last = m_smartFolderTitle;
    QList<QWidget *> order{findChild<QPushButton *>(QStringLiteral("readyMade"))};
    order.append(m_predicateEditor->focusOrder());
    order.append({m_cancel, m_save});
    for (QWidget *next : order) {
        setTabOrder(last, next);
        last = next;
    }
}

void SmartFolderEditController::updateCount()
{
    const auto start = std::chrono::steady_clock::now();
    std::optional<bool> complete;
    const foundation::Settings &settings = m_delegate.settings();
    if (settings.boolean(keys::SmartFoldersApplyShowCompleted))
        complete = settings.boolean(keys::ShowCompletedTasks);
    const auto count = m_liveCount.count(model::smartFolderTasks(predicate(), complete));
    m_countTimer.setInterval(std::chrono::steady_clock::now() - start < quickCount ? 0ms : countDelay);
    if (!count) {
        m_count->setText(app::toQString(count.error().message));
        return;
    }
    const QString number = QLocale().toString(static_cast<qlonglong>(*count));
    QString text = *count == 1 ? tr("1 task") : tr("%1 tasks").arg(number);
    if (complete)
        text = tr("%1 · %2").arg(text,
            *complete ? tr("only completed ones, as set in Preferences") : tr("only open ones, as set in Preferences"));
    m_count->setText(text);
}

/// A date that is being corrected must not be saved as the one that stood there before.
bool SmartFolderEditController::isWaitingForDate()
{
    for (DateField *field : m_predicateEditor->findChildren<DateField *>()) {
        field->commit();
        if (field->property("isWrong").toBool()) {
            field->setFocus();
            return true;
        }
    }
    return false;
}

void SmartFolderEditController::persistPredicate()
{
    if (isWaitingForDate())
        return;
    const Predicate wanted = predicate();
    if (!objectstore::fromArchive(objectstore::archive(wanted))) {
        m_delegate.user().displayAlert(tr("These are more conditions than can be saved."), tr("Remove some of them."));
        return;
    }
    objectstore::ObjectContext &moc = m_delegate.managedObjectContext();
    {
        const viewcontrollers::UndoGroup group(moc, tr("Edit Smart Folder"));
        if (m_smartFolder->isDeleted())
            m_smartFolder = &model::insert<model::SmartFolder>(moc);
        m_smartFolder->setPredicate(wanted);
        m_smartFolder->setTitle(app::toUtf8(m_smartFolderTitle->text()));
    }
    m_delegate.saveAction();
    Q_EMIT saved(*m_smartFolder);
    accept();
}

} // namespace views
