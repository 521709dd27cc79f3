// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/caller.h"

using namespace calling;

namespace {

struct Tasks : ::testing::Test {
    InMemory place;
    User ana{place, "ana@example.org"};

    std::string titles(const Parameters &filter)
    {
        const std::string list = ana.ask("getTasks", filter);
        std::string found;
        for (std::size_t at = 0; (at = list.find("<title>", at)) != std::string::npos; ++at)
            found += inside(list.substr(at), "title") + " ";
        return inside(list, "error") == "(none)" ? found : "error: " + inside(list, "error");
    }
    std::string task(const std::string &id) { return ana.ask("getTasks", {{"id", id}}); }
};

} // namespace

TEST_F(Tasks, keepEveryFieldThatIsSent)
{
    const std::string folder = ana.add("addFolder", {{"title", "Home & garden"}});
    const std::string context = ana.add("addContext", {{"title", "<Shop>"}});
    const std::string parent = ana.add("addTask", {{"title", "Parent"}});
    const std::string id = ana.add("addTask",
        {{"id", "0"}, {"title", "Milk"}, {"tag", "a,b"}, {"folder", folder}, {"context", context}, {"goal", "3"},
            {"priority", "-1"}, {"star", "1"}, {"parent", parent}, {"duedate", "2026-12-24"}, {"duetime", "09:05 pm"},
            {"startdate", "2026-12-01"}, {"starttime", "12:00 am"}, {"completed", "0"}, {"reminder", "60"},
            {"repeat", "8"}, {"status", "10"}, {"rep_advanced", "Every Mon"}, {"length", "20"}, {"timer", "7"},
            {"note", "one\ntwo"}});
    const std::string xml = task(id);
    const std::pair<const char *, std::string> expected[]
        = {{"id", id}, {"title", "Milk"}, {"tag", "a,b"}, {"folder", folder}, {"context", "&lt;Shop&gt;"}, {"goal", ""},
            {"priority", "-1"}, {"star", "1"}, {"parent", parent}, {"children", "0"}, {"duedate", "2026-12-24"},
            {"duetime", "9:05pm"}, {"startdate", "2026-12-01"}, {"starttime", "12:00am"}, {"completed", ""},
            {"reminder", "60"}, {"repeat", "8"}, {"status", "10"}, {"rep_advanced", "Every Mon"}, {"length", "20"},
            {"timer", "7"}, {"note", "one\ntwo"}, {"added", "2026-11-24"}};
    for (const auto &[name, text] : expected)
        EXPECT_EQ(inside(xml, name), text) << name;
    EXPECT_NE(xml.find("<context id=\"" + context + "\">"), std::string::npos);
    EXPECT_NE(xml.find("<goal id=\"3\">"), std::string::npos);
    EXPECT_NE(xml.find("<tasks num=\"1\" total=\"1\" start=\"0\" end=\"1\">"), std::string::npos);
    EXPECT_EQ(inside(task(parent), "children"), "1");
}

TEST_F(Tasks, keepTitlesOfAnyCharacters)
{
    const std::string id = ana.add("addTask", {{"title", "  a;b=c&d+e%41 \xF0\x9F\x8D\x9E\n\r <\"'> "}});
    EXPECT_EQ(inside(task(id), "title"), "  a;b=c&amp;d+e%41 \xF0\x9F\x8D\x9E\n&#13; &lt;\"'&gt; ");
    EXPECT_EQ(inside(ana.ask("addTask", {{"title", std::string("\0\x01", 2)}}), "error"), "empty title");
    EXPECT_EQ(inside(ana.ask("addTask", {{"note", "x"}}), "error"), "empty title");
}

