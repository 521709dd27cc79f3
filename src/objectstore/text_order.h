// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCollator>
#include <QString>
#include <string_view>

namespace objectstore {

/// The order of texts in the user's language without regard to case, in which localized lists are sorted.
class TextOrder
{
public:
    TextOrder();

    [[nodiscard]] QCollatorSortKey key(std::string_view text) const { return m_collator.sortKey(fromUtf8(text)); }
    /// Less than 0 where `left` comes first, 0 where the order makes no difference between them.
    [[nodiscard]] int compare(std::string_view left, std::string_view right) const
    {
        return m_collator.compare(fromUtf8(left), fromUtf8(right));
    }

private:
    static QString fromUtf8(std::string_view text)
    {
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    }

    QCollator m_collator;
};

} // namespace objectstore
