// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace histories {

/// What a user, or the world, does in one step of a history.
enum class Deed : std::uint8_t {
    AddTask,
    Retitle,
    Annotate,
    Star,
    Prioritise,
    SetDue,
    Complete,
    Tag,
    MoveToFolder,
    PutInContext,
    Trash,
    Undelete,
    EmptyTrash,
    AddFolder,
    RenameFolder,
    DeleteFolder,
    AddContext,
    RenameContext,
    DeleteContext,
    Wait,
    Sync
};

/// What goes wrong with one request of a run.
enum class Fault : std::uint8_t {
    None,
    Refuse, ///< the request does not arrive
    LoseReply, ///< it arrives, and the answer gets lost, perhaps with the connection
    ErrorReply, ///< an `error` element instead of any work
    HtmlReply, ///< the page of a captive portal instead of any work
    StaleList, ///< a list as it was when the run before asked for it
    KillBefore, ///< the program dies before the request is sent
    KillAfter ///< the program dies when the request has been answered
};

/// One step. `client`, `target` and `value` are taken modulo what there is, so that any step fits any history and steps
/// can be left out.
struct Step {
    Deed deed = Deed::Wait;
    std::uint8_t client = 0;
    std::uint16_t target = 0;
    std::uint16_t value = 0;
    // of a run only
    Fault fault = Fault::None;
    std::uint8_t faultAt = 0; ///< which request, counted after the login
    std::uint8_t meddleAt = 0; ///< before which request `meddling` happens
    std::vector<Step> meddling; ///< done by this or other clients while the run is under way

    /// Whether the connection goes with a reply that gets lost, until the run has ended.
    [[nodiscard]] bool cutsOff() const { return fault == Fault::LoseReply && value % 2 != 0; }
};

/// A whole history: how many clients, how far their clocks are off, what is switched, and the steps.
struct History {
    int clients = 1;
    bool guards = true;
    bool marks = true; ///< whether the service knows an add that is sent again by its mark
    bool singleCalls = false; ///< whether the service takes no more than one call in a request
    std::vector<std::int32_t> skews; ///< seconds, one for each client
    std::vector<Step> steps;

    [[nodiscard]] bool hasFault(Fault fault) const;
    /// Whether some add may have arrived without its answer.
    [[nodiscard]] bool losesReplies() const;
};

/// The history that a seed stands for: one to three clients, at most sixty steps.
[[nodiscard]] History draw(std::uint64_t seed, int clients, bool guards);

/// One line for each step, for a person.
[[nodiscard]] std::string describe(const History &history);

/// What a history that ended wrongly shows; empty when all is well.
struct Verdict {
    std::vector<std::string> faults; ///< sentences
    int doubled = 0; ///< tasks that are there twice

    [[nodiscard]] bool isWell() const { return faults.empty(); }
};

/// Plays a history to its end and two clean runs beyond, and judges it.
[[nodiscard]] Verdict play(const History &history);

/// The shortest history that still goes wrong, found by leaving steps out.
[[nodiscard]] History shrunk(History history);

} // namespace histories
