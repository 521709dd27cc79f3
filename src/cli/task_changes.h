// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "foundation/error.h"
#include "foundation/instant.h"
#include "model/entities.h"
#include "objectstore/object_context.h"

#include <optional>
#include <string>
#include <vector>

namespace cli {

/// What the options of `add` and `edit` ask of a task. Everything is looked up before anything is changed.
class TaskChanges
{
public:
    /// Reads the options and finds the records that they name; tags that are not there are made.
    [[nodiscard]] static foundation::Result<TaskChanges> read(
        const Arguments &arguments, objectstore::ObjectContext &moc, foundation::Instant now);

    void applyTo(model::Tasks &task) const;

private:
    using Object = objectstore::ManagedObject *;
    /// A date to set, or no date.
    struct DateChange {
        std::string_view attribute;
        std::optional<foundation::Instant> date;
    };

    std::optional<std::string> m_title;
    std::optional<std::string> m_notes;
    std::optional<std::int64_t> m_reminder;
    std::optional<bool> m_star;
    std::vector<std::pair<std::string_view, Object>> m_placements; ///< by relationship
    std::vector<Object> m_tags;
    std::vector<Object> m_removedTags;
    std::vector<DateChange> m_dates;
};

/// The options that `add` and `edit` have in common, and those of `edit` alone.
[[nodiscard]] std::vector<OptionDescription> taskOptions();
[[nodiscard]] std::vector<OptionDescription> editOptions();

} // namespace cli
