// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/qvl_program.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using clitest::Outcome;
using clitest::Qvl;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string line(std::string text)
{
    return text.substr(0, text.find('\n'));
}

QJsonArray json(const std::string &text)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(text)).array();
}

std::vector<std::string> titles(const std::string &text, const char *key = "title")
{
    std::vector<std::string> all;
    for (const QJsonValue &value : json(text))
        all.push_back(value[QLatin1String(key)].toString().toStdString());
    return all;
}

class Program : public testing::Test
{
protected:
    std::string add(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "add");
        return line(qvl(arguments));
    }
    QJsonValue shown(const std::string &task) { return json(qvl({"show", task, "--json"})).at(0); }
    std::vector<std::string> listed(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "list");
        arguments.emplace_back("--json");
        return titles(qvl(arguments));
    }

    Qvl qvl;
};

TEST_F(Program, whatIsAddedIsShownWithAllThatItWasGiven)
{
    qvl({"folder", "add", "Home"});
    qvl({"context", "add", "Phone"});
    const std::string task = add({"[x] {} \"Call\" 🎂", "--folder", "Home", "--context", "Phone", "--state", "Waiting",
        "--priority", "-1", "--star", "--tag", "{}", "--tag", "[a,b]", "--start", "2026-12-01", "--due",
        "2026-12-24T17:00", "--reminder", "60", "--note=-first\nsecond"});
    EXPECT_THAT(task, testing::StartsWith("x-objectstore://"));
    const QJsonValue shown = this->shown(task);
    EXPECT_EQ(shown[QLatin1String("uri")].toString().toStdString(), task);
    EXPECT_EQ(shown[QLatin1String("title")].toString().toStdString(), "[x] {} \"Call\" 🎂");
    EXPECT_EQ(shown[QLatin1String("folder")].toString(), QStringLiteral("Home"));
    EXPECT_EQ(shown[QLatin1String("context")].toString(), QStringLiteral("Phone"));
    EXPECT_EQ(shown[QLatin1String("state")].toString(), QStringLiteral("Waiting"));
    EXPECT_EQ(shown[QLatin1String("priority")].toInt(), -1);
    EXPECT_TRUE(shown[QLatin1String("star")].toBool());
    EXPECT_EQ(shown[QLatin1String("tags")].toArray(), QJsonArray({QStringLiteral("[a,b]"), QStringLiteral("{}")}));
    EXPECT_TRUE(shown[QLatin1String("dueDate")].toString().startsWith(QStringLiteral("2026-12-24T17:00:00")));
    EXPECT_EQ(shown[QLatin1String("reminder")].toInt(), 60);
    EXPECT_EQ(shown[QLatin1String("notes")].toString(), QStringLiteral("-first\nsecond"));
    EXPECT_THAT(qvl({"show", task}), HasSubstr("2026-12-24 17:00"));
}

TEST_F(Program, anEditChangesWhatIsNamedAndStampsTheModification)
{
    const std::string task = add({"Milk", "--due", "tomorrow", "--tag", "a", "--tag", "b", "--star"});
    const QString before = shown(task)[QLatin1String("modifiedDate")].toString();
    qvl({"edit", task, "--title", "Bread", "--due", "none", "--untag", "a", "--tag", "c", "--no-star"});
    const QJsonValue shown = this->shown(task);
    EXPECT_EQ(shown[QLatin1String("title")].toString(), QStringLiteral("Bread"));
    EXPECT_TRUE(shown[QLatin1String("dueDate")].isNull());
    EXPECT_FALSE(shown[QLatin1String("star")].toBool());
    EXPECT_EQ(shown[QLatin1String("tags")].toArray(), QJsonArray({QStringLiteral("b"), QStringLiteral("c")}));
    EXPECT_GT(shown[QLatin1String("modifiedDate")].toString(), before);
}

TEST_F(Program, aTaskGoesThroughItsLife)
{
    const std::string milk = add({"Milk"});
    const std::string bread = add({"Bread"});
    qvl({"done", milk, bread});
    EXPECT_FALSE(shown(milk)[QLatin1String("completedDate")].isNull());
    EXPECT_THAT(listed({"inbox"}), IsEmpty());
    EXPECT_THAT(listed({"all"}), testing::ElementsAre("Bread", "Milk"));
    qvl({"done", "--undo", milk});
    EXPECT_TRUE(shown(milk)[QLatin1String("completedDate")].isNull());
    EXPECT_THAT(listed({"inbox"}), testing::ElementsAre("Milk"));
    qvl({"delete", milk});
    EXPECT_THAT(listed({"all"}), testing::ElementsAre("Bread"));
    EXPECT_THAT(listed({"trash"}), testing::ElementsAre("Milk"));
    qvl({"undelete", milk});
    EXPECT_THAT(listed({"trash"}), IsEmpty());
    qvl({"delete", milk});
    qvl({"empty-trash"});
    EXPECT_EQ(qvl.run({"undelete", milk}).status, 2);
}

