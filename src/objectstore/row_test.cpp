// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/row_test.h"

#include "objectstore/comparison.h"

namespace objectstore {

namespace {

/// What a comparison says of values in the given order to each other.
bool holds(Operator test, int order)
{
    return answers(test, order) == (test != Operator::NotEqual);
}

} // namespace

bool ColumnTest::fits(Operator test, const ValueView &constant)
{
    const bool isNumber = constant.index() > 0 && constant.index() < 5 && test <= Operator::GreaterOrEqual;
    return isNumber || (std::holds_alternative<std::string_view>(constant) && isTextTest(test));
}

ColumnTest::ColumnTest(int slot, Operator test, const ValueView &constant, const TextTest *textTest)
    : m_slot(slot)
    , m_isReal(std::holds_alternative<double>(constant) || std::holds_alternative<Instant>(constant))
    , m_whole(toInteger(constant))
    , m_real(toDouble(constant))
    , m_constant(constant)
    , m_textTest(textTest)
{
    if (textTest)
        return; // none of these is a text
    for (int order = -1; order <= 1; ++order)
        m_acceptedOrders |= static_cast<std::uint8_t>(holds(test, order) ? 1U << (order + 1) : 0U);
    const auto acceptKind = [this](Row::Kind kind, bool isAccepted) {
        m_acceptedKinds |= static_cast<std::uint8_t>(isAccepted ? 1U << static_cast<int>(kind) : 0U);
    };
    acceptKind(Row::Kind::Nil, test == Operator::NotEqual);
    acceptKind(Row::Kind::False, holds(test, compareStored(false, constant)));
    acceptKind(Row::Kind::True, holds(test, compareStored(true, constant)));
    acceptKind(Row::Kind::Zero, holds(test, compareStored(std::int64_t{0}, constant)));
}

bool ColumnTest::acceptsOther(const Row &row) const
{
    const int order = compareStored(row.value(m_slot, nullptr), m_constant);
    return isAccepted(m_acceptedOrders, order < 0 ? 0 : order > 0 ? 2 : 1);
}

} // namespace objectstore
