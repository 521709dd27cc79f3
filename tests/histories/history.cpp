// SPDX-License-Identifier: GPL-3.0-or-later
#include "histories/history.h"

#include <algorithm>
#include <array>
#include <random>

namespace histories {

namespace {

constexpr std::array<const char *, 21> deedNames{"adds a task", "retitles a task", "annotates a task", "stars a task",
    "prioritises a task", "sets a due date", "completes a task", "tags a task", "moves a task to a folder",
    "puts a task in a context", "trashes a task", "undeletes a task", "empties the Trash", "adds a folder",
    "renames a folder", "deletes a folder", "adds a context", "renames a context", "deletes a context", "waits",
    "synchronises"};
constexpr std::array<const char *, 8> faultNames{"", "the request is refused", "the reply gets lost",
    "an error is answered", "a web page is answered", "an old list is answered", "the program dies before the request",
    "the program dies after the request"};

struct Weight {
    Deed deed;
    unsigned weight;
};
constexpr std::array<Weight, 21> weights{{{Deed::AddTask, 10}, {Deed::Retitle, 6}, {Deed::Annotate, 4}, {Deed::Star, 3},
    {Deed::Prioritise, 2}, {Deed::SetDue, 3}, {Deed::Complete, 3}, {Deed::Tag, 3}, {Deed::MoveToFolder, 4},
    {Deed::PutInContext, 3}, {Deed::Trash, 4}, {Deed::Undelete, 1}, {Deed::EmptyTrash, 1}, {Deed::AddFolder, 2},
    {Deed::RenameFolder, 1}, {Deed::DeleteFolder, 1}, {Deed::AddContext, 2}, {Deed::RenameContext, 1},
    {Deed::DeleteContext, 1}, {Deed::Wait, 4}, {Deed::Sync, 18}}};

class Dice
{
public:
    explicit Dice(std::uint64_t seed) : m_engine(seed) { }
    unsigned below(unsigned limit) { return static_cast<unsigned>(m_engine() % limit); }
    bool once(unsigned in) { return below(in) == 0; }

private:
    std::mt19937_64 m_engine;
};

Deed drawDeed(Dice &dice, bool mayRun)
{
    unsigned sum = 0;
    for (const Weight &weight : weights)
        sum += mayRun || weight.deed != Deed::Sync ? weight.weight : 0;
    unsigned left = dice.below(sum);
    for (const Weight &weight : weights) {
        if (!mayRun && weight.deed == Deed::Sync)
            continue;
        if (left < weight.weight)
            return weight.deed;
        left -= weight.weight;
    }
    return Deed::Wait;
}

Step drawStep(Dice &dice, bool isInsideARun)
{
    Step step;
    step.deed = drawDeed(dice, !isInsideARun || dice.once(4));
    step.client = static_cast<std::uint8_t>(dice.below(6));
    step.target = static_cast<std::uint16_t>(dice.below(1000));
    step.value = static_cast<std::uint16_t>(dice.below(1000));
    if (step.deed != Deed::Sync || isInsideARun)
        return step;
    if (dice.once(3)) {
        step.fault = static_cast<Fault>(1 + dice.below(7));
        step.faultAt = static_cast<std::uint8_t>(dice.below(dice.once(3) ? 24 : 9));
    }
    if (dice.once(3)) {
        step.meddleAt = static_cast<std::uint8_t>(dice.below(9));
        for (unsigned i = 1 + dice.below(3); i > 0; --i)
            step.meddling.push_back(drawStep(dice, true));
    }
    return step;
}

bool anyOf(const std::vector<Step> &steps, const auto &test)
{
    return std::ranges::any_of(steps, [&test](const Step &step) { return test(step) || anyOf(step.meddling, test); });
}

void describe(std::string &text, const std::vector<Step> &steps, int clients, const std::string &indent)
{
    for (const Step &step : steps) {
        text += indent + "client " + std::to_string(step.client % clients) + " "
            + deedNames.at(static_cast<std::size_t>(step.deed)) + " (" + std::to_string(step.target) + ", "
            + std::to_string(step.value) + ")";
        if (step.fault != Fault::None)
            text += std::string("; ") + faultNames.at(static_cast<std::size_t>(step.fault)) + " at request "
                + std::to_string(step.faultAt) + (step.cutsOff() ? ", and the connection" : "");
        if (!step.meddling.empty())
            text += "; before request " + std::to_string(step.meddleAt) + ":";
        text += "\n";
        describe(text, step.meddling, clients, indent + "    ");
    }
}

} // namespace

bool History::hasFault(Fault fault) const
{
    return anyOf(steps, [fault](const Step &step) { return step.fault == fault; });
}

bool History::losesReplies() const
{
    return hasFault(Fault::LoseReply) || hasFault(Fault::KillAfter) || hasFault(Fault::KillBefore);
}

History draw(std::uint64_t seed, int clients, bool guards)
{
    Dice dice(seed);
    History history;
    history.clients = clients;
    history.guards = guards;
    constexpr std::array<std::int32_t, 6> skews{0, 0, 0, -3600, 90, 86400};
    for (int i = 0; i < clients; ++i)
        history.skews.push_back(skews.at(dice.below(6)));
    for (unsigned i = 4 + dice.below(57); i > 0; --i)
        history.steps.push_back(drawStep(dice, false));
    return history;
}

std::string describe(const History &history)
{
    std::string text = std::to_string(history.clients) + " client(s), guards " + (history.guards ? "on" : "off")
        + (history.singleCalls ? ", single calls" : "") + ", clocks off by";
    for (const std::int32_t skew : history.skews)
        text += " " + std::to_string(skew) + " s";
    text += "\n";
    describe(text, history.steps, history.clients, "  ");
    return text;
}

History shrunk(History history)
{
    const bool isWell = play(history).isWell(); // then it is a doubled task that is looked into
    const auto stillWrong = [isWell](const History &candidate) {
        const Verdict verdict = play(candidate);
        return isWell ? verdict.doubled > 0 : !verdict.isWell();
    };
    for (std::size_t size = std::max<std::size_t>(history.steps.size() / 2, 1); size > 0; size /= 2) {
        for (std::size_t from = 0; from + size <= history.steps.size();) {
            History shorter = history;
            shorter.steps.erase(shorter.steps.begin() + static_cast<std::ptrdiff_t>(from),
                shorter.steps.begin() + static_cast<std::ptrdiff_t>(from + size));
            if (stillWrong(shorter))
                history = std::move(shorter);
            else
                from += size;
        }
    }
    for (std::size_t i = 0; i < history.steps.size(); ++i) {
        History plainer = history;
        plainer.steps[i].fault = Fault::None;
        if (stillWrong(plainer))
            history = plainer;
        plainer = history;
        plainer.steps[i].meddling.clear();
        if (stillWrong(plainer))
            history = plainer;
    }
    return history;
}

} // namespace histories
