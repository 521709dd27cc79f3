// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate_node.h"

#include <memory>
#include <string>
#include <string_view>

class QRegularExpression;

namespace objectstore {

/// A test of text against one fixed text, which is prepared once: the same code answers in memory and inside SQL.
class TextTest
{
public:
    TextTest(Operator test, std::string_view pattern, TextOptions options);
    ~TextTest();
    TextTest(TextTest &&) noexcept;

    [[nodiscard]] bool matches(std::string_view text) const;
    /// Whether a pattern of MATCHES can be used at all.
    [[nodiscard]] bool isValid() const;

private:
    [[nodiscard]] bool compare(std::string_view text) const;

    Operator m_test;
    TextOptions m_options;
    std::string m_pattern;
    std::unique_ptr<QRegularExpression> m_expression;
};

} // namespace objectstore