TEST_F(Program, listsSelectAndSort)
{
    qvl({"folder", "add", "Home"});
    add({"b", "--due", "yesterday", "--priority", "3"});
    add({"A", "--folder", "Home", "--due", "tomorrow", "--star"});
    add({"c", "--start", "today", "--tag", "tax"});
    EXPECT_THAT(listed({}), testing::ElementsAre("A", "b", "c"));
    EXPECT_THAT(listed({"today"}), testing::ElementsAre("b", "c"));
    EXPECT_THAT(listed({"folder", "Home"}), testing::ElementsAre("A"));
    EXPECT_THAT(listed({"--where", "ANY tags.title == \"tax\" OR star == YES"}), testing::ElementsAre("A", "c"));
    EXPECT_THAT(listed({"--where", "priority BETWEEN {2, 3}"}), testing::ElementsAre("b"));
    EXPECT_THAT(listed({"--sort", "dueDate"}), testing::ElementsAre("b", "A", "c"));
    EXPECT_THAT(listed({"--sort=-dueDate"}), testing::ElementsAre("A", "b", "c"));
    EXPECT_THAT(listed({"--sort=-priority"}), testing::ElementsAre("b", "A", "c"));
    const std::string table = qvl({"list", "today"});
    const std::string id = line(table.substr(table.find('\n') + 1)).substr(0, 12);
    EXPECT_EQ(shown(id)[QLatin1String("title")].toString(), QStringLiteral("b"));
    EXPECT_THAT(table, Not(HasSubstr("\033"))); // no terminal, no colours
}

TEST_F(Program, foldersAndContextsAreMadeRenamedArchivedAndDeleted)
{
    qvl({"folder", "add", "Home"});
    const std::string task = add({"Milk", "--folder", "Home"});
    qvl({"folder", "rename", "Home", "House"});
    qvl({"folder", "archive", "House"});
    EXPECT_EQ(shown(task)[QLatin1String("folder")].toString(), QStringLiteral("House"));
    EXPECT_THAT(qvl({"folders", "--json"}), HasSubstr("\"title\": \"House\", \"order\": 0, \"archived\": true"));
    qvl({"folder", "delete", "House"});
    EXPECT_THAT(titles(qvl({"folders", "--json"})), testing::ElementsAre("Inbox"));
    EXPECT_EQ(shown(task)[QLatin1String("folder")].toString(), QStringLiteral("Inbox"));
    qvl({"context", "add", "Phone"});
    EXPECT_THAT(titles(qvl({"contexts", "--json"})), testing::ElementsAre("None", "Phone"));
    EXPECT_THAT(titles(qvl({"states", "--json"}), "state"), testing::Contains("Next Action"));
    EXPECT_THAT(titles(qvl({"tags", "--json"})), IsEmpty());
}

TEST_F(Program, aMistakeEndsInOneSentenceAndChangesNothing)
{
    qvl({"folder", "add", "Home"});
    const std::string milk = add({"Milk"});
    const std::string before = qvl({"export"});
    struct Mistake {
        std::vector<std::string> arguments;
        std::string complaint;
    };
    const std::vector<Mistake> mistakes{
        {{}, "No command was given."},
        {{"lst"}, "There is no command \"lst\". Did you mean \"list\"?"},
        {{"add"}, "TITLE"},
        {{"add", "x", "--folder", "Hme"}, "There is no folder \"Hme\". Did you mean \"Home\"?"},
        {{"add", "x", "--context", "zzzzzz"}, "There is no context \"zzzzzz\".\n"},
        {{"add", "x", "--tag", "new", "--due", "fryday"}, "--due: \"fryday\" is not a date."},
        {{"add", "x", "--priority", "9"}, "--priority takes a whole number from -1 to 3"},
        {{"add", "x", "--tag", "new", "--reminder", "soon"}, "--reminder"},
        {{"add", "x\xFF"}, "is not text in UTF-8."},
        {{"done", milk, "zzz"}, "\"zzz\" names no task"}, // all or none
        {{"list", "folder", "Hom"}, "Did you mean \"Home\"?"},
        {{"list", "folder"}, "The name of the folder is missing."},
        {{"list", "--sort", "titel"}, "Did you mean \"title\"?"},
        {{"list", "--where", "title == \"ü\" AND"}, "  title == \"ü\" AND\n                  ^\n"},
        {{"list", "--where", "star == YES AND foo == 3"}, "\n                  ^\n"},
        {{"folder", "rename", "Inbox", "In"}, "stays as it is."},
        {{"folder", "add", "Home"}, "There is a folder \"Home\" already."},
        {{"folder", "rename", "Home"}, "The new name is missing."},
        {{"context", "archive", "None"}, "cannot be changed by \"archive\""},
        {{"settings", "RequestTimeout", "long"}, "takes a whole number"},
        {{"settings", "toodledoKey", "x"}, "kept by the program itself"},
        {{"export", "--format", "xml"}, "write json or csv"},
        {{"import", qvl.path("missing").string()}, "cannot be read"},
    };
    for (const Mistake &mistake : mistakes) {
        const Outcome outcome = qvl.run(mistake.arguments);
        EXPECT_EQ(outcome.status, 2) << outcome.err;
        EXPECT_THAT(outcome.err, testing::StartsWith("qvl: "));
        EXPECT_THAT(outcome.err, HasSubstr(mistake.complaint));
        EXPECT_THAT(outcome.out, IsEmpty());
        EXPECT_EQ(qvl({"export"}), before) << outcome.err;
    }
}

