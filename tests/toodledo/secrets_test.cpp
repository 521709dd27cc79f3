// SPDX-License-Identifier: GPL-3.0-or-later
#include "service_client.h"

#include "foundation/log.h"
#include "toodledo/td_text.h"

#include <gmock/gmock.h>

using namespace toodledo;
using Mode = ScriptedReply::Mode;

namespace {

std::vector<std::string> *unredacted = nullptr; ///< where a log without redaction writes, while one is planted

} // namespace

// The linker sends the client's calls of the log here (see CMakeLists.txt).
#define LOG_LINE(prefix) prefix##_ZN10foundation7logLineESt17basic_string_viewIcSt11char_traitsIcEE
extern "C" {
void LOG_LINE(__real_)(std::string_view line);
void LOG_LINE(__wrap_)(std::string_view line);
void LOG_LINE(__wrap_)(std::string_view line)
{
    if (unredacted)
        unredacted->emplace_back(line);
    else
        LOG_LINE(__real_)(line);
}
}

namespace {

const std::string password = "canary;pass word&1";
const std::string token = "canarytoken";

/// Everything that a client says, to the log and to its caller, while all goes wrong.
class Secrets : public ServiceClient
{
protected:
    Secrets()
    {
        foundation::setLogSink([this](std::string_view line) { said.emplace_back(line); });
        answerLogin();
        answer("getToken", ("<token>" + token + "</token>").c_str());
    }
    ~Secrets() override
    {
        unredacted = nullptr;
        foundation::setLogSink({});
    }

    void note(const TDError &error)
    {
        said.push_back(error.message);
        said.push_back(error.detail);
    }
    void doEverything()
    {
        TDError error;
        const auto api = TDApi::initWithUsername("ana", password, environment(), &error);
        note(error);
        TDApi &used = api ? *api : client();
        GtdFolder folder;
        folder.title = "t";
        folder.folderId = 1;
        GtdTask task;
        task.title = "t";
        const std::vector<std::function<void()>> calls{[&] { (void)used.getTasks(&error); },
            [&] { (void)used.getFolders(&error); }, [&] { used.addTask(task, &error); },
            [&] { used.editTask(task, &error); }, [&] { used.addFolder(folder, &error); },
            [&] { used.deleteFolder(folder, &error); }, [&] { (void)used.getLastModificationsDates(&error); },
            [&] { (void)used.createAccount("ana", password, &error); }};
        for (const auto &call : calls) {
            error = TDError();
            call();
            note(error);
        }
        settings.remove("toodledoKey");
    }
    void answerAll(const ScriptedReply &reply)
    {
        for (const char *method : {"getTasks", "getFolders", "addTask", "editTask", "addFolder", "deleteFolder",
                 "getAccountInfo", "createAccount"})
            answer(method, reply);
    }

    void failInEveryWay()
    {
        const std::string quoted
            = "bad request /api.php?method=getTasks;key=" + key + ";pass=" + escapedValue(password) + ";";
        const std::string one = "<error>" + quoted + "</error>";
        for (const ScriptedReply &reply :
            {ScriptedReply{.body = one}, ScriptedReply{.body = "<r>" + one + one + "</r>"},
                ScriptedReply{.body = "<" + quoted}, ScriptedReply{.body = one, .status = 500},
                ScriptedReply{.mode = Mode::CloseAtOnce}, ScriptedReply{.body = one, .mode = Mode::BadChunk},
                ScriptedReply{.body = one, .status = 302, .headers = "Location: http://h/?key=" + key + "\r\n"}}) {
            answerAll(reply);
            answerLogin();
            answer("getToken", ("<token>" + token + "</token>").c_str());
            doEverything();
            for (const char *method : {"getUserid", "getToken", "getServerInfo"})
                answer(method, reply);
            doEverything();
        }
        settings.set("ToodledoHost", "no such host");
        restart();
        doEverything();
    }
    /// The lines that tell a secret.
    [[nodiscard]] std::vector<std::string> leaks() const
    {
        std::vector<std::string> lines;
        std::copy_if(said.begin(), said.end(), std::back_inserter(lines), [this](const std::string &line) {
            return line.find("canary") != std::string::npos || line.find(md5Hex(password)) != std::string::npos
                || line.find(key) != std::string::npos;
        });
        return lines;
    }

    const std::string key = md5Hex(md5Hex(password) + token + "u42");
    std::vector<std::string> said;
};

} // namespace

TEST_F(Secrets, F47_areInNoLineOfTheLogAndInNoError)
{
    failInEveryWay();

    EXPECT_THAT(said, testing::Contains(testing::HasSubstr("URL request for userID: ")));
    EXPECT_THAT(said, testing::Contains(testing::HasSubstr("Result from Toodledo: bad request")));
    EXPECT_THAT(said, testing::Contains(testing::HasSubstr("while editing task.bad request")));
    EXPECT_THAT(leaks(), testing::IsEmpty());
}

TEST_F(Secrets, F47_areFoundInALogThatRedactsNothing)
{
    unredacted = &said;
    failInEveryWay();

    EXPECT_THAT(leaks(), testing::Contains(testing::HasSubstr("canary")));
    EXPECT_THAT(leaks(), testing::Contains(testing::HasSubstr(key)));
}
