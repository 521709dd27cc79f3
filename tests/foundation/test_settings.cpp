// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"
#include "foundation/settings.h"
#include "support/files.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <sys/stat.h>
#include <thread>

using namespace foundation;
namespace fs = std::filesystem;

namespace {

class SettingsFiles : public testing::Test
{
protected:
    void put(const std::string &text) const
    {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    [[nodiscard]] std::vector<std::string> names() const { return support::namesIn(path.parent_path()); }

    support::TemporaryFolder folder;
    fs::path path = folder.path() / "deep" / "folder" / "settings.json";
};

unsigned mode(const fs::path &file)
{
    return static_cast<unsigned>(fs::status(file).permissions());
}

const SettingsTable everyKind{
    {"yes", true},
    {"no", false},
    {"big", std::numeric_limits<std::int64_t>::max()},
    {"small", std::numeric_limits<std::int64_t>::min()},
    {"whole real", 3.0},
    {"real", 0.1},
    {"infinite", -std::numeric_limits<double>::infinity()},
    {"text", "Grüße \"\\ \n \xf0\x9f\x8d\x8e"},
    {"empty text", ""},
    {"text with nul", std::string("a\0b", 3)},
    {"text that is not UTF-8", "\xff\xfe\x41"},
    {"date", Instant{1'796'133'600.25}},
    {"data", std::vector<std::byte>{std::byte{0}, std::byte{255}, std::byte{34}}},
    {"no data", std::vector<std::byte>{}},
    {"keys", std::map<std::string, std::int64_t>{{"keyCode", 49}, {"modifiers", std::int64_t{1} << 40}}},
    {"no keys", std::map<std::string, std::int64_t>{}},
};

} // namespace

TEST_F(SettingsFiles, everyKindOfValueSurvivesTheFile)
{
    JsonSettingsFile file(path);
    EXPECT_TRUE(file.read()->empty());
    ASSERT_TRUE(file.write(everyKind));
    EXPECT_EQ(*JsonSettingsFile(path).read(), everyKind);
}

TEST_F(SettingsFiles, areForTheirUserAloneWithOneBackup)
{
    const mode_t former = ::umask(0);
    JsonSettingsFile file(path);
    ASSERT_TRUE(file.write({{"a", true}}));
    ASSERT_TRUE(file.write({{"a", false}}));
    ::umask(former);
    EXPECT_EQ(mode(path), 0600U);
    EXPECT_EQ(mode(path.string() + ".bak"), 0600U);
    EXPECT_EQ(mode(path.parent_path()), 0700U);
    EXPECT_EQ(names(), (std::vector<std::string>{"settings.json", "settings.json.bak"}));
    EXPECT_EQ(*JsonSettingsFile(path.string() + ".bak").read(), (SettingsTable{{"a", true}}));
}

TEST_F(SettingsFiles, aDamagedFileIsKeptAsideAndReported)
{
    for (const std::string &damage : {std::string(), std::string("{\"a\": 1"), std::string("[1]"),
             std::string("\0\0", 2), std::string("{\"a\":") + std::string(100'000, '[')}) {
        fs::remove_all(path.parent_path());
        put(damage);
        JsonSettingsFile file(path);
        Settings settings(file, {{"a", std::int64_t{7}}});
        ASSERT_TRUE(settings.loadError());
        EXPECT_EQ(settings.loadError()->code, static_cast<int>(SettingsErrorCode::Damaged));
        EXPECT_EQ(settings.integer("a"), 7);
        ASSERT_EQ(names().size(), 1U);
        EXPECT_TRUE(names().front().starts_with("settings.json.damaged-20")) << names().front();
        EXPECT_EQ(support::contents(path.parent_path() / names().front()), damage);
        settings.set("a", std::int64_t{8});
        EXPECT_TRUE(settings.synchronize());
        EXPECT_EQ(names().size(), 2U);
    }
}

TEST_F(SettingsFiles, aValueOfNoKnownKindLosesOnlyItself)
{
    setLogSink([](std::string_view) {});
    put(R"({"a": null, "b": {"date": "soon"}, "c": {"data": "%%"}, "d": {"table": {"k": 1.5}}, "e": [1], "f": 2.5})");
    EXPECT_EQ(*JsonSettingsFile(path).read(), (SettingsTable{{"f", 2.5}}));
    setLogSink({});
}

TEST_F(SettingsFiles, whatCannotBeReadIsNotWrittenOver)
{
    fs::create_directories(path); // a folder in the file's place
    JsonSettingsFile file(path);
    Settings settings(file, {});
    ASSERT_TRUE(settings.loadError());
    settings.set("a", true);
    EXPECT_FALSE(settings.synchronize());
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_FALSE(JsonSettingsFile("/dev/null/settings.json").write({{"a", true}}));
}

TEST_F(SettingsFiles, ofTwoProgramsHoldWhatEachChangedLast)
{
    JsonSettingsFile first(path);
    JsonSettingsFile second(path);
    Settings window(first, {});
    window.set("list", std::string("Today"));
    window.set("password", std::string("old"));
    ASSERT_TRUE(window.synchronize());
    Settings commandLine(second, {});
    EXPECT_TRUE(window.refresh().empty()); // its own writing is no news

    commandLine.set("password", std::string("new"));
    commandLine.remove("list");
    ASSERT_TRUE(commandLine.synchronize());
    window.set("size", std::int64_t{3});
    EXPECT_EQ(window.refresh(), (Settings::Keys{"list", "password"}));
    EXPECT_EQ(window.text("password"), "new");
    EXPECT_EQ(window.integer("size"), 3); // not in the file yet
    EXPECT_TRUE(window.refresh().empty());

    commandLine.set("size", std::int64_t{4});
    commandLine.set("list", std::string("Inbox"));
    ASSERT_TRUE(commandLine.synchronize());
    ASSERT_TRUE(window.synchronize());
    EXPECT_EQ(*second.read(), (SettingsTable{{"list", "Inbox"}, {"password", "new"}, {"size", std::int64_t{3}}}));
    EXPECT_EQ(window.unsavedChanges(), 0U);
    EXPECT_EQ(window.refresh(), Settings::Keys{"list"}) << "told though it came with a write of the window's own";
}

TEST_F(SettingsFiles, ofManyProgramsThatWriteAtOnceLoseNothing)
{
    constexpr int programs = 4;
    constexpr int changes = 25;
    {
        std::vector<std::jthread> writers;
        for (int program = 0; program < programs; ++program)
            writers.emplace_back([this, program] {
                JsonSettingsFile file(path);
                Settings settings(file, {});
                for (int i = 0; i < changes; ++i) {
                    settings.set(std::to_string(program) + "." + std::to_string(i), true);
                    EXPECT_TRUE(settings.synchronize());
                }
            });
    }
    EXPECT_EQ(JsonSettingsFile(path).read()->size(), std::size_t{programs * changes});
}

TEST_F(SettingsFiles, thatSomebodyIsStillWritingStayWhereTheyAre)
{
    setLogSink([](std::string_view) {});
    JsonSettingsFile file(path);
    Settings settings(file, {});
    settings.set("a", true);
    ASSERT_TRUE(settings.synchronize());
    put("{\"a\": fal");
    EXPECT_TRUE(settings.refresh().empty());
    EXPECT_TRUE(settings.boolean("a"));
    put("{\"a\": false}");
    EXPECT_EQ(settings.refresh(), Settings::Keys{"a"});
    EXPECT_FALSE(settings.boolean("a"));
    setLogSink({});
}

TEST_F(SettingsFiles, thatVanishOrBreakMeanwhileAreWrittenAnewAsAWhole)
{
    setLogSink([](std::string_view) {});
    for (const char *broken : {"", "{\"a\": 1"}) {
        fs::remove_all(path.parent_path());
        JsonSettingsFile file(path);
        Settings settings(file, {});
        settings.set("a", true);
        ASSERT_TRUE(settings.synchronize());
        fs::remove(path);
        if (*broken)
            put(broken);
        EXPECT_TRUE(settings.refresh().empty());
        settings.set("b", true);
        ASSERT_TRUE(settings.synchronize());
        EXPECT_EQ(*file.read(), (SettingsTable{{"a", true}, {"b", true}}));
    }
    setLogSink({});
}

TEST_F(SettingsFiles, waitForAProgramThatWritesAndNotForOneThatHangs)
{
    JsonSettingsFile file(path);
    ASSERT_TRUE(file.write({{"a", std::int64_t{1}}}));
    auto held = file.lock();
    std::jthread writer([&held] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        held.reset();
    });
    EXPECT_NE(JsonSettingsFile(path).lock(), nullptr);
    writer.join();
    setLogSink([](std::string_view) {});
    const auto hanging = file.lock();
    EXPECT_EQ(JsonSettingsFile(path).lock(), nullptr);
    setLogSink({});
}

namespace {

/// A keyring in memory, which can be out of reach or refuse.
class FakeKeyring final : public SecretStore
{
public:
    Result<std::optional<std::string>> read(const std::string &name, const Waiting &) override
    {
        if (trouble)
            return failure();
        const auto found = held.find(name);
        return found == held.end() ? std::nullopt : std::optional(found->second);
    }
    Result<void> write(const std::string &name, const std::string &secret, const Waiting &) override
    {
        ++calls;
        if (trouble)
            return failure();
        held[name] = secret;
        if (meanwhile)
            std::exchange(meanwhile, {})();
        return {};
    }
    Result<void> remove(const std::string &name, const Waiting &) override
    {
        ++calls;
        if (trouble)
            return failure();
        held.erase(name);
        return {};
    }

    std::map<std::string, std::string> held;
    std::optional<SecretStoreErrorCode> trouble;
    int calls = 0;
    std::function<void()> meanwhile; ///< what happens while it takes the next secret

private:
    [[nodiscard]] Failure failure() const
    {
        return Failure(Error{secretStoreErrorDomain, static_cast<int>(*trouble), "The keyring fails.", {}});
    }
};

class Secrets : public SettingsFiles
{
protected:
    [[nodiscard]] testing::AssertionResult liesInNoFile(const std::string &secret) const
    {
        for (const auto &entry : fs::directory_iterator(path.parent_path())) {
            if (support::contents(entry.path()).find(secret) != std::string::npos)
                return testing::AssertionFailure() << entry.path();
        }
        return testing::AssertionSuccess();
    }

    FakeKeyring keyring;
    JsonSettingsFile file{path};
    SecretSettings secrets{&keyring, {"password"}};
};

} // namespace

TEST_F(Secrets, lieInTheKeyringAndInNoFile)
{
    Settings settings(file, {}, secrets);
    for (const char *password : {"hunter2", "changed"}) {
        settings.set("password", std::string(password));
        settings.set("name", std::string("ana"));
        ASSERT_TRUE(settings.synchronize()); // which leaves the secret for later
        EXPECT_EQ(settings.secret("password", {}), password);
        EXPECT_GT(settings.unsavedChanges(), 0U);
        EXPECT_TRUE(liesInNoFile(password));
        ASSERT_TRUE(settings.synchronizeWithSecrets({}));
        EXPECT_EQ(settings.unsavedChanges(), 0U);
        EXPECT_EQ(keyring.held["password"], password);
        EXPECT_EQ(settings.secret("password", {}), password);
        EXPECT_TRUE(liesInNoFile(password));
    }
    Settings another(file, {}, secrets);
    EXPECT_TRUE(another.isInSecretStore("password"));
    EXPECT_EQ(another.secret("password", {}), "changed");
    EXPECT_FALSE(Settings(file, {}).secret("password", {})); // a program without a keyring
    keyring.held.clear();
    EXPECT_EQ(another.secret("password", {}).error().code, static_cast<int>(SecretStoreErrorCode::Lost));
}

TEST_F(Secrets, areTakenOutOfTheKeyringWhenTheyAreCleared)
{
    Settings settings(file, {}, secrets);
    for (const bool isRemoved : {true, false}) {
        settings.set("password", std::string("hunter2"));
        ASSERT_TRUE(settings.synchronizeWithSecrets({}));
        if (isRemoved)
            settings.remove("password");
        else
            settings.set("password", std::string());
        ASSERT_TRUE(settings.synchronizeWithSecrets({}));
        EXPECT_TRUE(keyring.held.empty());
        EXPECT_EQ(settings.secret("password", {}), "");
    }
}

TEST_F(Secrets, thatNoKeyringTakesLieInTheFileUntilTheyAreTypedAgain)
{
    setLogSink([](std::string_view) {});
    Settings settings(file, {}, secrets);
    settings.set("password", std::string("first"));
    ASSERT_TRUE(settings.synchronizeWithSecrets({}));
    keyring.trouble = SecretStoreErrorCode::NoStore;
    settings.set("password", std::string("second"));
    ASSERT_TRUE(settings.synchronizeWithSecrets({}));
    EXPECT_FALSE(settings.isInSecretStore("password"));
    EXPECT_EQ(settings.secret("password", {}), "second"); // the first, still in the keyring, is not mistaken for it
    EXPECT_EQ(Settings(file, {}).text("password"), "second");
    keyring.trouble.reset();
    settings.set("password", std::string("second"));
    ASSERT_TRUE(settings.synchronizeWithSecrets({}));
    EXPECT_EQ(keyring.held["password"], "second");
    EXPECT_TRUE(liesInNoFile("second"));
    setLogSink({});
}

TEST_F(Secrets, thatAreRefusedAreSaidSoOnceAndWrittenNowhere)
{
    Settings settings(file, {}, secrets);
    keyring.trouble = SecretStoreErrorCode::Refused;
    settings.set("password", std::string("hunter2"));
    settings.set("name", std::string("ana"));
    EXPECT_EQ(settings.synchronizeWithSecrets({}).error().message, "The keyring fails.");
    EXPECT_EQ(settings.unsavedChanges(), 0U) << "nobody is asked again and again";
    settings.set("name", std::string("bea"));
    EXPECT_TRUE(settings.synchronizeWithSecrets({}));
    EXPECT_EQ(keyring.calls, 1);
    EXPECT_EQ(*file.read(), (SettingsTable{{"name", "bea"}}));
    EXPECT_EQ(settings.secret("password", {}), "hunter2"); // as long as the program runs
    keyring.trouble.reset();
    settings.set("password", std::string("hunter2"));
    EXPECT_TRUE(settings.synchronizeWithSecrets({}));
    EXPECT_EQ(keyring.held["password"], "hunter2");
}

TEST_F(Secrets, thatChangeWhileTheKeyringTakesThemWaitForTheNextTime)
{
    Settings settings(file, {}, secrets);
    settings.set("name", std::string("ana"));
    settings.set("password", std::string("hunt"));
    keyring.meanwhile = [&settings] { settings.set("password", std::string("hunter2")); };
    ASSERT_TRUE(settings.synchronizeWithSecrets({}));
    EXPECT_TRUE(liesInNoFile("hunt"));
    EXPECT_GT(settings.unsavedChanges(), 0U);
    ASSERT_TRUE(settings.synchronizeWithSecrets({}));
    EXPECT_EQ(keyring.held["password"], "hunter2");
    EXPECT_TRUE(liesInNoFile("hunter2"));
    EXPECT_EQ(settings.unsavedChanges(), 0U);
}

TEST_F(Secrets, stayInTheKeyringWhenTheFileCannotBeWritten)
{
    Settings settings(file, {}, secrets);
    settings.set("password", std::string("hunter2"));
    fs::create_directories(path); // in the file's place
    EXPECT_FALSE(settings.synchronizeWithSecrets({}));
    fs::remove(path);
    EXPECT_TRUE(settings.synchronizeWithSecrets({}));
    settings.set("password", std::string("changed"));
    fs::remove(path);
    fs::create_directories(path);
    EXPECT_FALSE(settings.synchronizeWithSecrets({}));
    fs::remove(path);
    EXPECT_TRUE(settings.synchronizeWithSecrets({}));
    EXPECT_EQ(Settings(file, {}, secrets).secret("password", {}), "changed");
}

TEST(Settings, readAsTheirDefaultsUntilSet)
{
    MemorySettingsFile file;
    Settings settings(file, {{"timeout", std::int64_t{30}}, {"on", true}, {"name", std::string("Ana")}});
    EXPECT_EQ(settings.integer("timeout"), 30);
    settings.set("timeout", std::int64_t{5});
    settings.set("on", std::string("not a flag")); // of the wrong kind, so the default holds
    EXPECT_EQ(settings.integer("timeout"), 5);
    EXPECT_TRUE(settings.boolean("on"));
    EXPECT_EQ(settings.all().size(), 3U);
    EXPECT_TRUE(file.read()->empty());
    ASSERT_TRUE(settings.synchronize());
    EXPECT_EQ(file.read()->size(), 2U);
    settings.remove("timeout");
    EXPECT_EQ(settings.integer("timeout"), 30);
    EXPECT_EQ(settings.text("name"), "Ana");
    EXPECT_EQ(settings.text("nothing"), "");
    EXPECT_FALSE(settings.date("nothing"));
}
