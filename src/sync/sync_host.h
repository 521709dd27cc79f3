// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "objectstore/object_context.h"

#include <string_view>
#include <vector>

namespace syncing {

/// What is announced of a run, on the main thread.
enum class SyncNotification {
    QVLSyncDidBegin, ///< at the start, before the login
    QVLSyncDidEnd ///< at the end of every run, whether it succeeded or not
};

/// The program around a run: where its words go and who does what must be done on the main thread.
///
/// All of it is called on the thread of the run, except where a function says otherwise. What "waits" returns when the
/// main thread has done it or, at the end of the program, never will. `presentError` waits for the user.
class SyncHost : public foundation::ErrorPresenter
{
public:
    /// Shows one line; an empty one clears it. Does not wait. The first two of a run come from the main thread.
    virtual void updateStatus(std::string_view text) = 0;
    /// Shows an alert with one button; waits until it is dismissed.
    virtual void displayAlert(std::string_view title, std::string_view message) = 0;
    /// Asks whether the deletions that `sentence` describes shall be carried out; waits for the answer.
    virtual bool allowsDeletions(std::string_view sentence) = 0;
    /// Shows a desktop notification where there are any; does not wait.
    virtual void displayNotification(std::string_view title, std::string_view description) = 0;

    /// Announces on the main thread; does not wait.
    virtual void post(SyncNotification notification) = 0;
    /// Stops the tracking of edits in the main context, on the main thread; waits.
    virtual void unregisterForChangeNotifications() = 0;
    /// Starts it again; waits.
    virtual void registerForChangeNotifications() = 0;
    /// Merges what the run saved into the main context, on the main thread; does not wait.
    virtual void mergeChanges(objectstore::ChangeSet changes) = 0;
    /// Saves the main context and shows what goes wrong. Called on the main thread, before a run starts.
    virtual void saveAction() = 0;
};

} // namespace syncing
