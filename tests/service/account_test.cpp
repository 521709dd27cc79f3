// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/caller.h"

using namespace calling;

TEST(Login, followsTheKeyScheme)
{
    EXPECT_EQ(service::md5("abc"), "900150983cd24fb0d6963f7d28e17f72");
    InMemory place;
    User ana(place, "ana@example.org");
    const auto login = [&](const char *email, const std::string &password) {
        return inside(place.ask("getUserid", {{"email", email}, {"pass", password}}), "userid");
    };
    EXPECT_EQ(login("Ana@Example.org", ana.password), ana.userid());
    EXPECT_EQ(login("ana@example.org", ""), "0");
    EXPECT_EQ(login("ana@example.org", "wrong"), "1");
    EXPECT_EQ(login("nobody@example.org", "wrong"), "1");
    const std::string server = ana.ask("getServerInfo");
    EXPECT_EQ(inside(server, "unixtime"), std::to_string(noon));
    EXPECT_EQ(inside(server, "tokenexpires"), "240.00");
    EXPECT_EQ(inside(ana.ask("getAccountInfo", {{"key", ana.key}}), "userid"), ana.userid());
}

TEST(Key, F58_isRefusedHoweverOftenAWrongOneIsTried)
{
    InMemory place;
    User ana(place, "ana@example.org");
    ana.add("addTask", {{"title", "Secret"}});
    std::string guess = ana.key;
    for (int i = 0; i < 2000; ++i) {
        guess[static_cast<std::size_t>(i) % 32] = guess[static_cast<std::size_t>(i) % 32] == 'a' ? 'b' : 'a';
        const bool isRight = guess == ana.key;
        ASSERT_EQ(
            inside(place.ask("getTasks", {{"key", guess}}), "error"), isRight ? "(none)" : "key did not validate");
    }
    EXPECT_EQ(inside(place.ask("getTasks", {}), "error"), "missing key");
    EXPECT_EQ(inside(ana.ask("getTasks"), "title"), "Secret");
}

TEST(Token, isGoodForFourHoursAndLimitedByTheHourAndByAccount)
{
    InMemory place({.tokensPerHour = 3});
    User ana(place, "ana@example.org");
    const std::string firstKey = ana.key;
    ana.logIn();
    ana.logIn();
    EXPECT_EQ(inside(ana.logIn(), "error"), "key did not validate");
    User ben(place, "ben@example.org");
    EXPECT_EQ(inside(ben.ask("getTasks"), "error"), "(none)");
    ana.key = firstKey; // the earlier keys stay good
    place.now += 4 * 3600 - 1;
    EXPECT_EQ(inside(ana.ask("getTasks"), "error"), "(none)");
    place.now += 1;
    EXPECT_EQ(inside(ana.ask("addTask", {{"title", "x"}}), "error"), "key did not validate");
    EXPECT_EQ(inside(ana.logIn(), "error"), "(none)");
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 0);
}

TEST(Login, isSlowedDownAfterFailures)
{
    InMemory place;
    User ana(place, "ana@example.org");
    const auto login = [&](const std::string &password, const char *from) {
        const std::string reply = place.ask("getUserid", {{"email", "ANA@example.org"}, {"pass", password}}, from);
        return inside(reply, "error") == "(none)" ? inside(reply, "userid") : "slow";
    };
    int tries = 0;
    for (int second = 0; second < 300; ++second, ++place.now)
        tries += login("guess " + std::to_string(second), "10.6.6.6") == "1";
    EXPECT_LE(tries, 15);
    EXPECT_EQ(login(ana.password, "10.6.6.6"), "slow"); // a right guess would tell
    EXPECT_EQ(login(ana.password, "10.0.0.7"), ana.userid()); // the owner, elsewhere
    place.now += 900;
    EXPECT_EQ(login(ana.password, "10.6.6.6"), ana.userid());
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(login("wrong", "10.6.6.6"), "1"); // forgiven, so that not even the second one waits
}