TEST_F(Program, theStoreGoesOutAndInThroughFiles)
{
    add({"quote \" newline \n comma , 🍞", "--tag", "a,b", "--due", "2026-12-24T17:00", "--note", "x\ty"});
    const std::string whole = qvl({"export"});
    for (const char *format : {"json", "csv"}) {
        const Qvl other;
        const std::string file = qvl.path("file").string();
        std::ofstream(file, std::ios::binary) << qvl({"export", "--format", format});
        EXPECT_EQ(other({"import", file}), "Added 1 tag, 1 task.\n");
        EXPECT_EQ(other({"export"}), whole) << format;
    }
}

TEST_F(Program, thePasswordIsTakenAndNeverShown)
{
    EXPECT_EQ(qvl({"settings", "ToodleDoPassword"}), "not set\n");
    qvl({"settings", "ToodleDoPassword", "-"}, "se cret=1\n");
    EXPECT_EQ(qvl({"settings", "ToodleDoPassword"}), "set\n");
    EXPECT_THAT(qvl({"settings"}), Not(HasSubstr("cret")));
    std::ifstream stored(qvl.path("settings.json"));
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(stored), {}), HasSubstr("se cret=1"));
    qvl({"settings", "SyncGuards", "off"});
    EXPECT_EQ(qvl({"settings", "SyncGuards"}), "no\n");
}

TEST_F(Program, F49_aCrashWouldLeaveNoMemoryBehind)
{
    // holds the program while it waits for the password, and looks at what the system would do with its memory
    const std::string script = "mkfifo " + qvl.path("typed").string() + "; " QVL_PROGRAM " --store "
        + qvl.path("store").string() + " --settings " + qvl.path("settings.json").string()
        + " settings ToodleDoPassword - <" + qvl.path("typed").string() + " & exec 3>" + qvl.path("typed").string()
        + "; for i in $(seq 500); do grep -qE '^Max core file size +0 +0 ' /proc/$!/limits && echo none && break; "
          "sleep 0.01; done; echo x >&3; exec 3>&-; wait";
    std::FILE *shell = ::popen(script.c_str(), "r");
    ASSERT_TRUE(shell);
    char answer[16] = {};
    EXPECT_TRUE(std::fgets(answer, sizeof answer, shell)) << "a core file would be written";
    ::pclose(shell);
    EXPECT_STREQ(answer, "none\n");
}

TEST_F(Program, filesAreForTheirOwnerAlone)
{
    add({"Milk"});
    qvl({"settings", "ToodledoHost", "127.0.0.1:1"});
    struct stat status {
    };
    for (const char *name : {"store", "store/Quelvin.qvl", "settings.json"}) {
        ASSERT_EQ(::stat(qvl.path(name).c_str(), &status), 0) << name;
        EXPECT_EQ(status.st_mode & 077, 0U) << name;
    }
}

TEST_F(Program, aSynchronisationThatFailsSaysSo)
{
    qvl({"settings", "ToodledoHost", "127.0.0.1:1"});
    qvl({"settings", "ToodleDoUsername", "ana@example.org"});
    qvl({"settings", "ToodleDoPassword", "secret"});
    const Outcome outcome = qvl.run({"sync"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, HasSubstr("Logging in to Toodledo..."));
    EXPECT_THAT(outcome.err, HasSubstr("The synchronisation failed; nothing was exchanged."));
    EXPECT_THAT(outcome.err, Not(HasSubstr("secret")));
}

TEST_F(Program, helpIsPrintedForTheProgramAndForEachCommand)
{
    EXPECT_THAT(qvl({"--help"}), HasSubstr("empty-trash"));
    EXPECT_THAT(qvl({"add", "--help"}), testing::AllOf(HasSubstr("qvl add"), HasSubstr("--reminder MINUTES")));
}

} // namespace
