// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/digest.h"
#include "service/method.h"
#include "service/text.h"

#include <cstdio>

namespace service {

namespace {

constexpr std::array<std::string_view, 2> credentials{"email", "pass"};
constexpr std::array<std::string_view, 2> application{"userid", "appid"};

void refuseTheHasty(std::int64_t seconds)
{
    if (seconds > 0)
        throw Refusal("too many attempts, wait " + std::to_string(seconds) + " seconds");
}

/// Who tries to log in; letters that differ only in case are one address, as in the accounts.
std::string loginName(const Call &call)
{
    std::string name(call.request.text("email").substr(0, 254));
    for (char &character : name)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character | 0x20);
    return name.append(" ").append(call.address);
}

std::string getUserid(Call &call)
{
    const std::string_view password = call.request.text("pass");
    if (call.request.text("email").empty() || password.empty())
        return element("userid", 0);
    const std::string name = loginName(call);
    refuseTheHasty(call.throttles.logins.waitOf(name, call.now));
    refuseTheHasty(call.throttles.addresses.waitOf(call.address, call.now));

    const auto account = accountOf(call.connection, call.request.text("email"));
    const std::string given = md5(password);
    const std::string kept = account ? account->passwordMd5 : std::string(given.size(), '-');
    if (!equalInConstantTime(given, kept)) {
        call.throttles.logins.failed(name, call.now);
        call.throttles.addresses.failed(call.address, call.now);
        return element("userid", 1);
    }
    call.throttles.logins.succeeded(name);
    return element("userid", account->userid);
}

std::string getToken(Call &call)
{
    refuseTheHasty(call.throttles.addresses.waitOf(call.address, call.now));
    const std::string_view userid = call.request.text("userid");
    if (userid.empty())
        throw Refusal("missing userid"); // no guess: clients ask like this before they have an account
    const auto token = makeToken(call.connection, userid, call.options.tokensPerHour, call.now);
    if (!token) {
        call.throttles.addresses.failed(call.address, call.now);
        throw Refusal("unknown userid");
    }
    return element("token", *token);
}

std::string createAccount(Call &call)
{
    if (!call.options.allowsSignUp)
        throw Refusal("this service opens no accounts for others");
    refuseTheHasty(call.throttles.signUps.waitOf(call.address, call.now));
    const std::string userid
        = addAccount(call.connection, call.request.text("email"), call.request.text("pass"), call.now);
    call.throttles.signUps.failed(call.address, call.now);
    return element("added", userid);
}

std::string getServerInfo(Call &call)
{
    const double minutes = static_cast<double>(call.session.issued + tokenSeconds - call.now) / 60;
    std::array<char, 32> left{};
    std::snprintf(left.data(), left.size(), "%.2f", minutes);
    return "<server>" + element("unixtime", call.now) + element("date", mailDateOf(call.now))
        + element("tokenexpires", left.data()) + "</server>";
}

std::string getAccountInfo(Call &call)
{
    Statement account = call.connection.prepare("SELECT userid, email, tasks_edited, tasks_deleted, folders_edited,"
                                                " contexts_edited FROM user WHERE id = ?");
    account.bind(call.session.user).run();
    const std::string email(account.text(1));
    std::string xml = "<account>" + element("userid", account.text(0))
        + element("alias", email.substr(0, email.find('@'))) + element("pro", call.options.isSecure ? 1 : 0);
    // The server's time zone is the account's, and how lists are shown is the client's affair: these are defaults.
    for (const auto &[name, number] : std::initializer_list<std::pair<const char *, int>>{
             {"dateformat", 0}, {"timezone", 0}, {"hidemonths", 6}, {"hotlistpriority", 3}, {"hotlistduedate", 2}})
        xml += element(name, number);
    int column = 2;
    for (const char *name : {"lastaddedit", "lastdelete", "lastfolderedit", "lastcontextedit"})
        xml += element(name, stampOf(account.integer(column++)));
    return xml + element("lastgoaledit", "") + element("addmarks", 1) + element("mostcalls", call.options.mostCalls)
        + "</account>";
}

constexpr std::array<Method, 5> table{{
    {"getUserid", Access::Open, credentials, getUserid},
    {"getToken", Access::OpenWrite, application, getToken},
    {"createAccount", Access::OpenWrite, credentials, createAccount},
    {"getServerInfo", Access::Read, noParameters, getServerInfo},
    {"getAccountInfo", Access::Read, noParameters, getAccountInfo},
}};

} // namespace

std::span<const Method> accountMethods()
{
    return table;
}

} // namespace service
