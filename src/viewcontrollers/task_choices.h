// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/data_utilities.h"
#include "viewcontrollers/task_columns.h"

#include <QStringList>
#include <QVariant>
#include <vector>

namespace viewcontrollers {

/// One record that a task can be given, as a picker shows it; the value is the record's URI.
struct Choice {
    QString text;
    QVariant value;
};

/// The folders, contexts, states or priorities to choose from, in the order in which they are shown.
[[nodiscard]] std::vector<Choice> choices(const model::DataUtilities &records, TaskColumn column);

/// The tags with these titles; those that are missing are made.
[[nodiscard]] std::vector<objectstore::ManagedObject *> tagsWithTitles(
    const model::DataUtilities &records, const QStringList &titles);

} // namespace viewcontrollers