TEST(CreateAccount, refusesWhatWillNotDo)
{
    InMemory place;
    User ana(place, "ana@example.org");
    const auto create = [&](const char *email, const char *password) {
        return inside(place.ask("createAccount", {{"email", email}, {"pass", password}}), "added");
    };
    EXPECT_EQ(create("ANA@example.org", "long enough"), "(none)");
    EXPECT_EQ(create("no address", "long enough"), "(none)");
    EXPECT_EQ(create("ben@example.org", "short"), "(none)");
    EXPECT_NE(create("ben@example.org", "long enough"), "(none)");
    for (int i = 0; i < 100; ++i)
        (void)create(("crowd" + std::to_string(i) + "@example.org").c_str(), "long enough");
    EXPECT_EQ(create("one.more@example.org", "long enough"), "(none)"); // nobody fills the disk with accounts

    InMemory closed({.allowsSignUp = false});
    EXPECT_NE(inside(closed.ask("createAccount", {{"email", "a@b"}, {"pass", "long enough"}}), "error"), "(none)");
}

TEST(AccountInfo, tellsWhatChangedWhen)
{
    InMemory place({.isSecure = true});
    User ana(place, "ana@example.org");
    const auto changed = [&](const char *method, const Parameters &parameters, const std::string &element) {
        place.now += 100;
        const std::string before = inside(ana.ask("getAccountInfo"), element);
        (void)ana.ask(method, parameters);
        return inside(ana.ask("getAccountInfo"), element) != before;
    };
    EXPECT_EQ(inside(ana.ask("getAccountInfo"), "pro"), "1");
    EXPECT_TRUE(changed("addTask", {{"title", "x"}}, "lastaddedit"));
    EXPECT_FALSE(changed("editTask", {{"id", "77"}}, "lastaddedit"));
    EXPECT_TRUE(changed("editTask", {{"id", "1"}}, "lastaddedit"));
    EXPECT_FALSE(changed("getTasks", {}, "lastaddedit"));
    EXPECT_TRUE(changed("deleteTask", {{"id", "1"}}, "lastdelete"));
    EXPECT_TRUE(changed("addFolder", {{"title", "x"}}, "lastfolderedit"));
    EXPECT_TRUE(changed("addContext", {{"title", "x"}}, "lastcontextedit"));
    EXPECT_TRUE(changed("deleteContext", {{"id", "1"}}, "lastcontextedit"));
}

TEST(Users, neitherSeeNorTouchEachOthersRecords)
{
    InMemory place;
    User ana(place, "ana@example.org");
    User ben(place, "ben@example.org");
    const std::string task = ana.add("addTask", {{"title", "Hers"}});
    const std::string folder = ana.add("addFolder", {{"title", "Hers"}});
    const std::string context = ana.add("addContext", {{"title", "Hers"}});
    const std::string note = ana.add("addNote", {{"title", "Hers"}, {"text", "x"}});
    const std::string gone = ana.add("addTask", {{"title", "Gone"}});
    (void)ana.ask("deleteTask", {{"id", gone}});
    const auto everything = [](User &user) {
        return user.ask("getTasks") + user.ask("getFolders") + user.ask("getContexts") + user.ask("getNotes")
            + user.ask("getDeleted");
    };
    const std::string before = everything(ana);
    const std::vector<std::pair<const char *, Parameters>> attacks{
        {"editTask", {{"id", task}, {"title", "Mine"}}},
        {"deleteTask", {{"id", task}}},
        {"deleteTask", {{"id", gone}}},
        {"editFolder", {{"id", folder}, {"title", "Mine"}}},
        {"deleteFolder", {{"id", folder}}},
        {"editContext", {{"id", context}, {"title", "Mine"}}},
        {"deleteContext", {{"id", context}}},
        {"addNote", {{"id", note}, {"title", "Mine"}}},
        {"deleteNote", {{"id", note}}},
    };
    for (const auto &[method, parameters] : attacks)
        EXPECT_TRUE(inside(ben.ask(method, parameters), "error").starts_with("no such ")) << method;
    EXPECT_EQ(everything(ben).find("Hers"), std::string::npos);
    EXPECT_EQ(everything(ana), before);

    // Nor can a task of his lie in her folder or context, which would show its name.
    const std::string his
        = ben.add("addTask", {{"title", "His"}, {"folder", folder}, {"context", context}, {"parent", task}});
    EXPECT_GT(std::stoi(his), std::stoi(task));
    const std::string list = ben.ask("getTasks");
    EXPECT_EQ(inside(list, "folder") + inside(list, "context") + inside(list, "parent"), "00");
    EXPECT_EQ(everything(ana), before);
}
