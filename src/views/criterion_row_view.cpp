// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/text.h"
#include "model/relative_date.h"
#include "viewcontrollers/criterion_choices.h"
#include "views/criteria_view.h"
#include "views/date_field.h"

#include <QLineEdit>
#include <QSpinBox>
#include <QWheelEvent>
#include <algorithm>

namespace views {

using viewcontrollers::Criterion;
using viewcontrollers::CriterionRow;
using viewcontrollers::DateSpan;
using viewcontrollers::Operand;
using viewcontrollers::OperandKind;

namespace {

constexpr int longestLength = 100000; // minutes

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(SmartFolderEditor)
};

/// Buttons of a spin box have no place beside the rows' own, and the wheel is for scrolling.
class NumberField final : public QSpinBox
{
public:
    NumberField(int highest, std::int64_t value)
    {
        setRange(0, highest);
        setValue(static_cast<int>(std::clamp<std::int64_t>(value, 0, highest)));
        setButtonSymbols(QAbstractSpinBox::NoButtons);
        setFocusPolicy(Qt::StrongFocus);
    }

protected:
    void wheelEvent(QWheelEvent *event) override { event->ignore(); }
};

QWidget *besideEachOther(std::initializer_list<QWidget *> fields)
{
    auto *all = new QWidget;
    auto *line = new QHBoxLayout(all);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(8);
    for (QWidget *field : fields)
        line->addWidget(field);
    line->addStretch();
    return all;
}

/// What the widest of all comparisons takes, so that the values stand below one another whatever is compared.
int widestTest(const QWidget &list)
{
    int width = 0;
    for (const auto &criterion : viewcontrollers::criteria()) {
        for (const auto &test : criterion.tests)
            width = std::max(width, list.fontMetrics().horizontalAdvance(Texts::tr(test.text)));
    }
    constexpr int aroundText = 44;
    return width + aroundText;
}

} // namespace

CriterionRowView::CriterionRowView(app::TMApplicationDelegate &delegate, CriterionRow row, bool canNest)
    : m_delegate(delegate), m_row(std::move(row))
{
    m_criterion = new StillComboBox(tr("Property"));
    m_criterion->setObjectName(QStringLiteral("criterion"));
    for (const auto &criterion : viewcontrollers::criteria())
        m_criterion->addItem(Texts::tr(criterion.text));
    m_criterion->setCurrentIndex(static_cast<int>(m_row.criterion));
    m_test = new StillComboBox(tr("Comparison"));
    m_test->setObjectName(QStringLiteral("test"));
    m_test->setMinimumWidth(widestTest(*m_test));
    m_line = makeLine(canNest);
    m_line->insertWidget(0, m_criterion);
    m_line->insertWidget(1, m_test);
    m_line->insertWidget(2, m_operand = new QWidget, 1);
    setLayout(m_line);
    showTests();
    showOperand();
    connect(m_criterion, &QComboBox::activated, this, &CriterionRowView::chooseCriterion);
    connect(m_test, &QComboBox::activated, this, &CriterionRowView::chooseTest);
}

QList<QWidget *> CriterionRowView::focusOrder() const
{
    QList<QWidget *> order{m_criterion, m_test};
    if (m_operand->focusPolicy() != Qt::NoFocus)
        order.append(m_operand);
    for (QWidget *field : m_operand->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
        if (m_operand->layout() && field->focusPolicy() != Qt::NoFocus)
            order.append(field);
    }
    order.append(buttons());
    return order;
}

void CriterionRowView::chooseCriterion(int place)
{
    if (place == static_cast<int>(m_row.criterion))
        return;
    const CriterionRow old = m_row;
    m_row = viewcontrollers::newRow(static_cast<Criterion>(place), m_delegate.clock().now());
    if (describe(old.criterion).tests.data() == describe(m_row.criterion).tests.data()) {
        m_row = old; // such as another date: only what is compared changes
        m_row.criterion = static_cast<Criterion>(place);
    }
    takeFirstChoice();
    showTests();
    showOperand();
    Q_EMIT changed();
}

void CriterionRowView::chooseTest(int place)
{
    const OperandKind shown = m_row.description().operand;
    m_row = withTest(m_row, static_cast<std::size_t>(place), m_delegate.clock().now());
    if (m_row.description().operand != shown) {
        takeFirstChoice();
        showOperand();
    }
    Q_EMIT changed();
}

/// What is compared with is one of the choices from the beginning.
void CriterionRowView::takeFirstChoice()
{
    const OperandKind kind = m_row.description().operand;
    if (kind != OperandKind::Title && kind != OperandKind::Number)
        return;
    const auto choices = viewcontrollers::criterionChoices(m_delegate.records(), m_row.criterion);
    const bool isOffered = std::any_of(
        choices.begin(), choices.end(), [this](const auto &choice) { return choice.value == m_row.operand; });
    if (!isOffered && !choices.empty())
        m_row.operand = choices.front().value;
}

void CriterionRowView::setOperand(Operand operand)
{
    m_row.operand = std::move(operand);
    Q_EMIT changed();
}

void CriterionRowView::showTests()
{
    m_test->clear();
    for (const auto &test : describe(m_row.criterion).tests)
        m_test->addItem(Texts::tr(test.text));
    m_test->setCurrentIndex(static_cast<int>(m_row.test));
}

