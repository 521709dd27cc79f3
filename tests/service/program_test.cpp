// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/program.h"
#include "service/caller.h"
#include "service/http_client.h"
#include "support/temporary_folder.h"
#include "support/tls_identity.h"

#include <atomic>
#include <csignal>
#include <fstream>
#include <sys/wait.h>
#include <thread>

using namespace calling;
using namespace std::chrono_literals;

namespace {

constexpr const char *password = "a; password & more";

/// Runs the program's command line to its end and returns its exit status; what it printed is in `output`.
int run(const std::string &arguments, std::string *output = nullptr)
{
    const std::string command = std::string(SERVICE_PROGRAM) + " " + arguments + " 2>&1";
    FILE *pipe = ::popen(command.c_str(), "r");
    std::string text;
    for (int character; (character = std::fgetc(pipe)) != EOF;)
        text += static_cast<char>(character);
    if (output)
        *output = text;
    return WEXITSTATUS(::pclose(pipe));
}

/// The program while it serves a folder.
class Program
{
public:
    /// `shell` is said to a shell before the program takes its place.
    explicit Program(const std::string &folder, const std::string &options = {}, const std::string &shell = ":")
        : m_program({"/bin/sh", "-c",
            shell + "; exec " SERVICE_PROGRAM " --listen 127.0.0.1:0 --tokens-per-hour 100 --data '" + folder + "' "
                + options})
    {
        const std::string start = "listening on ";
        const std::string line = m_program.line(10s).value_or("");
        m_address = line.starts_with(start) ? line.substr(start.size()) : "";
    }
    /// Sends the signal and returns what the process ended with.
    int end(int signal)
    {
        m_program.kill(signal);
        return m_program.wait(10s).value_or(-1);
    }
    [[nodiscard]] const std::string &address() const { return m_address; }

private:
    faults::RunningProgram m_program;
    std::string m_address;
};

/// Runs a command on the account of ana@example.org that reads a password, and returns its exit status.
int runWithPassword(const std::string &folder, const std::string &command, const std::string &given)
{
    const support::TemporaryFolder place;
    const std::string file = place.path() / "password";
    std::ofstream(file) << given;
    return run("--data '" + folder + "' " + command + " ana@example.org <" + file);
}

void addUser(const std::string &folder)
{
    ASSERT_EQ(runWithPassword(folder, "add-user", password), 0);
}

/// A client of a program, logged in.
struct LoggedIn {
    explicit LoggedIn(const Program &program) : base("http://" + program.address())
    {
        const std::string userid
            = inside(get("getUserid", {{"email", "ana@example.org"}, {"pass", password}}), "userid");
        key = keyOf(password, inside(get("getToken", {{"userid", userid}, {"appid", "test"}}), "token"), userid);
    }
    std::string get(const std::string &method, const Parameters &parameters)
    {
        return client.get(base + target(method, parameters)).body;
    }
    std::string ask(const std::string &method, Parameters parameters = {})
    {
        parameters.emplace(parameters.begin(), "key", key);
        return get(method, parameters);
    }
    std::string askSeveral(const std::string &calls)
    {
        return client.post(base + target("several", {{"key", key}}), calls).body;
    }

    HttpClient client;
    std::string base;
    std::string key;
};

void expectTasks(const std::string &list, const std::vector<std::string> &ids)
{
    for (const std::string &id : ids)
        EXPECT_NE(list.find("<id>" + id + "</id>"), std::string::npos) << id;
}

} // namespace

TEST(Program, F59_keepsEveryAcknowledgedAddWhenItIsKilled)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    addUser(folder);
    std::vector<std::string> acknowledged;
    for (int round = 0; round < 5; ++round) {
        Program program(folder);
        LoggedIn ana(program);
        const std::size_t enough = acknowledged.size() + 20 + static_cast<std::size_t>(round) * 37;
        std::atomic<bool> isOver = false;
        std::atomic<std::size_t> done = acknowledged.size();
        std::jthread killer([&] {
            while (done < enough && !isOver)
                std::this_thread::yield();
            (void)program.end(SIGKILL);
        });
        const std::string add = "method=addTask;title=x;\n";
        for (std::string id; (id = inside(ana.ask("addTask", {{"title", "x"}}), "added")) != "(none)";) {
            acknowledged.push_back(id);
            std::string reply = ana.askSeveral(add + add + add);
            for (std::string next; (next = inside(reply, "added")) != "(none)"; reply.erase(0, reply.find(next) + 1))
                acknowledged.push_back(next);
            done = acknowledged.size();
        }
        isOver = true;
    }
    const std::string list = LoggedIn(Program(folder)).ask("getTasks");
    EXPECT_GE(acknowledged.size(), 300U);
    expectTasks(list, acknowledged);
    EXPECT_LE(countOf(list, "<task>"), static_cast<int>(acknowledged.size()) + 5 * 3); // one request each time
}

