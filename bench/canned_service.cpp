// SPDX-License-Identifier: GPL-3.0-or-later
#include "canned_service.h"

#include "generator.h"

#include <stdexcept>

namespace bench {

namespace {

std::string methodOf(const std::string &url)
{
    const std::size_t from = url.find("method=") + 7;
    return url.substr(from, url.find(';', from) - from);
}

std::string listOfTasks(int number, int edited, unsigned state)
{
    std::string xml = "<tasks>";
    for (int i = 1; i <= number; ++i) {
        const auto pick = [&state](unsigned of) {
            state = state * 1664525U + 1013904223U;
            return (state >> 8U) % of;
        };
        const auto date = [](unsigned which) { return which == 0 ? "2026-02-01" : "2099-12-01"; }; // past or to come
        xml += "<task><id>" + std::to_string(i) + "</id><parent>0</parent><children>0</children><title>"
            + (i <= edited ? "edited " : "") + words(38, state) + "</title><tag>tag " + std::to_string(pick(300))
            + ",tag " + std::to_string(pick(300)) + "</tag><folder>" + std::to_string(pick(200) + 1)
            + "</folder><context id=\"1\">Context " + std::to_string(pick(100) + 1)
            + "</context><goal id=\"0\"></goal><added>2026-01-23</added><modified>"
            + (i <= edited ? "2026-09-22" : "2026-01-25") + " 05:12:45</modified><startdate>"
            + (pick(3) == 0 ? date(pick(10)) : "") + "</startdate><starttime></starttime><duedate modifier=\"\">"
            + (pick(3) == 0 ? date(pick(10)) : "") + "</duedate><duetime></duetime><reminder>0</reminder><completed>"
            + (pick(10) < 7 ? "2026-01-25" : "") + "</completed><repeat>0</repeat><rep_advanced></rep_advanced><status>"
            + std::to_string(pick(11)) + "</status><star>" + std::to_string(pick(2)) + "</star><priority>"
            + std::to_string(pick(4)) + "</priority><length>" + std::to_string(pick(3) * 10)
            + "</length><timer onfor=\"0\">0</timer><note>" + (pick(10) < 4 ? words(198, state) : std::string())
            + "</note></task>";
    }
    return xml + "</tasks>";
}

} // namespace

Replies repliesFor(int tasks, int edited)
{
    std::string folders = "<folders>";
    for (int i = 1; i <= 200; ++i)
        folders += "<folder id=\"" + std::to_string(i) + "\" private=\"0\" archived=\"0\" order=\"1\">Folder "
            + std::to_string(i) + "</folder>";
    std::string contexts = "<contexts>";
    for (int i = 1; i <= 100; ++i)
        contexts += "<context id=\"" + std::to_string(i) + "\">Context " + std::to_string(i) + "</context>";
    return {{"getUserid", "<userid>a1b2c3</userid>"}, {"getToken", "<token>td1</token>"},
        {"getServerInfo",
            "<server><unixtime>" + std::to_string(edited > 0 ? 1790200000 : 1790000000) + "</unixtime></server>"},
        {"getAccountInfo", "<account><userid>a1b2c3</userid><pro>0</pro><timezone>0</timezone></account>"},
        {"getFolders", folders + "</folders>"}, {"getContexts", contexts + "</contexts>"},
        {"getTasks", listOfTasks(tasks, edited, 7)}, {"getDeleted", "<deleted></deleted>"}};
}

foundation::Result<toodledo::HttpReply> CannedTransport::perform(
    const toodledo::HttpRequest &request, toodledo::BodySink &body)
{
    const auto found = m_replies.find(methodOf(request.url));
    if (found == m_replies.end())
        throw std::runtime_error("no reply for " + request.url.substr(0, 80));
    const std::string_view reply = found->second;
    for (std::size_t i = 0; i < reply.size(); i += 16384)
        body.receive(reply.substr(i, 16384));
    return toodledo::HttpReply{200, "text/xml"};
}

} // namespace bench
