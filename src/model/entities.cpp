// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/entities.h"

#include "foundation/log.h"
#include "model/data_utilities.h"
#include "objectstore/object_context.h"

#include <atomic>

namespace model {

namespace {

/// A record that is being made has nobody at hand to show an error to.
class LoggedErrors final : public foundation::ErrorPresenter
{
public:
    void presentError(const foundation::Error &error) override
    {
        foundation::logLine("A new task could not be placed: " + error.message + " " + error.detail);
    }
};

/// The next number of a kind of record; every context of the process counts on.
std::string numbered(std::string_view title, std::atomic<int> &counter)
{
    return std::string(title) + std::to_string(counter++);
}

} // namespace

void Tasks::awakeFromInsert()
{
    const Instant now = context().store().clock().now();
    setTitle("New Task");
    setCreationDate(now);
    setModifiedDate(now);

    LoggedErrors presenter;
    const DataUtilities utilities(context(), presenter);
    utilities.addTaskToState(0, this);
    utilities.addTaskToPriority(0, this);
    utilities.addTaskToContextId(0, this);
    utilities.addTaskToFolder(0, this);
}

void Folders::awakeFromInsert()
{
    static std::atomic<int> counter = 1;
    setTitle(numbered("New Folder #", counter));
}

void Contexts::awakeFromInsert()
{
    static std::atomic<int> counter = 1;
    setTitle(numbered("New Context #", counter));
    setDate("creationDate", context().store().clock().now());
}

} // namespace model
