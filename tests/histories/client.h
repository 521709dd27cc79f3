// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"
#include "histories/history.h"
#include "model/data_utilities.h"
#include "model/edit_tracking.h"
#include "model/task_store.h"
#include "support/recording_sync_host.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"
#include "sync/toodledo_sync.h"

#include <functional>
#include <memory>
#include <set>
#include <string>

namespace histories {

/// Answers the target of a request, such as "/api.php?method=getTasks;key=k;", and its body with a reply's text.
using Answer = std::function<std::string(std::string_view target, std::string_view body)>;

/// One computer of the user: a store in a file, settings, and a person who edits and synchronises.
class Client
{
public:
    Client(Answer answer, double start, std::int32_t skew, bool guards);
    ~Client();

    /// Does one step other than a run, on records that are there; false when there is none to do it to.
    bool edit(const Step &step, const std::string &name);
    /// One run with the step's fault; `meddle` is called before the request that the step names.
    void sync(const Step &step, const std::function<void()> &meddle);

    void setTime(double now) { m_clock.set({now + m_skew}); }

    /// The uids (first words of the titles) of the tasks in the Trash.
    [[nodiscard]] std::set<std::string> trashed();
    /// One line for each folder, context and task, sorted; tasks in the Trash with a mark.
    [[nodiscard]] std::multiset<std::string> contents();
    /// The uid of each task outside the Trash, as often as it is there.
    [[nodiscard]] std::multiset<std::string> uids();
    /// Sentences that were shown to the user since the start.
    [[nodiscard]] const std::vector<std::string> &said() const { return m_said; }

private:
    class Host;

    void open();
    void restart();
    void save();
    void turn();
    [[nodiscard]] std::vector<model::ManagedObject *> all(const char *entity);
    [[nodiscard]] model::ManagedObject *pick(const char *entity, std::uint16_t target);
    void editTask(const Step &step, model::Tasks &task, const std::string &name);

    Answer m_answer;
    std::int32_t m_skew;
    support::TemporaryFolder m_folder;
    support::TestClock m_clock;
    foundation::MemorySettingsFile m_settingsFile;
    foundation::Settings m_settings;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<model::TaskStore> m_store;
    std::unique_ptr<model::EditTracking> m_tracking;
    std::map<std::string, std::string> m_lastLists; ///< by method, for stale answers
    std::vector<std::string> m_said;
};

} // namespace histories
