// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate_node.h"
#include "objectstore/row.h"
#include "objectstore/text_test.h"

#include <vector>

namespace objectstore {

/// A comparison of one column with a constant, read straight from a row: what most predicates of lists are made of.
class ColumnTest
{
public:
    /// Whether a comparison with `test` and `constant` can be asked so.
    [[nodiscard]] static bool fits(Operator test, const ValueView &constant);

    /// `constant` and `textTest`, which is null for numbers, must outlive the test.
    ColumnTest(int slot, Operator test, const ValueView &constant, const TextTest *textTest);

    [[nodiscard]] bool answer(const Row &row) const
    {
        const Row::Kind kind = row.kind(m_slot);
        if (kind <= Row::Kind::Zero)
            return isAccepted(m_acceptedKinds, static_cast<int>(kind));
        if (m_textTest)
            return kind == Row::Kind::Text && m_textTest->matches(row.text(m_slot));
        if (!m_isReal && kind <= Row::Kind::Reference)
            return accepts(row.integer(m_slot), m_whole);
        if (m_isReal && (kind == Row::Kind::Date || kind == Row::Kind::Double))
            return accepts(row.real(m_slot), m_real);
        return acceptsOther(row);
    }

    /// How far the answer is to seek: in the kind, in the cell, in the text.
    [[nodiscard]] int cost() const { return m_textTest ? 3 : m_isReal ? 2 : 1; }

private:
    [[nodiscard]] static bool isAccepted(unsigned accepted, int index) { return (accepted >> index & 1U) != 0; }
    template <class Number> [[nodiscard]] bool accepts(Number value, Number constant) const
    {
        return isAccepted(m_acceptedOrders, value < constant ? 0 : value > constant ? 2 : 1);
    }
    [[nodiscard]] bool acceptsOther(const Row &row) const;

    int m_slot;
    bool m_isReal;
    std::uint8_t m_acceptedOrders = 0; ///< a bit each for less, equal and greater
    std::uint8_t m_acceptedKinds = 0; ///< a bit for each kind that is a value in itself
    std::int64_t m_whole;
    double m_real;
    ValueView m_constant;
    const TextTest *m_textTest;
};

/// A predicate of nothing but such comparisons, laid out as steps of which each names the next for either answer.
class RowTest
{
public:
    static constexpr int yes = -1; ///< the places after the last step
    static constexpr int no = -2;

    /// Adds a step; its place, for those before it to name.
    int add(const ColumnTest &test, int whenTrue, int whenFalse)
    {
        m_steps.push_back({test, whenTrue, whenFalse});
        return static_cast<int>(m_steps.size()) - 1;
    }
    void setFirst(int place) { m_first = place; }

    [[nodiscard]] bool answer(const Row &row) const
    {
        int place = m_first;
        while (place >= 0) {
            const Step &step = m_steps[static_cast<std::size_t>(place)];
            place = step.test.answer(row) ? step.whenTrue : step.whenFalse;
        }
        return place == yes;
    }

private:
    struct Step {
        ColumnTest test;
        int whenTrue;
        int whenFalse;
    };

    std::vector<Step> m_steps;
    int m_first = yes;
};

} // namespace objectstore
