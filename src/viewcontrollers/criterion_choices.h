// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/data_utilities.h"
#include "viewcontrollers/smart_criteria.h"

#include <QString>
#include <vector>

namespace viewcontrollers {

/// One line of the menu at the end of a row.
struct CriterionChoice {
    QString text;
    Operand value;
};

/// What a criterion whose operand is picked can be compared with, in the order in which it is shown: the titles of all
/// records that have one, each once. An error of the store is shown and leaves nothing to choose.
[[nodiscard]] std::vector<CriterionChoice> criterionChoices(const model::DataUtilities &records, Criterion criterion);

/// How a choice reads; also one that is not offered any more, such as the title of a folder that is gone.
[[nodiscard]] QString choiceText(Criterion criterion, const Operand &value);

} // namespace viewcontrollers
