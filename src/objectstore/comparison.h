// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate_node.h"

namespace objectstore {

/// Orders two values that are not nothing as SQLite orders what is stored for them: numbers (flags, dates and records
/// among them) before text before bytes; numbers compare exactly, text and bytes by byte.
[[nodiscard]] int compareStored(const ValueView &left, const ValueView &right);

/// Equality under which nothing equals only nothing.
[[nodiscard]] bool equalStored(const ValueView &left, const ValueView &right);

/// The answer of an ordering for `order`, what `compareStored` gave.
[[nodiscard]] bool answers(Operator test, int order);

/// One step of arithmetic, done in doubles; nothing where it has no answer or an operand is no number.
[[nodiscard]] ValueView calculate(char operation, const ValueView &left, const ValueView &right);

} // namespace objectstore
