// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "model/entities.h"

namespace model {

/// Creates the records that the program counts on where they are missing (the folder "Inbox", the context "None", the
/// states, the priorities) and saves. Run at every launch. Errors are shown and the rest is still done.
void initializeDataStore(ObjectContext &moc, foundation::ErrorPresenter &presenter);

/// Its steps, in this order.
void initFolderEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter);
/// A "None" that is made here has no `contextID` until the next launch; one that exists gets 0.
void initContextEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter);
/// The named states come only into a store without any state, so that one that the user deleted stays away.
void initStateEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter);
/// Saves nothing.
void initPriorityEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter);

} // namespace model
