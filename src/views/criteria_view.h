// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "viewcontrollers/smart_criteria.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidget>

namespace views {

class DateField;

/// A flat combo box that the wheel scrolls past; only a list that is open turns.
class StillComboBox final : public QComboBox
{
    Q_OBJECT

public:
    explicit StillComboBox(const QString &name, QWidget *parent = nullptr);

protected:
    void wheelEvent(QWheelEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};

/// What the rows of the smart folder editor have in common: the buttons at their end.
class CriteriaItemView : public QWidget
{
    Q_OBJECT

public:
    [[nodiscard]] virtual viewcontrollers::CriteriaItem item() const = 0;
    /// What takes the keyboard, in the order in which it stands.
    [[nodiscard]] virtual QList<QWidget *> focusOrder() const = 0;

Q_SIGNALS:
    void changed();
    /// A row, or a group of rows, is wanted below this one.
    void addRequested(bool isGroup);
    void removeRequested();

protected:
    explicit CriteriaItemView(QWidget *parent = nullptr) : QWidget(parent) { }
    /// A row that ends in its buttons; what it says goes in front.
    [[nodiscard]] QHBoxLayout *makeLine(bool canNest);
    [[nodiscard]] const QList<QWidget *> &buttons() const { return m_buttons; }

private:
    QToolButton *makeButton(const QString &iconName, const QString &text);

    QList<QWidget *> m_buttons;
};

/// One row: the criterion, the test and what to compare with. What is not touched stays as it was given.
class CriterionRowView final : public CriteriaItemView
{
    Q_OBJECT

public:
    CriterionRowView(app::TMApplicationDelegate &delegate, viewcontrollers::CriterionRow row, bool canNest);

    [[nodiscard]] viewcontrollers::CriteriaItem item() const override { return {m_row}; }
    [[nodiscard]] QList<QWidget *> focusOrder() const override;

private:
    void chooseCriterion(int place);
    void chooseTest(int place);
    void setOperand(viewcontrollers::Operand operand);
    void showTests();
    void showOperand();
    [[nodiscard]] QWidget *makeOperand();
    [[nodiscard]] QWidget *makeText();
    [[nodiscard]] QWidget *makeChoices();
    [[nodiscard]] QWidget *makeFlag();
    [[nodiscard]] QWidget *makeMinutes();
    [[nodiscard]] QWidget *makeDay();
    [[nodiscard]] QWidget *makeSpan();
    void takeFirstChoice();

    app::TMApplicationDelegate &m_delegate;
    viewcontrollers::CriterionRow m_row;
    StillComboBox *m_criterion = nullptr;
    StillComboBox *m_test = nullptr;
    QHBoxLayout *m_line = nullptr;
    QWidget *m_operand = nullptr;
};

/// A condition that has no row, as text.
class KeptConditionView final : public CriteriaItemView
{
    Q_OBJECT

public:
    KeptConditionView(objectstore::Predicate condition, bool canNest);

    [[nodiscard]] viewcontrollers::CriteriaItem item() const override { return {m_condition}; }
    [[nodiscard]] QList<QWidget *> focusOrder() const override { return buttons(); }

private:
    objectstore::Predicate m_condition;
};

/// Rows under a heading that says whether all, any or none of them must hold. A group that loses its last row asks to
/// be removed, but the outermost gets a new one.
class CriteriaGroupView final : public CriteriaItemView
{
    Q_OBJECT

public:
    CriteriaGroupView(app::TMApplicationDelegate &delegate, const viewcontrollers::CriteriaGroup &group, int depth = 0);

    [[nodiscard]] viewcontrollers::CriteriaGroup group() const;
    [[nodiscard]] viewcontrollers::CriteriaItem item() const override { return {group()}; }
    [[nodiscard]] QList<QWidget *> focusOrder() const override;
    /// Rows and headings below one another.
    [[nodiscard]] int rowHeight() const;
    [[nodiscard]] std::size_t rowCount() const { return viewcontrollers::rowCount(group()); }

private:
    void insert(std::size_t place, const viewcontrollers::CriteriaItem &item);
    void addAt(std::size_t place, bool isGroup);
    void remove(CriteriaItemView *view);
    [[nodiscard]] std::size_t placeOf(const CriteriaItemView *view) const;
    [[nodiscard]] bool canNest() const;

    app::TMApplicationDelegate &m_delegate;
    int m_depth;
    StillComboBox *m_kind = nullptr;
    QVBoxLayout *m_rows = nullptr;
    std::vector<CriteriaItemView *> m_views;
};

} // namespace views
