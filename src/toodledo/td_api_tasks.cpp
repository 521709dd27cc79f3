// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_api_core.h"

#include <algorithm>

namespace toodledo {

namespace {

constexpr Operation listOperation(std::string_view method, std::string_view root, std::string_view action)
{
    return {method, root, {operationFailed, Wording::NotAuthenticated, action}, {connectionFailed},
        {operationFailed, Wording::BadResult, action}};
}

constexpr Operation listTasks = listOperation("getTasks", "tasks", "getting tasks.");
constexpr Operation listTasksAfterDate = listOperation("getTasks", "tasks", "getting tasks after date.");
constexpr Operation listDeleted = listOperation("getDeleted", "deleted", "getting deleted tasks.");

constexpr Operation add{"addTask", "added", {operationFailed, Wording::NotAuthenticated, "adding task."},
    {connectionFailed}, {operationFailed, Wording::BadResultAndValue, "adding task.  "}};
constexpr Operation addSeveral{"several", "several", {operationFailed, Wording::NotAuthenticated, "adding task."},
    {connectionFailed}, {operationFailed, Wording::BadResultAndError, "adding task.  "}};
constexpr Operation edit{"editTask", "success", {operationFailed, Wording::NotAuthenticated, "editing task."},
    {connectionFailed}, {operationFailed, Wording::BadResultAndError, "editing task."}};
constexpr Operation remove{"deleteTask", "success", {operationFailed, Wording::NotAuthenticated, "deleting task."},
    {connectionFailed}, {operationFailed, Wording::BadResult, "deleting task."}};

std::string joinedTags(const GtdTask &task)
{
    std::string joined;
    if (task.tags)
        for (std::size_t i = 0; i < task.tags->size(); ++i)
            joined.append(i == 0 ? "" : ",").append((*task.tags)[i]);
    return joined;
}

void appendDates(Parameters &parameters, const GtdTask &task)
{
    parameters.emplace_back("duedate", task.dueDate ? dateText(*task.dueDate) : "0000-00-00");
    if (task.dueDate)
        parameters.emplace_back("duetime", task.hasDueTime ? timeText(*task.dueDate) : "0");
    if (task.startDate) {
        parameters.emplace_back("startdate", dateText(*task.startDate));
        parameters.emplace_back("starttime", timeText(*task.startDate)); // whatever hasStartTime says
    }
}

enum class Length { Left, Sent };

Parameters taskParameters(const GtdTask &task, Length length)
{
    Parameters parameters{
        {"id", decimalText(task.taskId)},
        {"title", task.title.value_or("")},
        {"tag", joinedTags(task)},
        {"folder", decimalText(task.folder)},
        {"context", decimalText(task.context)},
        {"goal", decimalText(task.goal)},
        {"priority", decimalText(task.priority)},
        {"star", flagText(task.star)},
        {"parent", decimalText(task.parentId)},
    };
    appendDates(parameters, task);
    parameters.emplace_back("completed", flagText(task.completed));
    parameters.emplace_back("reminder", decimalText(task.reminder));
    parameters.emplace_back("repeat", decimalText(task.repeat));
    parameters.emplace_back("status", decimalText(task.status));
    if (length == Length::Sent)
        parameters.emplace_back("length", decimalText(task.length));
    if (task.repeatAdvanced)
        parameters.emplace_back("rep_advanced", *task.repeatAdvanced);
    parameters.emplace_back("note", task.note.value_or(""));
    return parameters;
}

/// As much as a request may hold of several calls; the rest waits for the next.
constexpr std::size_t longestCalls = std::size_t{512} << 10;

/// The ids of tasks that were added by one request.
class AddedTasksParser final : public TDListParser<std::int64_t>
{
private:
    void didEndElement(std::string_view name, std::string_view text) override
    {
        if (name == "added")
            m_results.push_back(integerOf(text));
        else if (name == "error")
            m_results.push_back(-1);
    }
};

bool isUsable(const GtdTask &task)
{
    return canBeSent(task.taskId) && task.title;
}

} // namespace

std::optional<std::vector<GtdTask>> TDApi::getTasks(TDError *error)
{
    return performForList(listTasks, {}, TDTasksParser(m_environment.contextByTitle), error);
}

std::optional<TaskList> TDApi::getTasks(const KnownTasks &known, TDError *error)
{
    TDTasksParser parser(m_environment.contextByTitle, &known);
    auto tasks = performForList(listTasks, {}, parser, error);
    return tasks ? std::optional(TaskList{std::move(*tasks), parser.takeUnchanged()}) : std::nullopt;
}

std::optional<std::vector<GtdTask>> TDApi::getTasksAfterDate(foundation::Instant date, TDError *error)
{
    return performForList(
        listTasksAfterDate, {{"modafter", dateTimeText(date)}}, TDTasksParser(m_environment.contextByTitle), error);
}

std::optional<std::vector<std::int64_t>> TDApi::getDeleted(TDError *error)
{
    return performForList(listDeleted, {}, TDDeletedParser(), error);
}

std::int64_t TDApi::addTask(const GtdTask &task, TDError *error, std::string_view mark)
{
    if (!task.title)
        complain({.code = unusableItem}, error);
    const auto id = performForValue(add, "added", additionParameters(task, mark), error);
    return id ? integerOf(*id) : -1;
}

Parameters TDApi::additionParameters(const GtdTask &task, std::string_view mark) const
{
    Parameters parameters = taskParameters(task, Length::Left);
    if (!mark.empty() && accountValue("addmarks") == "1")
        parameters.emplace_back("mark", mark);
    return parameters;
}

std::size_t TDApi::mostCalls() const
{
    const auto most = static_cast<std::size_t>(std::max<std::int64_t>(integerOf(accountValue("mostcalls")), 1));
    return m_sendsOneByOne ? 1 : most;
}

AddedTasks TDApi::addTasks(std::span<const MarkedTask> tasks, TDError *error)
{
    AddedTasks added;
    std::string calls;
    const std::size_t most = std::min(tasks.size(), mostCalls());
    while (added.sent < most) {
        const auto &[task, mark] = tasks[added.sent];
        const std::string call = callLine(add.method, additionParameters(*task, mark));
        if (calls.size() + call.size() > longestCalls)
            break;
        calls += call;
        ++added.sent;
    }
    if (added.sent < 2)
        return {};
    AddedTasksParser parser;
    const bool hasReply = perform(addSeveral, {}, parser, error, std::move(calls));
    if (hasReply)
        added.ids = parser.parseResults().value_or(std::vector<std::int64_t>());
    if (added.ids.size() == added.sent && parser.root() == addSeveral.root)
        return added;
    if (hasReply)
        complain(addSeveral.badResult, error, parser.errorTexts());
    added.ids.clear();
    m_sendsOneByOne = true; // what lies on the way may let no such request through
    return added;
}

bool TDApi::editTask(const GtdTask &task, TDError *error)
{
    if (!isUsable(task)) {
        complain({.code = unusableItem}, error);
        return false;
    }
    return performForValue(edit, "success", taskParameters(task, Length::Sent), error).has_value();
}

bool TDApi::deleteTask(const GtdTask &task, TDError *error)
{
    if (!isUsable(task)) {
        complain({.code = unusableItem}, error);
        return false;
    }
    return performForValue(remove, "success", {{"id", decimalText(task.taskId)}}, error).has_value();
}

} // namespace toodledo
