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
    ASSERT_TRUE(commandLine.synchronize());
    ASSERT_TRUE(window.synchronize());
    EXPECT_EQ(*second.read(), (SettingsTable{{"password", "new"}, {"size", std::int64_t{3}}}));
    EXPECT_EQ(window.unsavedChanges(), 0U);
}

TEST_F(SettingsFiles, thatVanishOrBreakMeanwhileAreWrittenAnewAsAWhole)
{
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

/// A keyring in memory, which can be out of reach.
class FakeKeyring final : public SecretStore
{
public:
    Result<std::optional<std::string>> read(const std::string &name) override
    {
        if (!answers)
            return noAnswer();
        const auto found = held.find(name);
        return found == held.end() ? std::nullopt : std::optional(found->second);
    }
    Result<void> write(const std::string &name, const std::string &secret) override
    {
        if (!answers)
            return noAnswer();
        held[name] = secret;
        return {};
    }
    Result<void> remove(const std::string &name) override
    {
        held.erase(name);
        return {};
    }

    std::map<std::string, std::string> held;
    bool answers = true;

private:
    static Failure noAnswer() { return Failure(Error{"test", 1, "No keyring answers.", {}}); }
};

} // namespace

TEST_F(SettingsFiles, aSecretLiesInTheKeyringAndNeverInTheFile)
{
    FakeKeyring keyring;
    JsonSettingsFile file(path);
    Settings settings(file, {}, {&keyring, {"password"}});
    for (const char *password : {"hunter2", "changed"}) {
        settings.set("password", std::string(password));
        settings.set("name", std::string("ana"));
        EXPECT_EQ(settings.secret("password"), password);
        ASSERT_TRUE(settings.synchronize());
        EXPECT_EQ(keyring.held["password"], password);
        EXPECT_EQ(settings.secret("password"), password);
        for (const auto &entry : fs::directory_iterator(path.parent_path()))
            EXPECT_EQ(support::contents(entry.path()).find(password), std::string::npos) << entry.path();
    }
    JsonSettingsFile sameFile(path);
    Settings another(sameFile, {}, {&keyring, {"password"}});
    EXPECT_TRUE(another.isInSecretStore("password"));
    EXPECT_EQ(another.secret("password"), "changed");
    keyring.answers = false;
    EXPECT_EQ(another.secret("password").error().message, "No keyring answers.");
    EXPECT_FALSE(Settings(sameFile, {}).secret("password")); // a program without a keyring
    keyring.answers = true;
    keyring.held.clear();
    EXPECT_EQ(another.secret("password").error().code, static_cast<int>(SettingsErrorCode::NoSecret));

    settings.set("password", std::string());
    ASSERT_TRUE(settings.synchronize());
    EXPECT_TRUE(keyring.held.empty());
    EXPECT_EQ(settings.secret("password"), "");
}

TEST_F(SettingsFiles, aSecretThatNoKeyringTakesLiesInTheFile)
{
    setLogSink([](std::string_view) {});
    FakeKeyring keyring;
    JsonSettingsFile file(path);
    Settings settings(file, {}, {&keyring, {"password"}});
    settings.set("password", std::string("first"));
    ASSERT_TRUE(settings.synchronize());
    keyring.answers = false;
    settings.set("password", std::string("second"));
    ASSERT_TRUE(settings.synchronize());
    EXPECT_FALSE(settings.isInSecretStore("password"));
    EXPECT_EQ(settings.secret("password"), "second"); // the first, still in the keyring, is not mistaken for it
    EXPECT_EQ(Settings(file, {}).text("password"), "second");
    setLogSink({});
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
