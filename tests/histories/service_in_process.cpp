// SPDX-License-Identifier: GPL-3.0-or-later
#include "histories/service_in_process.h"
#include "foundation/instant.h"
namespace histories {
namespace {
std::string decode(std::string_view t)
{
    std::string o;
    for (std::size_t i = 0; i < t.size(); ++i) {
        if (t[i] == '%') {
            o += static_cast<char>(std::stoi(std::string(t.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else
            o += t[i];
    }
    return o;
}
std::string esc(const std::string &t)
{
    std::string o;
    for (char c : t) {
        switch (c) {
        case '&':
            o += "&amp;";
            break;
        case '<':
            o += "&lt;";
            break;
        case '>':
            o += "&gt;";
            break;
        default:
            o += c;
        }
    }
    return o;
}
} // namespace
std::string ServiceInProcess::answer(std::string_view target)
{
    Fields f;
    std::string_view q = target.substr(target.find('?') + 1);
    while (!q.empty()) {
        auto e = q.find(';');
        auto pair = q.substr(0, e);
        q.remove_prefix(e == std::string_view::npos ? q.size() : e + 1);
        auto eq = pair.find('=');
        if (eq == std::string_view::npos)
            continue;
        f.emplace(std::string(pair.substr(0, eq)), decode(pair.substr(eq + 1)));
    }
    const std::string m = f["method"];
    std::string stamp = foundation::toIso8601({static_cast<double>(m_now())}).substr(0, 19);
    stamp[10] = ' ';
    const int id = f.contains("id") ? std::atoi(f["id"].c_str()) : 0;
    if (m == "getUserid")
        return "<userid>abc</userid>";
    if (m == "getToken")
        return "<token>t1</token>";
    if (m == "getServerInfo")
        return "<server><unixtime>" + std::to_string(m_now()) + "</unixtime></server>";
    if (m == "getAccountInfo")
        return "<account><userid>abc</userid><pro>0</pro><timezone>0</timezone></account>";
    auto list = [&](auto &map, const char *root, const char *el) {
        std::string o = std::string("<") + root + ">";
        for (auto &[i, r] : map)
            o += std::string("<") + el + " id=\"" + std::to_string(i) + "\" private=\"0\" archived=\"0\" order=\"1\">"
                + esc(r["title"]) + "</" + el + ">";
        return o + "</" + root + ">";
    };
    if (m == "getFolders")
        return list(m_folders, "folders", "folder");
    if (m == "getContexts")
        return list(m_contexts, "contexts", "context");
    auto add = [&](auto &map) {
        map[m_next] = f;
        return "<added>" + std::to_string(m_next++) + "</added>";
    };
    if (m == "addFolder")
        return add(m_folders);
    if (m == "addContext")
        return add(m_contexts);
    auto edit = [&](auto &map) -> std::string {
        if (!map.contains(id))
            return "<error>no such record</error>";
        for (auto &[k, v] : f)
            map[id][k] = v;
        return "<success>1</success>";
    };
    if (m == "editFolder")
        return edit(m_folders);
    if (m == "editContext")
        return edit(m_contexts);
    if (m == "deleteFolder" || m == "deleteContext") {
        auto &map = m == "deleteFolder" ? m_folders : m_contexts;
        if (!map.erase(id))
            return "<error>no such record</error>";
        for (auto &[i, t] : m_tasks) {
            auto &v = t[m == "deleteFolder" ? "folder" : "context"];
            if (v == std::to_string(id)) {
                v = "0";
                t["modified"] = stamp;
            }
        }
        return "<success>1</success>";
    }
    f["modified"] = stamp;
    if (m == "addTask")
        return add(m_tasks);
    if (m == "editTask")
        return edit(m_tasks);
    if (m == "deleteTask") {
        if (m_tasks.erase(id)) {
            m_deleted.push_back(id);
            return "<success>1</success>";
        }
        for (int d : m_deleted)
            if (d == id)
                return "<success>1</success>";
        return "<error>no such task</error>";
    }
    if (m == "getDeleted") {
        std::string o = "<deleted>";
        for (int d : m_deleted)
            o += "<task><id>" + std::to_string(d) + "</id></task>";
        return o + "</deleted>";
    }
    if (m == "getTasks") {
        std::string o = "<tasks>";
        for (auto &[i, t] : m_tasks) {
            std::string ctx;
            if (auto c = m_contexts.find(std::atoi(t["context"].c_str())); c != m_contexts.end())
                ctx = c->second["title"];
            o += "<task><id>" + std::to_string(i) + "</id><title>" + esc(t["title"]) + "</title><tag>" + esc(t["tag"])
                + "</tag><folder>" + t["folder"] + "</folder><context id=\"" + t["context"] + "\">" + esc(ctx)
                + "</context><modified>" + t["modified"] + "</modified><startdate>" + t["startdate"]
                + "</startdate><duedate>" + (t["duedate"] == "0000-00-00" ? "" : t["duedate"]) + "</duedate><completed>"
                + (t["completed"] == "1" ? "2026-01-01" : "") + "</completed><status>" + t["status"] + "</status><star>"
                + t["star"] + "</star><priority>" + t["priority"] + "</priority><length>" + t["length"]
                + "</length><note>" + esc(t["note"]) + "</note></task>";
        }
        return o + "</tasks>";
    }
    return "<error>unknown method</error>";
}
} // namespace histories
