// SPDX-License-Identifier: GPL-3.0-or-later
#include "service_client.h"

#include "foundation/log.h"
#include "toodledo/td_text.h"

#include <gmock/gmock.h>

using namespace toodledo;
using Secrets = ServiceClient;

/// Everything that a client says, to the log and to its caller, while a server sends back what it was sent.
TEST_F(Secrets, F47_secretsAreInNoLineOfTheLogAndInNoError)
{
    const std::string password = "canary;pass word&1";
    const std::string key = md5Hex(md5Hex(password) + "canarytoken" + "u42");
    const std::string quoted
        = "bad request /api.php?method=getTasks;key=" + key + ";pass=" + escapedValue(password) + ";";
    const std::string one = "<error>" + quoted + "</error>";
    std::vector<std::string> said;
    foundation::setLogSink([&](std::string_view line) { said.emplace_back(line); });
    for (const ScriptedReply &reply : {ScriptedReply{.body = one}, ScriptedReply{.body = "<r>" + one + one + "</r>"},
             ScriptedReply{.body = "<" + quoted}, ScriptedReply{.body = one, .status = 500},
             ScriptedReply{.body = one, .status = 302, .headers = "Location: http://h/?key=" + key + "\r\n"}}) {
        answerLogin();
        answer("getToken", "<token>canarytoken</token>");
        for (const char *method : {"editTask", "addFolder", "createAccount"})
            answer(method, reply);
        for (const bool answersLogin : {true, false}) {
            TDError error;
            const auto note = [&] { said.insert(said.end(), {error.message, error.detail}); };
            const auto api = TDApi::initWithUsername("ana", password, environment(), &error);
            note();
            GtdTask task;
            task.title = "t";
            (api ? *api : client()).editTask(task, &error);
            note();
            GtdFolder folder;
            folder.title = "t";
            (api ? *api : client()).addFolder(folder, &error);
            note();
            static_cast<void>((api ? *api : client()).createAccount("ana", password, &error));
            note();
            if (answersLogin)
                for (const char *method : {"getUserid", "getToken", "getServerInfo"})
                    answer(method, reply);
            settings.remove("toodledoKey");
        }
    }
    foundation::setLogSink({});

    EXPECT_THAT(said, testing::Contains(testing::HasSubstr("URL request for userID: ")));
    EXPECT_THAT(said, testing::Contains(testing::HasSubstr("Result from Toodledo: bad request")));
    EXPECT_THAT(said, testing::Contains(testing::HasSubstr("while editing task.bad request")));
    for (const std::string &line : said)
        for (const std::string &secret : {std::string("canary"), md5Hex(password), key})
            EXPECT_EQ(line.find(secret), std::string::npos) << line;
}