TEST_F(Tasks, changeOnlyInWhatAnEditBrings)
{
    const std::string id = ana.add("addTask",
        {{"title", "Old"}, {"note", "kept"}, {"duedate", "2026-12-24"}, {"duetime", "10:00 am"}, {"star", "1"}});
    (void)ana.ask("editTask", {{"id", id}, {"title", "New"}});
    EXPECT_EQ(inside(task(id), "title") + inside(task(id), "note") + inside(task(id), "duetime"), "Newkept10:00am");
    (void)ana.ask("editTask", {{"id", id}, {"duedate", "0000-00-00"}, {"star", "0"}});
    EXPECT_EQ(inside(task(id), "duedate") + inside(task(id), "duetime") + inside(task(id), "star"), "0");
    EXPECT_EQ(inside(ana.ask("editTask", {{"id", "0"}, {"title", "x"}}), "error"), "id number was 0");
    EXPECT_EQ(inside(ana.ask("editTask", {{"id", "999"}, {"title", "x"}}), "error"), "no such task");
    const Parameters bad[] = {{{"duedate", "2026-02-30"}}, {{"duetime", "late"}}, {{"star", "yes"}},
        {{"priority", "high"}}, {{"title", ""}}, {{"colour", "red"}}, {{"note", std::string(600'000, 'x')}}};
    const std::string before = task(id);
    for (Parameters parameters : bad) {
        const std::string name = parameters.front().first;
        parameters.insert(parameters.begin(), {"id", id});
        EXPECT_NE(inside(ana.ask("editTask", parameters), "error"), "(none)") << name;
    }
    EXPECT_EQ(task(id), before);
}

TEST_F(Tasks, getANewStampWithEachChange)
{
    const std::string id = ana.add("addTask", {{"title", "x"}});
    std::string last = inside(task(id), "modified");
    for (const int pause : {0, 0, 60, -3600}) { // within a second, and when the clock is set back
        place.now += pause;
        (void)ana.ask("editTask", {{"id", id}, {"star", "1"}});
        EXPECT_GT(inside(task(id), "modified"), last);
        last = inside(task(id), "modified");
    }
}

TEST_F(Tasks, completeOnceAndAreFollowedByTheNextOccurrence)
{
    const std::string id = ana.add(
        "addTask", {{"title", "Water"}, {"repeat", "1"}, {"duedate", "2026-11-23"}, {"note", "roses"}, {"star", "1"}});
    const Parameters completion{{"id", id}, {"completed", "1"}, {"note", "tulips"}};
    (void)ana.ask("editTask", completion);
    place.now += 86'400;
    (void)ana.logIn();
    (void)ana.ask("editTask", completion); // a client that had no answer says it again
    EXPECT_EQ(inside(task(id), "completed"), "2026-11-24");
    const std::string open = ana.ask("getTasks", {{"notcomp", "1"}});
    EXPECT_EQ(countOf(open, "<task>"), 1);
    EXPECT_EQ(inside(open, "duedate") + inside(open, "note") + inside(open, "repeat"), "2026-11-30tulips1");
    (void)ana.ask("editTask", {{"id", id}, {"completed", "0"}});
    EXPECT_EQ(inside(task(id), "completed"), "");
}

TEST_F(Tasks, thatAreMarkedAreAddedOnce)
{
    User bob{place, "bob@example.org"};
    const auto add = [](User &user, const std::string &mark) {
        return user.add("addTask", {{"title", "Milk"}, {"mark", mark}});
    };
    EXPECT_EQ(inside(ana.ask("getAccountInfo"), "addmarks"), "1");
    const std::string first = add(ana, "store/1");
    EXPECT_EQ(add(ana, "store/1"), first);
    EXPECT_NE(add(ana, "store/2"), first);
    EXPECT_NE(add(bob, "store/1"), first);
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 2);
    (void)ana.ask("deleteTask", {{"id", first}});
    const std::string second = add(ana, "store/1");
    EXPECT_NE(second, first) << "the first is gone";
    EXPECT_EQ(add(ana, "store/1"), second);
    EXPECT_NE(add(ana, ""), add(ana, "")) << "an empty mark is none";
    const std::string refusal = ana.ask("addTask", {{"title", "Milk"}, {"mark", std::string(201, 'x')}});
    EXPECT_EQ(inside(refusal, "error"), "the mark is too long");
}

TEST_F(Tasks, areDeletedOnceAndRemembered)
{
    const std::string parent = ana.add("addTask", {{"title", "Parent"}});
    const std::string child = ana.add("addTask", {{"title", "Child"}, {"parent", parent}});
    EXPECT_EQ(inside(ana.ask("deleteTask", {{"id", parent}}), "success"), "1");
    EXPECT_EQ(inside(ana.ask("deleteTask", {{"id", parent}}), "success"), "1");
    EXPECT_EQ(inside(ana.ask("deleteTask", {{"id", "999"}}), "error"), "no such task");
    EXPECT_EQ(inside(ana.ask("deleteTask", {{"id", "0"}}), "error"), "id number was 0");
    EXPECT_EQ(inside(task(child), "parent"), "0");
    const std::string deleted = ana.ask("getDeleted");
    EXPECT_EQ(countOf(deleted, "<task>"), 1);
    EXPECT_EQ(inside(deleted, "id"), parent);
    const std::string stamp = inside(deleted, "stamp");
    EXPECT_EQ(countOf(ana.ask("getDeleted", {{"after", stamp}}), "<task>"), 1);
    EXPECT_EQ(ana.ask("getDeleted", {{"after", "2026-12-01 00:00:00"}}).find("<task>"), std::string::npos);
    (void)ana.ask("deleteTask", {{"id", child}});
    EXPECT_GT(std::stoi(ana.add("addTask", {{"title", "Next"}})), std::stoi(child)) << "no id comes again";
}

TEST_F(Tasks, areLeftWithoutAFolderOrContextThatIsDeleted)
{
    for (const auto &[add, remove, field] :
        {std::tuple{"addFolder", "deleteFolder", "folder"}, std::tuple{"addContext", "deleteContext", "context"}}) {
        const std::string group = ana.add(add, {{"title", "Group"}});
        const std::string inIt = ana.add("addTask", {{"title", "x"}, {field, group}});
        const std::string before = inside(task(inIt), "modified");
        EXPECT_EQ(inside(ana.ask(remove, {{"id", group}}), "success"), "1");
        EXPECT_NE(inside(ana.ask(remove, {{"id", group}}), "error"), "(none)");
        EXPECT_NE(
            task(inIt).find(field == std::string("folder") ? "<folder>0<" : "<context id=\"0\"><"), std::string::npos);
        EXPECT_GT(inside(task(inIt), "modified"), before);
        // Another client that does not know yet still gets its task in.
        (void)ana.add("addTask", {{"title", "late"}, {field, group}});
    }
}

TEST_F(Tasks, areFoundByEachFilter)
{
    const std::string folder = ana.add("addFolder", {{"title", "F"}});
    (void)ana.add("addTask",
        {{"title", "A_1"}, {"tag", "home, work"}, {"folder", folder}, {"priority", "3"}, {"star", "1"},
            {"length", "10"}, {"duedate", "2026-12-10"}, {"startdate", "2026-12-01"}});
    place.now += 60;
    (void)ana.add("addTask",
        {{"title", "aB2"}, {"tag", "homework"}, {"status", "4"}, {"length", "30"}, {"duedate", "2026-12-20"},
            {"completed", "1"}, {"repeat", "2"}});
    place.now += 60;
    (void)ana.add("addTask", {{"title", "C3"}, {"parent", "1"}, {"goal", "5"}});
    const std::pair<Parameters, const char *> cases[] = {{{}, "A_1 aB2 C3 "}, {{{"title", "a"}}, "A_1 aB2 "},
        {{{"title", "_"}}, "A_1 "}, {{{"tag", "HOME"}}, "A_1 "}, {{{"tag", "work"}}, "A_1 "},
        {{{"folder", folder}}, "A_1 "}, {{{"folder", "0"}}, "aB2 C3 "}, {{{"context", "0"}, {"goal", "5"}}, "C3 "},
        {{{"priority", "3"}}, "A_1 "}, {{{"star", "1"}}, "A_1 "}, {{{"status", "4"}}, "aB2 "},
        {{{"repeat", "2"}}, "aB2 "}, {{{"parent", "1"}}, "C3 "}, {{{"shorter", "30"}, {"longer", "0"}}, "A_1 "},
        {{{"before", "2026-12-20"}}, "A_1 "}, {{{"after", "2026-12-10"}}, "aB2 "},
        {{{"startbefore", "2026-12-02"}}, "A_1 "}, {{{"startafter", "2026-12-01"}}, ""},
        {{{"compafter", "2026-11-23"}, {"compbefore", "2026-11-25"}}, "aB2 "}, {{{"notcomp", "1"}}, "A_1 C3 "},
        {{{"start", "1"}, {"end", "2"}}, "aB2 "}, {{{"start", "2"}}, "C3 "}, {{{"start", "9"}, {"end", "1"}}, ""},
        {{{"id", "2"}}, "aB2 "}, {{{"nonsense", "1"}}, "error: unknown parameter: nonsense"},
        {{{"before", "soon"}}, "error: before is not a date"}};
    for (const auto &[filter, expected] : cases)
        EXPECT_EQ(titles(filter), expected) << (filter.empty() ? "" : filter.front().first);

    const std::string second = inside(task("2"), "modified");
    EXPECT_EQ(titles({{"modafter", second}}), "aB2 C3 "); // what changed within that second is not missed
    EXPECT_EQ(titles({{"modbefore", second}}), "A_1 ");
    EXPECT_NE(
        ana.ask("getTasks", {{"end", "1"}}).find("num=\"1\" total=\"3\" start=\"0\" end=\"1\""), std::string::npos);
}

TEST(SeveralCalls, areDoneInTheirOrderAndARefusedOneSparesTheOthers)
{
    InMemory place({.mostCalls = 7});
    User ana(place, "ana@example.org");
    EXPECT_EQ(inside(ana.ask("getAccountInfo", {{"key", ana.key}}), "mostcalls"), "7");
    const auto several = [&](const std::string &key, const std::string &calls) {
        return place.service.answer("/api.php?method=several;key=" + key + ";", calls);
    };
    const std::string calls = "method=addTask;title=One%0Amethod%3DaddTask;\n" // an escaped line's end ends none
                              "method=addTask;title=;\n"
                              "method=addTask;title=Two;key=other;\n"
                              "method=editTask;id=1;title=Uno\n"
                              "method=getTasks;\n"
                              "method=several;\n";
    EXPECT_EQ(inside(several(ana.key, calls + "method=deleteTask;id=7"), "several"),
        "<added>1</added><error>empty title</error><added>2</added><success>1</success>"
        "<error>not to be one of several</error><error>unknown method</error><error>no such task</error>");
    EXPECT_EQ(inside(several(ana.key, calls + "\nmethod=addTask;title=Three"), "error"), "too many calls");
    EXPECT_EQ(inside(several("wrong", calls), "error"), "key did not validate");
    EXPECT_EQ(inside(several(ana.key + ";title=x", calls), "error"), "unknown parameter: title");
    const std::string list = ana.ask("getTasks");
    EXPECT_EQ(countOf(list, "<task>"), 2);
    EXPECT_LT(list.find("<title>Uno</title>"), list.find("<title>Two</title>"));
}

TEST_F(Tasks, haveFoldersContextsAndNotesAsTheProtocolWritesThem)
{
    (void)ana.add("addFolder", {{"title", "A&B"}, {"private", "1"}});
    const std::string folder = ana.add("addFolder", {{"title", "Old"}});
    (void)ana.ask("editFolder", {{"id", folder}, {"title", "New"}, {"private", "0"}, {"archived", "1"}});
    EXPECT_EQ(inside(ana.ask("getFolders"), "folders"),
        "<folder id=\"1\" private=\"1\" archived=\"0\" order=\"1\">A&amp;B</folder>"
        "<folder id=\"2\" private=\"0\" archived=\"1\" order=\"2\">New</folder>");
    const std::string context = ana.add("addContext", {{"title", "Old"}});
    (void)ana.ask("editContext", {{"id", context}, {"title", "Work"}});
    EXPECT_EQ(inside(ana.ask("getContexts"), "contexts"), "<context id=\"1\">Work</context>");
    EXPECT_EQ(inside(ana.ask("getGoals"), "goals"), "");

    const std::string note
        = ana.add("addNote", {{"title", "N"}, {"text", "a\n\"b\"\t<"}, {"folder", folder}, {"private", "1"}});
    EXPECT_EQ(inside(ana.ask("addNote", {{"id", note}, {"title", "M"}}), "success"), "1");
    const std::string notes = ana.ask("getNotes");
    EXPECT_NE(notes.find("private=\"1\" folder=\"2\""), std::string::npos);
    EXPECT_NE(notes.find("title=\"M\" text=\"a&#10;&quot;b&quot;&#9;&lt;\">M</note>"), std::string::npos) << notes;
    EXPECT_EQ(inside(ana.ask("deleteNote", {{"id", note}}), "success"), "1");
    EXPECT_EQ(inside(ana.ask("getNotes"), "notes"), "");
}
