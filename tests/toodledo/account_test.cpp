// SPDX-License-Identifier: GPL-3.0-or-later
#include "service_client.h"

#include "foundation/log.h"
#include "toodledo/td_text.h"

#include <gmock/gmock.h>

using namespace toodledo;
using support::at;
using testing::ElementsAre;

namespace {

class Login : public ServiceClient
{
protected:
    Login() { answerLogin(); }

    std::unique_ptr<TDApi> logIn(TDError *error = nullptr)
    {
        return TDApi::initWithUsername("ana@example.org", "abc", environment(), error);
    }
    TDError failedLogin()
    {
        TDError error;
        EXPECT_EQ(logIn(&error), nullptr);
        return error;
    }
    [[nodiscard]] std::size_t tokensAskedFor() const
    {
        std::size_t count = 0;
        for (const std::string &request : requests())
            count += request.starts_with("getToken;") ? 1 : 0;
        return count;
    }
};

const std::string passwordHash = "900150983cd24fb0d6963f7d28e17f72";

} // namespace

TEST_F(Login, asksForUserTokenClockAndAccountInThisOrder)
{
    answer("getServerInfo", "<server><unixtime>1000000000.5</unixtime></server>");
    clock.set({1'000'000'000});
    const auto api = logIn();
    ASSERT_TRUE(api);
    const std::string key = md5Hex(passwordHash + "td1" + "u42");
    EXPECT_THAT(requests(),
        ElementsAre("getUserid;email=ana%40example.org;pass=abc;", "getToken;userid=u42;appid=Quelvin-MacOS;",
            "getServerInfo;key=" + key + ";", "getAccountInfo;key=" + key + ";key=" + key + ";"));
    EXPECT_EQ(api->passwordHash(), passwordHash);
    EXPECT_EQ(api->currentKey(), key);
    EXPECT_EQ(api->userId(), "u42");
    EXPECT_EQ(api->servertimeDifference(), 0.5);
    EXPECT_EQ(api->accountInfo().at("userid"), "u42");
    EXPECT_FALSE(api->loginWasRefused());
    EXPECT_TRUE(api->isAuthenticated());
}

TEST_F(Login, tellsWhyNobodyIsLoggedIn)
{
    const std::string sentence = "Cannot log into Toodledo. Your credentials may be incorrect. Please check your email "
                                 "address and password, and try synchronizing again.";
    for (const char *body : {"<html/>", "<userid>1</userid", "<r><userid>1</userid><userid>2</userid></r>", ""}) {
        answer("getUserid", body);
        EXPECT_EQ(failedLogin().code, 30) << body;
        EXPECT_EQ(failedLogin().message, sentence) << body;
    }
    answer("getUserid", "<userid>0</userid>");
    EXPECT_EQ(failedLogin().code, 110);
    answer("getUserid", "<userid>1</userid>");
    EXPECT_EQ(failedLogin().code, 120);
    EXPECT_EQ(failedLogin().message, "");
    EXPECT_EQ(tokensAskedFor(), 0U);
}

TEST_F(Login, F39_takesARefusalForAUserIdButSaysSo)
{
    answer("getUserid", "<error>too many logins</error>");
    const auto api = logIn();
    ASSERT_TRUE(api);
    EXPECT_EQ(api->userId(), "too many logins");
    EXPECT_TRUE(api->loginWasRefused());
}

TEST_F(Login, succeedsWithoutATokenAClockOrAnAccount)
{
    for (const char *method : {"getToken", "getServerInfo", "getAccountInfo"})
        answer(method, {.status = 503});
    const auto api = logIn();
    ASSERT_TRUE(api);
    EXPECT_FALSE(api->isAuthenticated());
    EXPECT_EQ(api->servertimeDifference(), 0);
    EXPECT_TRUE(api->accountInfo().empty());
}

TEST_F(Login, warnsOnceThatThePasswordTravelsUnencrypted)
{
    std::vector<std::string> lines;
    foundation::setLogSink([&](std::string_view line) { lines.emplace_back(line); });
    const auto warnings
        = [&] { return std::count(lines.begin(), lines.end(), "The login to todo.invalid is sent unencrypted."); };
    client().setKey({});
    static_cast<void>(client().getUserIdForUsername("a", "b"));
    EXPECT_EQ(warnings(), 0) << "the loopback needs no warning";
    settings.set("ToodledoHost", "todo.invalid");
    restart();
    static_cast<void>(client().getUserIdForUsername("a", "b"));
    static_cast<void>(client().getUserIdForUsername("a", "b"));
    foundation::setLogSink({});
    EXPECT_EQ(warnings(), 1);
}

TEST_F(Login, F21_keepsAKeyForThreeHoursAndNoneOfTheFuture)
{
    constexpr double hour = 3600;
    for (const auto &[age, isKept] : {std::pair{0.0, true}, {3 * hour, true}, {3 * hour + 1, false}, {-1.0, false}}) {
        forgetKey();
        const std::size_t before = tokensAskedFor();
        holdKey(age);
        EXPECT_EQ(tokensAskedFor() - before, isKept ? 0U : 1U) << age;
        EXPECT_EQ(client().currentKey() == "thekey", isKept) << age;
    }
    EXPECT_EQ(settings.date("lastKeyUpdate"), clock.now());
}

TEST_F(Login, doesNotUseTheKeyOfAnotherUser)
{
    static_cast<void>(logIn());
    const std::string first = settings.text("toodledoKey");
    static_cast<void>(logIn());
    EXPECT_EQ(tokensAskedFor(), 1U) << "the same user's key is used again";
    answer("getUserid", "<userid>u43</userid>");
    static_cast<void>(logIn());
    EXPECT_EQ(tokensAskedFor(), 2U);
    EXPECT_NE(settings.text("toodledoKey"), first);
}

TEST_F(Login, doesNotUseWhatTheCreationOfAnAccountLeft)
{
    answer("createAccount", "<added>u42</added>");
    answer("getToken", "<error>missing user</error>");
    EXPECT_EQ(client().createAccount("ana@example.org", "secret1"), "u42");
    answer("getToken", "<token>td1</token>");
    const auto api = logIn();
    EXPECT_EQ(api->currentKey(), md5Hex(passwordHash + "td1" + "u42"));
}

TEST_F(Login, stampsAFailedTokenRequestAndTriesAgain)
{
    answer("getToken", "<html/>");
    holdKey(4 * 3600);
    clock.advance(60);
    EXPECT_EQ(client().key(), std::nullopt);
    EXPECT_EQ(settings.date("lastKeyUpdate"), clock.now());
    EXPECT_EQ(settings.value("toodledoKey"), std::nullopt);
    answer("getToken", "<token>td2</token>");
    EXPECT_TRUE(client().key());
}

TEST_F(Login, movesDatesByTheAccountsZoneInHalfHours)
{
    const foundation::Instant noon = at("2026-11-24 12:00");
    const auto movedBy = [&](const char *zone) {
        client().setAccountInfo({{"timezone", zone}});
        return client().serverDateAsLocal(noon).seconds - noon.seconds;
    };
    EXPECT_EQ(client().serverDateAsLocal(noon), noon) << "no zone is known";
    EXPECT_EQ(movedBy("-10"), -18'000);
    EXPECT_EQ(movedBy("3"), 5'400);
    EXPECT_EQ(movedBy(""), 0);
}

TEST_F(Login, listsTheDatesOfTheLastChanges)
{
    holdKey();
    answer("getAccountInfo",
        "<account><lastaddedit>2026-11-01 10:00:00</lastaddedit><lastdelete/><lastfolderedit>x</lastfolderedit>"
        "<lastgoaledit>y</lastgoaledit></account>");
    const auto dates = client().getLastModificationsDates();
    ASSERT_TRUE(dates);
    EXPECT_EQ(*dates,
        (AccountInfo{{"lastTaskAddEdit", "2026-11-01 10:00:00"}, {"lastFolderEdit", "x"}, {"lastContextEdit", ""}}));
    for (const char *body : {"<account>", "<accounts/>"}) {
        answer("getAccountInfo", body);
        TDError error;
        EXPECT_EQ(client().getLastModificationsDates(&error), std::nullopt);
        EXPECT_EQ(error.code, -1);
        EXPECT_EQ(error.message, "");
    }
}

TEST_F(Login, goesByHttpsOnceTheAccountIsPro)
{
    holdKey();
    const auto url = [this] {
        return client().authenticatedRequestForURLString("h/api.php?method=x;", {{"id", "5"}}).url;
    };
    for (const char *pro : {"", "0", "01", "1 ", "yes"}) {
        client().setAccountInfo({{"pro", pro}});
        EXPECT_EQ(url(), "http://h/api.php?method=x;key=thekey;id=5;") << pro;
    }
    client().setAccountInfo({{"pro", "1"}});
    EXPECT_EQ(url(), "https://h/api.php?method=x;key=thekey;id=5;");
    EXPECT_EQ(client().requestForURLString("h/api.php?method=getToken;", {}).url, "http://h/api.php?method=getToken;");
}

TEST_F(Login, createsAnAccount)
{
    answer("createAccount", "<added>u77</added>");
    EXPECT_EQ(client().createAccount("bo@example.org", "pass;word"), "u77");
    const std::string request = lastRequest();
    EXPECT_EQ(request.substr(0, 18), "createAccount;key=");
    EXPECT_TRUE(request.ends_with(";email=bo%40example.org;pass=pass%3Bword;")) << request;

    TDError error;
    answer("createAccount", "<html/>");
    EXPECT_EQ(client().createAccount("bo", "p", &error), std::nullopt);
    EXPECT_EQ(error.code, 210);
    EXPECT_EQ(error.message,
        "Error while creating Toodledo account. Check that you have entered an email address in a valid format, and a "
        "password that is at least six characters.");
    answer("createAccount", {.status = 500});
    EXPECT_EQ(client().createAccount("bo", "p", &error), std::nullopt);
    EXPECT_EQ(error.code, 30);
    EXPECT_EQ(error.message, "");
    answer("createAccount", "<error>taken</error>");
    EXPECT_EQ(client().createAccount("bo", "p", &error), "taken");
    EXPECT_TRUE(client().lastReplyWasRefused());
}