void CriterionRowView::showOperand()
{
    QWidget *made = makeOperand();
    made->setObjectName(QStringLiteral("operand"));
    if (made->accessibleName().isEmpty())
        made->setAccessibleName(tr("Value"));
    delete m_line->replaceWidget(m_operand, made);
    m_operand->hide();
    m_operand->deleteLater();
    m_operand = made;
    m_line->setStretchFactor(made, 1);
    made->show();
}

QWidget *CriterionRowView::makeOperand()
{
    switch (m_row.description().operand) {
    case OperandKind::None:
        return new QWidget;
    case OperandKind::Text:
        return makeText();
    case OperandKind::Title:
    case OperandKind::Number:
        return makeChoices();
    case OperandKind::Flag:
        return makeFlag();
    case OperandKind::Minutes:
        return makeMinutes();
    case OperandKind::Day:
        return makeDay();
    case OperandKind::Span:
        return makeSpan();
    }
    return new QWidget;
}

QWidget *CriterionRowView::makeText()
{
    auto *field = new QLineEdit(app::toQString(std::get<std::string>(m_row.operand)));
    field->setCursorPosition(0);
    connect(field, &QLineEdit::textEdited, this, [this](const QString &text) { setOperand(app::toUtf8(text)); });
    auto *matchCase = new QAction(tr("Aa"), field);
    matchCase->setToolTip(tr("Match upper and lower case"));
    matchCase->setCheckable(true);
    matchCase->setChecked(!m_row.options.foldCase);
    connect(matchCase, &QAction::toggled, this, [this](bool isExact) {
        m_row.options.foldCase = !isExact;
        Q_EMIT changed();
    });
    auto *button = new QToolButton(field);
    button->setObjectName(QStringLiteral("matchCase"));
    button->setDefaultAction(matchCase);
    button->setAccessibleName(matchCase->toolTip());
    button->setFocusPolicy(Qt::TabFocus);
    button->setCursor(Qt::ArrowCursor);
    auto *end = new QHBoxLayout(field);
    end->setContentsMargins(0, 0, 4, 0);
    end->addStretch();
    end->addWidget(button);
    const int room = button->sizeHint().width();
    isRightToLeft() ? field->setTextMargins(room, 0, 0, 0) : field->setTextMargins(0, 0, room, 0);
    return field;
}

QWidget *CriterionRowView::makeChoices()
{
    auto *list = new StillComboBox(tr("Value"));
    auto choices = viewcontrollers::criterionChoices(m_delegate.records(), m_row.criterion);
    const auto isGiven = [this](const auto &choice) { return choice.value == m_row.operand; };
    if (std::none_of(choices.begin(), choices.end(), isGiven)) // a record that is gone
        choices.push_back({viewcontrollers::choiceText(m_row.criterion, m_row.operand), m_row.operand});
    for (const auto &choice : choices)
        list->addItem(choice.text);
    const auto given = std::find_if(choices.begin(), choices.end(), isGiven);
    list->setCurrentIndex(static_cast<int>(given - choices.begin()));
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon); // a long title must not widen the row
    list->setMinimumContentsLength(12);
    list->setToolTip(list->currentText());
    connect(list, &QComboBox::currentTextChanged, list, &QWidget::setToolTip);
    connect(list, &QComboBox::activated, this,
        [this, choices](int place) { setOperand(choices[static_cast<std::size_t>(place)].value); });
    return list;
}

QWidget *CriterionRowView::makeFlag()
{
    auto *list = new StillComboBox(tr("Value"));
    list->setObjectName(QStringLiteral("flag"));
    list->addItems({Texts::tr("Yes"), Texts::tr("No")});
    list->setCurrentIndex(std::get<bool>(m_row.operand) ? 0 : 1);
    connect(list, &QComboBox::activated, this, [this](int place) { setOperand(place == 0); });
    return besideEachOther({list});
}

QWidget *CriterionRowView::makeMinutes()
{
    auto *field = new NumberField(longestLength, std::get<std::int64_t>(m_row.operand));
    field->setObjectName(QStringLiteral("number"));
    field->setAccessibleName(tr("Minutes"));
    field->setSuffix(tr(" min"));
    connect(field, &QSpinBox::valueChanged, this, [this](int minutes) { setOperand(std::int64_t{minutes}); });
    return besideEachOther({field});
}

QWidget *CriterionRowView::makeDay()
{
    auto *field = new DateField(m_delegate.clock());
    field->setProperty("isFlat", false);
    field->resetDate(std::get<foundation::Instant>(m_row.operand));
    connect(field, &DateField::dateEdited, this, [this, field](std::optional<foundation::Instant> date) {
        if (date)
            setOperand(*date);
        else
            field->resetDate(std::get<foundation::Instant>(m_row.operand)); // "is not set" is a test of its own
    });
    return field;
}

QWidget *CriterionRowView::makeSpan()
{
    const DateSpan span = std::get<DateSpan>(m_row.operand);
    auto *number = new NumberField(static_cast<int>(model::maximumRelativeNumber), span.number);
    number->setObjectName(QStringLiteral("number"));
    number->setAccessibleName(tr("Number"));
    auto *units = new StillComboBox(tr("Unit"));
    units->setObjectName(QStringLiteral("units"));
    units->addItems({Texts::tr("days"), Texts::tr("weeks"), Texts::tr("months")});
    units->setCurrentIndex(span.unit);
    const auto take = [this, number, units] { setOperand(DateSpan{number->value(), units->currentIndex()}); };
    connect(number, &QSpinBox::valueChanged, this, take);
    connect(units, &QComboBox::activated, this, take);
    return besideEachOther({number, units});
}

} // namespace views
