// SPDX-License-Identifier: GPL-3.0-or-later
// Requests to the service, one a line, after the first has been logged in for: "KEY" stands for its key, and after a
// tab follows the body, in which a tab ends a line. Whatever is asked, the answer is one well-formed document that the
// client reads, and a title that was taken comes back as it was.
#include "fuzz/property.h"
#include "service/caller.h"
#include "service/request.h"
#include "toodledo/td_tasks_parser.h"

#include <algorithm>
#include <set>

namespace {

std::string withKey(std::string_view line, const std::string &key)
{
    std::string text(line);
    if (const std::size_t place = text.find("KEY"); place != std::string::npos)
        text.replace(place, 3, key);
    return text;
}

void checkParsing(std::string_view query)
{
    try {
        const auto request = service::Request::parse(query);
        std::set<std::string> names;
        for (const auto &[name, value] : request.parameters()) {
            fuzz::require(names.insert(name).second && name != "method", "a name stands once", query);
            fuzz::require(*request.find(name) == value, "a parameter is found by its name", query);
        }
    } catch (const service::Refusal &) { }
}

/// The titles of all tasks, as the client reads them.
std::multiset<std::string> titlesIn(const std::string &reply)
{
    std::multiset<std::string> titles;
    toodledo::TDTasksParser parser;
    fuzz::require(parser.parse(reply), "the client reads every list", reply);
    const auto tasks = parser.parseResults();
    for (const auto &task : *tasks)
        titles.insert(task.title.value_or(""));
    return titles;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    calling::InMemory place;
    calling::User user(place, "ana@example.org");
    fuzz::Input input(data, size);
    for (int requests = 0; !input.isEmpty() && requests < 20; ++requests) {
        const std::string line = withKey(input.line(), user.key);
        const std::string target = line.substr(0, line.find('\t'));
        std::string body = line.substr(std::min(target.size() + 1, line.size()));
        std::ranges::replace(body, '\t', '\n');
        checkParsing(target);
        const std::string reply = place.service.answer("/api.php?" + target, body, "10.0.0.1");
        toodledo::TDSimpleParser parser;
        fuzz::require(parser.parse(reply), "every answer is one well-formed document", target + "\n" + reply);
    }

    const std::string wanted = "a" + std::string(input.rest().substr(0, 200)) + "z";
    const auto before = titlesIn(user.ask("getTasks"));
    const std::string added = user.ask("addTask", {{"title", wanted}, {"note", wanted}});
    const auto after = titlesIn(user.ask("getTasks"));
    fuzz::require(after.size() == before.size() + (added.find("<added>") != std::string::npos ? 1U : 0U),
        "what was added is listed, and nothing else", added);
    return 0;
}