TEST(Program, F59_refusesWhatItCannotStoreAndKeepsTheRest)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    addUser(folder);
    std::vector<std::string> acknowledged;
    {
        const Program program(folder, {}, "ulimit -f 1171"); // blocks of 512 bytes, as on a disk that is full
        LoggedIn ana(program);
        std::string reply;
        while (acknowledged.size() < 200) {
            reply = ana.ask("addTask", {{"title", "x"}, {"note", std::string(20'000, 'n')}});
            if (inside(reply, "added") == "(none)")
                break;
            acknowledged.push_back(inside(reply, "added"));
        }
        EXPECT_NE(inside(reply, "error"), "(none)") << reply;
        expectTasks(ana.ask("getTasks"), acknowledged);
    }
    EXPECT_GE(acknowledged.size(), 5U);
    const Program program(folder);
    LoggedIn ana(program);
    expectTasks(ana.ask("getTasks"), acknowledged);
    EXPECT_NE(inside(ana.ask("addTask", {{"title", "x"}}), "added"), "(none)");
}

TEST(Program, stopsCleanlyAndLetsUsersBeAddedMeanwhile)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program(folder);
        if (signal == SIGTERM)
            addUser(folder);
        EXPECT_EQ(inside(LoggedIn(program).ask("getTasks"), "error"), "(none)");
        EXPECT_EQ(program.end(signal), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(folder + "/service.db-wal")); // all is in the one file
}

TEST(Program, endsEveryTokenWhereItSetsAnotherPassword)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    EXPECT_EQ(runWithPassword(folder, "set-password", password), 1); // there is nobody yet
    addUser(folder);
    const Program program(folder);
    LoggedIn ana(program);
    const auto userid = [&](const std::string &word) {
        return inside(ana.get("getUserid", {{"email", "ana@example.org"}, {"pass", word}}), "userid");
    };
    EXPECT_EQ(runWithPassword(folder, "set-password", "short"), 1);
    EXPECT_EQ(inside(ana.ask("addTask", {{"title", "x"}}), "added"), "1"); // a refused change ends nothing
    const std::string same = userid(password);
    EXPECT_EQ(runWithPassword(folder, "set-password", "another password"), 0);
    EXPECT_EQ(inside(ana.ask("addTask", {{"title", "x"}}), "error"), "key did not validate");
    EXPECT_EQ(userid(password), "1");
    EXPECT_EQ(userid("another password"), same);
}

TEST(Program, leavesAFolderToTheServiceThatHasIt)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    Program first(folder);
    ASSERT_NE(first.address(), "");
    std::string output;
    EXPECT_EQ(run("--listen 127.0.0.1:0 --data " + folder, &output), 1);
    EXPECT_NE(output.find("Another service is running on the folder"), std::string::npos) << output;
    (void)first.end(SIGKILL);
    EXPECT_NE(Program(folder).address(), "");
}

TEST(Program, speaksTlsAndPlainHttpOnOnePort)
{
    const support::TemporaryFolder place;
    const testing_support::TlsIdentity identity;
    const std::string certificate = place.path() / "certificate.pem";
    const std::string key = place.path() / "key.pem";
    std::ofstream(certificate) << identity.pem();
    std::ofstream(key) << identity.keyPem();
    const std::string options = "--tls-cert " + certificate + " --tls-key " + key;
    const std::string folder = place.path() / "data";
    addUser(folder);
    Program program(folder, options);
    LoggedIn ana(program); // over plain http
    HttpClient &client = ana.client;
    ana.base = "https://" + program.address();
    EXPECT_EQ(client.get(ana.base + "/api.php").status, 0); // nobody vouches for it
    client.trust(certificate);
    EXPECT_EQ(inside(ana.ask("getAccountInfo"), "pro"), "1");
    EXPECT_EQ(program.end(SIGTERM), 0);

    Program strict(folder, options + " --tls-only");
    EXPECT_EQ(client.get("http://" + strict.address() + "/api.php").status, 0);
    EXPECT_EQ(client.get("https://" + strict.address() + "/api.php").status, 200);
    EXPECT_EQ(strict.end(SIGTERM), 0);

    std::string output;
    const std::string twice = " --tls-cert " + key + " --tls-key " + key;
    EXPECT_EQ(run("--data " + folder + " --listen 127.0.0.1:0" + twice, &output), 1);
    EXPECT_NE(output.find("certificate"), std::string::npos) << output;
}

TEST(Program, tellsInOneSentenceWhatIsWrong)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path();
    const std::pair<std::string, int> cases[] = {{"", 2}, {"--data", 2}, {"--data x --tokens-per-hour none", 2},
        {"--data x --frobnicate", 2}, {"--data x add-user", 2}, {"--data x set-password", 2},
        {"--data x --tls-cert y", 2}, {"--data x --tls-only", 2}, {"--data " + folder + " --listen nowhere", 1},
        {"--data /proc/none", 1}, {"--data " + folder + " --tls-cert /none --tls-key /none", 1},
        {"add-user ana@example.org --data " + folder + " </dev/null", 1}};
    for (const auto &[arguments, status] : cases) {
        std::string output;
        const int ended = run(arguments, &output);
        EXPECT_EQ(ended, status) << arguments << output;
        EXPECT_FALSE(output.empty()) << arguments;
    }
    std::string output;
    EXPECT_EQ(run("--version", &output), 0);
    EXPECT_TRUE(output.starts_with("quelvin-service ")) << output;
    EXPECT_EQ(run("--help", &output), 0);
    EXPECT_NE(output.find("--tokens-per-hour"), std::string::npos) << output;
}
