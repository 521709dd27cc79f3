// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/criteria_view.h"

#include "app/text.h"
#include "views/icons.h"
#include "views/theme.h"

#include <QLineEdit>
#include <QStyleOption>
#include <QStylePainter>
#include <QWheelEvent>
#include <algorithm>

namespace views {

using viewcontrollers::CriteriaGroup;
using viewcontrollers::CriteriaItem;
using viewcontrollers::Criterion;
using viewcontrollers::CriterionRow;

namespace {

constexpr int deepestGroup = 6;
constexpr int rowSpacing = 6;
constexpr int indent = 22;

} // namespace

StillComboBox::StillComboBox(const QString &name, QWidget *parent) : QComboBox(parent)
{
    setAccessibleName(name);
    setMaxVisibleItems(20);
}

void StillComboBox::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

void StillComboBox::paintEvent(QPaintEvent *)
{
    constexpr int arrowSize = 14;
    constexpr int aroundText = 38;
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.currentText = fontMetrics().elidedText(option.currentText, Qt::ElideRight, width() - aroundText);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
    painter.drawPixmap(width() - arrowSize - 8, (height() - arrowSize) / 2,
        iconPixmap(QStringLiteral("chevron-down"), Theme::current().muted, arrowSize, devicePixelRatioF()));
}

QToolButton *CriteriaItemView::makeButton(const QString &iconName, const QString &text)
{
    auto *button = new QToolButton;
    button->setIcon(icon(iconName));
    button->setIconSize({16, 16});
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setObjectName(iconName + QStringLiteral("Button"));
    button->setFocusPolicy(Qt::TabFocus);
    QSizePolicy policy = button->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // the buttons of all rows stand below one another
    button->setSizePolicy(policy);
    m_buttons.append(button);
    return button;
}

QHBoxLayout *CriteriaItemView::makeLine(bool canNest)
{
    auto *remove = makeButton(QStringLiteral("remove"), tr("Remove this condition"));
    auto *add = makeButton(QStringLiteral("add"), tr("Add a condition below"));
    auto *nest = makeButton(QStringLiteral("group"), tr("Add a group below"));
    nest->setEnabled(canNest);
    connect(remove, &QToolButton::clicked, this, &CriteriaItemView::removeRequested);
    connect(add, &QToolButton::clicked, this, [this] { Q_EMIT addRequested(false); });
    connect(nest, &QToolButton::clicked, this, [this] { Q_EMIT addRequested(true); });
    auto *line = new QHBoxLayout;
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(8);
    auto *end = new QHBoxLayout;
    end->setSpacing(0);
    for (QWidget *button : m_buttons)
        end->addWidget(button);
    line->addLayout(end);
    return line;
}

KeptConditionView::KeptConditionView(objectstore::Predicate condition, bool canNest) : m_condition(std::move(condition))
{
    auto *text = new QLineEdit(app::toQString(m_condition.text()));
    text->setObjectName(QStringLiteral("keptCondition"));
    text->setReadOnly(true);
    text->setCursorPosition(0);
    text->setToolTip(tr("There is no row for this condition. It is kept as it is."));
    text->setAccessibleName(tr("Condition"));
    text->setAccessibleDescription(text->toolTip());
    QHBoxLayout *line = makeLine(canNest);
    line->insertWidget(0, text, 1);
    setLayout(line);
}

CriteriaGroupView::CriteriaGroupView(app::TMApplicationDelegate &delegate, const CriteriaGroup &group, int depth)
    : m_delegate(delegate), m_depth(depth)
{
    m_kind = new StillComboBox(tr("Which conditions must hold"));
    m_kind->setObjectName(QStringLiteral("groupKind"));
    m_kind->addItems({tr("All of these hold"), tr("Any of these holds"), tr("None of these holds")});
    m_kind->setCurrentIndex(static_cast<int>(group.kind));
    connect(m_kind, &QComboBox::activated, this, &CriteriaItemView::changed);
    QHBoxLayout *heading = makeLine(canNest());
    heading->insertWidget(0, m_kind);
    heading->insertStretch(1);
    buttons().front()->setVisible(m_depth > 0);
    connect(this, &CriteriaItemView::addRequested, this, [this](bool isGroup) { addAt(0, isGroup); });

    auto *frame = new QWidget;
    frame->setObjectName(m_depth > 0 ? QStringLiteral("criteriaGroup") : QStringLiteral("criteria"));
    frame->setAttribute(Qt::WA_StyledBackground);
    m_rows = new QVBoxLayout(frame);
    m_rows->setContentsMargins(indent, 0, 0, 0);
    m_rows->setSpacing(rowSpacing);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(rowSpacing);
    layout->addLayout(heading);
    layout->addWidget(frame);
    for (const CriteriaItem &item : group.items)
        insert(m_views.size(), item);
    if (m_views.empty())
        insert(0, {viewcontrollers::newRow(Criterion::Title, m_delegate.clock().now())});
}

int CriteriaGroupView::rowHeight() const
{
    return m_kind->sizeHint().height() + rowSpacing;
}

bool CriteriaGroupView::canNest() const
{
    return m_depth < deepestGroup;
}

std::size_t CriteriaGroupView::placeOf(const CriteriaItemView *view) const
{
    return static_cast<std::size_t>(std::find(m_views.begin(), m_views.end(), view) - m_views.begin());
}

void CriteriaGroupView::insert(std::size_t place, const CriteriaItem &item)
{
    CriteriaItemView *view = nullptr;
    if (const auto *row = std::get_if<CriterionRow>(&item.content))
        view = new CriterionRowView(m_delegate, *row, canNest());
    else if (const auto *group = std::get_if<CriteriaGroup>(&item.content))
        view = new CriteriaGroupView(m_delegate, *group, m_depth + 1);
    else
        view = new KeptConditionView(std::get<objectstore::Predicate>(item.content), canNest());
    connect(view, &CriteriaItemView::changed, this, &CriteriaItemView::changed);
    connect(view, &CriteriaItemView::removeRequested, this, [this, view] { remove(view); });
    if (!qobject_cast<CriteriaGroupView *>(view)) // whose heading adds to itself
        connect(view, &CriteriaItemView::addRequested, this,
            [this, view](bool isGroup) { addAt(placeOf(view) + 1, isGroup); });
    m_rows->insertWidget(static_cast<int>(place), view);
    m_views.insert(m_views.begin() + static_cast<std::ptrdiff_t>(place), view);
    view->show(); // now, so that it can take the focus
}

void CriteriaGroupView::addAt(std::size_t place, bool isGroup)
{
    const CriterionRow row = viewcontrollers::newRow(Criterion::Title, m_delegate.clock().now());
    if (isGroup)
        insert(place, {CriteriaGroup{.kind = CriteriaGroup::Kind::Any, .items = {{row}, {row}}}});
    else
        insert(place, {row});
    m_views[place]->focusOrder().front()->setFocus();
    Q_EMIT changed();
}

void CriteriaGroupView::remove(CriteriaItemView *view)
{
    if (m_views.size() == 1 && m_depth > 0) {
        Q_EMIT removeRequested();
        return;
    }
    const std::size_t place = placeOf(view);
    m_views.erase(m_views.begin() + static_cast<std::ptrdiff_t>(place));
    m_rows->removeWidget(view);
    view->hide();
    view->deleteLater(); // the click comes from one of its buttons
    if (m_views.empty())
        insert(0, {viewcontrollers::newRow(Criterion::Title, m_delegate.clock().now())});
    m_views[std::min(place, m_views.size() - 1)]->focusOrder().front()->setFocus();
    Q_EMIT changed();
}

CriteriaGroup CriteriaGroupView::group() const
{
    CriteriaGroup group{.kind = static_cast<CriteriaGroup::Kind>(m_kind->currentIndex()), .items = {}};
    for (const CriteriaItemView *view : m_views)
        group.items.push_back(view->item());
    return group;
}

QList<QWidget *> CriteriaGroupView::focusOrder() const
{
    QList<QWidget *> order{m_kind};
    order.append(buttons());
    for (const CriteriaItemView *view : m_views)
        order.append(view->focusOrder());
    return order;
}

} // namespace views
