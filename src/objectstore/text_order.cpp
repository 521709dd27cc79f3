// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/text_order.h"

#include <QLocale>

namespace objectstore {

TextOrder::TextOrder()
{
    // the C locale has no order of words, only one of bytes
    const QLocale locale;
    m_collator = QCollator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
}

} // namespace objectstore
