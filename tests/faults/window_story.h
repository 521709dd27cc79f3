// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace faults {

/// What a user does in the window in one case: the script for the driver in the program, and, when its report is there,
/// what the store must hold at least.
///
/// Every task has a name that no other has as the first word of its title, so that a loss and a double are seen.
class WindowStory
{
public:
    WindowStory() = default; ///< nothing is done
    explicit WindowStory(std::uint64_t seed);

    [[nodiscard]] const std::string &script() const { return m_script; }
    /// Takes in a line of the driver's report.
    void hear(const std::string &line);

    struct Text {
        std::int64_t at = 0; ///< microseconds
        std::string text;
        bool isTyped = false; ///< key by key, so that it is kept when the typing pauses
    };
    /// What a task's title or note was one after the other; it may hold any of them from the last that must be kept on.
    using History = std::vector<Text>;
    /// Where in a history the text is that must be saved when the program was killed; the last one when it
    /// ended by itself.
    [[nodiscard]] std::size_t firstAllowed(const History &history, bool isKilled) const;

    [[nodiscard]] const std::map<std::string, History> &titles() const { return m_titles; }
    [[nodiscard]] const std::map<std::string, History> &notes() const { return m_notes; }
    /// What went otherwise than in the script; empty when all is well.
    [[nodiscard]] const std::string &problem() const { return m_problem; }
    /// A time for which the main thread did not answer, in microseconds.
    struct Silence {
        std::int64_t at = 0; ///< its end
        std::int64_t length = 0;
        std::int64_t waitedForProcessor = 0;
    };
    [[nodiscard]] const std::vector<Silence> &silences() const { return m_silences; }
    [[nodiscard]] bool isReady() const { return m_readyAt > 0; }
    [[nodiscard]] bool isSyncing() const { return m_isSyncing; }
    [[nodiscard]] bool isQuitting() const { return m_isQuitting; }
    [[nodiscard]] int keysTaken() const { return m_keysTaken; }

private:
    enum class Kind { Task, Note, Cell };
    struct Step {
        Kind kind;
        std::string task; ///< of a cell known from the report alone
        std::string text;
        std::string before = {}; ///< in a cell
    };

    void addTask(const std::string &text, const std::string &gap, bool isInDetail);
    void addNote(const std::string &text, const std::string &gap);
    void editCell(const std::string &text, const std::string &gap, std::uint64_t down);
    [[nodiscard]] std::string step() const { return std::to_string(m_steps.size()); }
    [[nodiscard]] std::string typing(const std::string &gap, const std::string &text) const;
    void hearKey(Step &step, std::int64_t at, const std::string &what, const std::string &detail);

    std::vector<Step> m_steps;
    std::string m_script;
    std::string m_lastTask;
    std::map<std::string, History> m_titles;
    std::map<std::string, History> m_notes;
    std::string m_problem;
    std::vector<Silence> m_silences;
    std::int64_t m_lastHeard = 0;
    std::int64_t m_readyAt = 0;
    int m_keysTaken = 0;
    bool m_isSyncing = false;
    bool m_isQuitting = false;
};

} // namespace faults
