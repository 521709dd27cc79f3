// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/entities.h"
#include "objectstore/object_context.h"

#include <optional>
#include <string>
#include <vector>

namespace model {

/// A saved search: a title and the predicate that its tasks answer. A new one looks for "task" in the title.
///
/// Belongs to the thread of its context. The tasks it finds are kept until a task changes. A predicate that cannot be
/// read, because the record is damaged or was written by a later version, counts as none, which every task answers; its
/// bytes stay until another predicate is set.
class SmartFolder final : public ManagedObject
{
public:
    static constexpr std::string_view entityName = "SmartFolder";

    [[nodiscard]] static objectstore::Predicate defaultPredicate();

    void awakeFromInsert() override;
    void didTurnIntoFault() override { refresh(); }

    [[nodiscard]] std::string_view title() const { return text("title"); }
    void setTitle(std::string title) { setValue("title", std::move(title)); }

    [[nodiscard]] std::optional<objectstore::Predicate> predicate() const;
    /// Nothing sets the default predicate.
    void setPredicate(const std::optional<objectstore::Predicate> &predicate);
    /// Every task of the store that answers, those in the Trash included.
    [[nodiscard]] objectstore::FetchRequest fetchRequest() const;

    /// The tasks that answer; an error is shown and counts as none. The list holds until a task changes.
    [[nodiscard]] const std::vector<ManagedObject *> &tasks(foundation::ErrorPresenter &presenter);
    /// How much work the tasks are, at three a day; from three to five count as one day.
    struct Work {
        std::size_t tasks;
        double days;
        bool isOneDay;
    };
    [[nodiscard]] Work work(foundation::ErrorPresenter &presenter);
    /// How much work that is, at three tasks a day: "4 tasks, 1.33 day".
    [[nodiscard]] std::string summaryString(foundation::ErrorPresenter &presenter);
    /// Forgets the tasks, so that they are looked for when they are next asked for.
    void refresh();

private:
    void follow(const objectstore::ObjectsChange &change);

    std::optional<std::vector<ManagedObject *>> m_tasks;
    objectstore::Subscription m_changes; ///< while tasks are kept
};

/// Makes the relative dates of all smart folders anew at `now`, as is due when a day begins. Not undoable; fails where
/// the records cannot be fetched.
[[nodiscard]] foundation::Result<void> renewSmartFolders(ObjectContext &moc, Instant now);

} // namespace model
