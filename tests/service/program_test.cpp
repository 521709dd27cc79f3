// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/caller.h"
#include "service/certificate.h"
#include "service/http_client.h"
#include "support/temporary_folder.h"

#include <atomic>
#include <csignal>
#include <fstream>
#include <sys/resource.h>
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
    explicit Program(const std::string &folder, std::vector<std::string> more = {}, rlim_t longestFile = RLIM_INFINITY)
    {
        int output[2];
        if (::pipe(output) != 0)
            throw std::runtime_error("no pipe");
        std::vector<std::string> arguments{
            SERVICE_PROGRAM, "--listen", "127.0.0.1:0", "--data", folder, "--tokens-per-hour", "100"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        std::vector<char *> pointers;
        for (std::string &argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        m_process = ::fork();
        if (m_process == 0) {
            ::dup2(output[1], 1);
            const rlimit limit{longestFile, longestFile};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            ::execv(SERVICE_PROGRAM, pointers.data());
            ::_exit(127);
        }
        ::close(output[1]);
        std::string line;
        for (char character; ::read(output[0], &character, 1) == 1 && character != '\n';)
            line += character;
        ::close(output[0]);
        const std::string start = "listening on ";
        m_address = line.starts_with(start) ? line.substr(start.size()) : "";
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;
    ~Program()
    {
        if (m_process > 0)
            (void)end(SIGKILL);
    }
    /// Sends the signal and returns what the process ended with.
    int end(int signal)
    {
        int status = 0;
        ::kill(m_process, signal);
        ::waitpid(std::exchange(m_process, 0), &status, 0);
        return status;
    }
    [[nodiscard]] const std::string &address() const { return m_address; }

private:
    pid_t m_process = 0;
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

/// Logs in as a client does, and returns the key.
std::string logIn(HttpClient &client, const std::string &base)
{
    const std::string userid = inside(
        client.get(base + target("getUserid", {{"email", "ana@example.org"}, {"pass", password}})).body, "userid");
    const std::string token
        = inside(client.get(base + target("getToken", {{"userid", userid}, {"appid", "test"}})).body, "token");
    return keyOf(password, token, userid);
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
        const std::string base = "http://" + program.address();
        HttpClient client;
        const std::string key = logIn(client, base);
        const std::size_t enough = acknowledged.size() + 20 + static_cast<std::size_t>(round) * 37;
        std::atomic<bool> isOver = false;
        std::atomic<std::size_t> done = acknowledged.size();
        std::jthread killer([&] {
            while (done < enough && !isOver)
                std::this_thread::yield();
            (void)program.end(SIGKILL);
        });
        for (;;) {
            const auto reply = client.get(base + target("addTask", {{"key", key}, {"title", "x"}}));
            if (inside(reply.body, "added") == "(none)")
                break;
            acknowledged.push_back(inside(reply.body, "added"));
            done = acknowledged.size();
        }
        isOver = true;
    }
    Program program(folder);
    HttpClient client;
    const std::string base = "http://" + program.address();
    const std::string list = client.get(base + target("getTasks", {{"key", logIn(client, base)}})).body;
    EXPECT_GE(acknowledged.size(), 300U);
    for (const std::string &id : acknowledged)
        EXPECT_NE(list.find("<id>" + id + "</id>"), std::string::npos) << id;
    EXPECT_LE(countOf(list, "<task>"), static_cast<int>(acknowledged.size()) + 5); // one was under way each time
}

TEST(Program, F59_refusesWhatItCannotStoreAndKeepsTheRest)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    addUser(folder);
    std::vector<std::string> acknowledged;
    std::string key;
    {
        Program program(folder, {}, 600'000); // as on a disk that is full
        const std::string base = "http://" + program.address();
        HttpClient client;
        key = logIn(client, base);
        std::string reply;
        for (int i = 0; i < 200; ++i) {
            const Parameters parameters{{"key", key}, {"title", "x"}, {"note", std::string(20'000, 'n')}};
            reply = client.get(base + target("addTask", parameters)).body;
            if (inside(reply, "added") == "(none)")
                break;
            acknowledged.push_back(inside(reply, "added"));
        }
        EXPECT_NE(inside(reply, "error"), "(none)") << reply;
        EXPECT_EQ(client.get(base + target("getTasks", {{"key", key}})).status, 200);
    }
    EXPECT_GE(acknowledged.size(), 5U);
    Program program(folder);
    HttpClient client;
    const std::string base = "http://" + program.address();
    const std::string list = client.get(base + target("getTasks", {{"key", key}})).body;
    for (const std::string &id : acknowledged)
        EXPECT_NE(list.find("<id>" + id + "</id>"), std::string::npos) << id;
    EXPECT_NE(inside(client.get(base + target("addTask", {{"key", key}, {"title", "x"}})).body, "added"), "(none)");
}

TEST(Program, stopsCleanlyAndLetsUsersBeAddedMeanwhile)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program(folder);
        ASSERT_NE(program.address(), "");
        if (signal == SIGTERM)
            addUser(folder);
        HttpClient client;
        const std::string base = "http://" + program.address();
        const std::string key = logIn(client, base);
        EXPECT_EQ(client.get(base + target("getTasks", {{"key", key}})).status, 200);
        const int status = program.end(signal);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    EXPECT_FALSE(std::filesystem::exists(folder + "/service.db-wal")); // all is in the one file
}

TEST(Program, endsEveryTokenWhereItSetsAnotherPassword)
{
    const support::TemporaryFolder place;
    const std::string folder = place.path() / "data";
    EXPECT_EQ(runWithPassword(folder, "set-password", password), 1); // there is nobody yet
    addUser(folder);
    Program program(folder);
    HttpClient client;
    const std::string base = "http://" + program.address();
    const std::string key = logIn(client, base);
    const auto add = [&] { return client.get(base + target("addTask", {{"key", key}, {"title", "x"}})).body; };
    const auto userid = [&](const std::string &word) {
        return inside(
            client.get(base + target("getUserid", {{"email", "ana@example.org"}, {"pass", word}})).body, "userid");
    };
    EXPECT_EQ(inside(add(), "added"), "1");
    EXPECT_EQ(runWithPassword(folder, "set-password", "short"), 1);
    EXPECT_EQ(inside(add(), "added"), "2"); // a refused change ends nothing
    const std::string same = userid(password);
    EXPECT_EQ(runWithPassword(folder, "set-password", "another password"), 0);
    EXPECT_EQ(inside(add(), "error"), "key did not validate");
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
    const Certificate certificate;
    const std::string folder = place.path() / "data";
    addUser(folder);
    Program program(folder, {"--tls-cert", certificate.file, "--tls-key", certificate.keyFile});
    ASSERT_NE(program.address(), "");
    HttpClient client;
    const std::string key = logIn(client, "http://" + program.address());
    const std::string secure = "https://" + program.address();
    EXPECT_EQ(client.get(secure + "/api.php").status, 0); // nobody vouches for it
    client.trust(certificate.file);
    const std::string info = client.get(secure + target("getAccountInfo", {{"key", key}})).body;
    EXPECT_EQ(inside(info, "pro"), "1") << info;
    EXPECT_EQ(program.end(SIGTERM), 0);

    Program strict(folder, {"--tls-cert", certificate.file, "--tls-key", certificate.keyFile, "--tls-only"});
    EXPECT_EQ(client.get("http://" + strict.address() + "/api.php").status, 0);
    EXPECT_EQ(client.get("https://" + strict.address() + "/api.php").status, 200);
    EXPECT_EQ(strict.end(SIGTERM), 0);

    std::string output;
    const std::string twice = " --tls-cert " + certificate.keyFile + " --tls-key " + certificate.keyFile;
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
