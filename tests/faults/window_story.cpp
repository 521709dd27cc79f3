// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/window_story.h"

#include <algorithm>
#include <array>
#include <random>
#include <sstream>

namespace faults {

namespace {

// What the program promises, in microseconds: typing is put into its record when it pauses, or after a while without a
// pause, and a changed record is saved a moment later.
constexpr std::int64_t pause = 400'000;
constexpr std::int64_t longestWithoutPause = 1'500'000;
constexpr std::int64_t untilSaved = 700'000;
constexpr std::int64_t slack = 250'000 * SLOWNESS; // for a timer that is late, and for the save

constexpr std::array words{"Call", "Ana", "about", "the", "garden", "and", "buy", "seeds", "of", "old", "kinds",
    "before", "winter", "comes", "again"};

} // namespace

WindowStory::WindowStory(std::uint64_t seed)
{
    std::mt19937_64 random(seed);
    const auto choose = [&random](std::uint64_t most) { return random() % most; };
    const auto sentence = [&](std::uint64_t most) {
        std::string text;
        for (std::uint64_t count = 1 + choose(most); count > 0; --count)
            text += std::string(text.empty() ? "" : " ") + words[choose(words.size())];
        return text;
    };
    const auto pauseOf = [&](std::uint64_t most) { return "wait " + std::to_string(choose(most)) + "\n"; };
    const std::uint64_t steps = 1 + choose(12);
    for (std::uint64_t i = 0; i < steps; ++i) {
        const std::string gap = std::to_string(choose(4) == 0 ? 1 : 5 + choose(60));
        const std::uint64_t kind = choose(8);
        if (kind < 3) {
            const bool hasNote = choose(2) == 0;
            addTask(sentence(3), gap, hasNote);
            if (hasNote)
                addNote(sentence(8), gap);
        } else if (kind < 5) {
            editCell(sentence(5), gap, choose(6));
            m_script += choose(2) == 0 ? "key Return\n" : pauseOf(1500); // else the next step ends it
        } else if (kind < 7) {
            m_script += "key F5\n";
        } else {
            m_script += pauseOf(900);
        }
    }
    if (choose(3) == 0)
        m_script += pauseOf(200) + "mark quitting\nkey Ctrl+Q\n";
}

std::string WindowStory::typing(const std::string &gap, const std::string &text) const
{
    return "type " + step() + " " + gap + " " + text + "\n";
}

void WindowStory::addTask(const std::string &text, const std::string &gap, bool isInDetail)
{
    m_lastTask = "new" + std::to_string(10 + m_steps.size());
    const std::string title = m_lastTask + " " + text;
    if (isInDetail)
        m_script += "key Ctrl+N\nexpect Title\n" + typing(gap, title) + "key Return\nexpect Notes\n";
    else
        m_script += "focus New task\ntype - " + gap + " " + title + "\nkey Return\nmark " + step() + "\n";
    m_steps.push_back({Kind::Task, m_lastTask, title});
}

void WindowStory::addNote(const std::string &text, const std::string &gap)
{
    m_script += typing(gap, text);
    m_steps.push_back({Kind::Note, m_lastTask, text});
}

void WindowStory::editCell(const std::string &text, const std::string &gap, std::uint64_t down)
{
    m_script += "key Ctrl+2\nkey Alt+2\nkey Home\n";
    for (; down > 0; --down)
        m_script += "key Down\n";
    m_script += "key Return\nexpect Title\nsubject " + step() + "\nkey End\n" + typing(gap, " " + text);
    m_steps.push_back({Kind::Cell, "", " " + text});
}

void WindowStory::hear(const std::string &line)
{
    std::istringstream words(line);
    std::int64_t at = 0;
    std::string what;
    std::string step;
    std::string detail;
    words >> at >> what >> step;
    std::getline(words >> std::ws, detail);
    if (at == 0)
        return;
    m_lastHeard = at;
    if (what == "ready")
        m_readyAt = at;
    else if (what == "wrong")
        m_problem = "the step \"" + step + "\" waited in vain for " + detail;
    else if (what == "sync-began" || what == "sync-ended")
        m_isSyncing = what == "sync-began";
    else if (what == "mark" && step == "quitting")
        m_isQuitting = true;
    else if (what == "silence")
        m_silences.push_back({at, std::stoll(step), std::stoll(detail)});
    else if (step != "-" && (what == "mark" || what == "typed" || what == "subject"))
        hearKey(m_steps.at(std::stoul(step)), at, what, detail);
}

void WindowStory::hearKey(Step &step, std::int64_t at, const std::string &what, const std::string &detail)
{
    ++m_keysTaken;
    if (step.kind == Kind::Task) {
        History &titles = m_titles[step.task];
        if (titles.empty())
            titles.push_back({0, "", false});
        const std::size_t length = what == "mark" ? step.text.size() : std::stoul(detail);
        if (length > step.task.size()) // before that nothing tells which task it is
            titles.push_back({at, step.text.substr(0, length), what == "typed"});
    } else if (step.kind == Kind::Note) {
        History &notes = m_notes[step.task];
        if (notes.empty())
            notes.push_back({0, "", false});
        notes.push_back({at, step.text.substr(0, std::stoul(detail)), true});
    } else if (what == "subject") {
        step.task = detail.substr(0, detail.find(' '));
        step.before = detail;
        History &titles = m_titles[step.task];
        if (titles.empty())
            titles.push_back({0, detail, false});
        else if (titles.back().text != detail)
            m_problem = "a cell shows \"" + detail + "\" after \"" + titles.back().text + "\" was typed";
    } else {
        m_titles[step.task].push_back({at, step.before + step.text.substr(0, std::stoul(detail)), true});
    }
}

std::size_t WindowStory::firstAllowed(const History &history, bool isKilled) const
{
    if (!isKilled)
        return history.size() - 1;
    std::int64_t end = m_lastHeard - slack;
    for (const Silence &silence : m_silences) {
        if (silence.at > m_lastHeard - longestWithoutPause - 2 * untilSaved)
            end -= silence.length;
    }
    std::size_t first = 0;
    for (std::size_t i = 1; i < history.size(); ++i) {
        const Text &text = history[i];
        const bool goesOn = i + 1 < history.size() && history[i + 1].at - text.at < pause + slack;
        const std::int64_t untilKept = !text.isTyped ? 0 : goesOn ? longestWithoutPause : pause;
        if (text.at + untilKept + untilSaved < end)
            first = i;
    }
    return first;
}

} // namespace faults
