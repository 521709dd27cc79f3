// SPDX-License-Identifier: GPL-3.0-or-later
#include "service_client.h"

#include <ostream>

using namespace toodledo;
using support::at;

namespace {

/// The outcome of an operation as one word: "true", an id, a number of items ("2 items"), "nothing".
std::string word(bool done)
{
    return done ? "true" : "false";
}

std::string word(std::int64_t id)
{
    return std::to_string(id);
}

template <typename Item> std::string word(const std::optional<std::vector<Item>> &list)
{
    return list ? std::to_string(list->size()) + " items" : "nothing";
}

GtdTask aTask()
{
    GtdTask task;
    task.taskId = 7;
    task.title = "Call Ana";
    return task;
}

GtdFolder aFolder()
{
    GtdFolder folder;
    folder.folderId = 7;
    folder.title = "Home";
    return folder;
}

GtdContext aContext()
{
    return {.contextId = 7, .title = "Phone"};
}

GtdNote aNote()
{
    GtdNote note;
    note.uid = 7;
    note.title = "Plan";
    note.text = "First";
    note.folder = 3;
    return note;
}

const std::string taskValues = "title=Call%20Ana;tag=;folder=0;context=0;goal=0;priority=0;star=0;parent=0;"
                               "duedate=0000-00-00;completed=0;reminder=0;repeat=0;status=0;";

/// What the caller gets: the outcome, the code (0: the error is untouched) and the text.
struct Told {
    std::string outcome;
    int code = 0;
    std::string text = {};

    bool operator==(const Told &) const = default;
    friend std::ostream &operator<<(std::ostream &stream, const Told &told)
    {
        return stream << told.outcome << ", code " << told.code << " \"" << told.text << '"';
    }
};

/// One operation: what it sends, and what its caller is told in every case.
struct Case {
    const char *name;
    std::function<std::string(TDApi &, TDError *)> call;
    std::string wire; ///< method and parameters, with the key "thekey"
    std::string reply; ///< a true reply
    std::string outcome; ///< of that reply
    Told notAuthenticated;
    Told noConnection;
    Told malformed; ///< the reply is cut
    Told twoValues; ///< two `error` elements, the first saying "key did not validate"
    Told oneError; ///< one `error` element
};

const std::string prefix = "Cannot complete the sync with Toodledo with an item, not authenticated while ";
const std::string bad = "Toodledo returned a bad result while ";
const std::string hour
    = "Too many synchronizations in the past hour. Please wait an hour and try again.key did not validate";

// clang-format off
const std::vector<Case> cases{
    {"getTasks", [](TDApi &api, TDError *e) { return word(api.getTasks(e)); },
        "getTasks;key=thekey;", "<tasks><task><id>1</id></task><task/></tasks>", "2 items",
        {"nothing", 30, prefix + "getting tasks."}, {"nothing", 20},
        {"nothing", 30, bad + "getting tasks."}, {"0 items"}, {"0 items"}},
    {"getTasksAfterDate",
        [](TDApi &api, TDError *e) { return word(api.getTasksAfterDate(at("2009-06-01 14:05"), e)); },
        "getTasks;key=thekey;modafter=2009-06-01%2014%3A05%3A00;", "<tasks/>", "0 items",
        {"nothing", 30, prefix + "getting tasks after date."}, {"nothing", 20},
        {"nothing", 30, bad + "getting tasks after date."}, {"0 items"}, {"0 items"}},
    {"getDeleted", [](TDApi &api, TDError *e) { return word(api.getDeleted(e)); },
        "getDeleted;key=thekey;", "<deleted><task><id>9</id></task></deleted>", "1 items",
        {"nothing", 30, prefix + "getting deleted tasks."}, {"nothing", 20},
        {"nothing", 30, bad + "getting deleted tasks."}, {"0 items"}, {"0 items"}},
    {"addTask", [](TDApi &api, TDError *e) { return word(api.addTask(aTask(), e)); },
        "addTask;key=thekey;id=7;" + taskValues + "note=;", "<added>17</added>", "17",
        {"-1", 30, prefix + "adding task."}, {"-1", 20},
        {"-1", 30, bad + "adding task.  "}, {"-1", 30, bad + "adding task.  " + hour}, {"0"}},
    {"editTask", [](TDApi &api, TDError *e) { return word(api.editTask(aTask(), e)); },
        "editTask;key=thekey;id=7;" + taskValues + "length=0;note=;", "<success>1</success>", "true",
        {"false", 30, prefix + "editing task."}, {"false", 20},
        {"false", 30, bad + "editing task."}, {"false", 30, bad + "editing task." + hour}, {"true"}},
    {"deleteTask", [](TDApi &api, TDError *e) { return word(api.deleteTask(aTask(), e)); },
        "deleteTask;key=thekey;id=7;", "<success>1</success>", "true",
        {"false", 30, prefix + "deleting task."}, {"false", 20},
        {"false", 30, bad + "deleting task."}, {"false", 30, bad + "deleting task."}, {"true"}},
    {"getFolders", [](TDApi &api, TDError *e) { return word(api.getFolders(e)); },
        "getFolders;key=thekey;", "<folders><folder id='1'>A</folder></folders>", "1 items",
        {"nothing", 30, prefix + "getting folders."}, {"nothing", 20},
        {"nothing", 30, bad + "getting folders."}, {"nothing"}, {"nothing"}},
    {"addFolder", [](TDApi &api, TDError *e) { return word(api.addFolder(aFolder(), e)); },
        "addFolder;key=thekey;title=Home;", "<added>17</added>", "-1",
        {"-1", 30, prefix + "adding folder."}, {"-1", 30, bad + "adding folder."},
        {"-1"}, {"-1"}, {"-1"}},
    {"editFolder", [](TDApi &api, TDError *e) { return word(api.editFolder(aFolder(), e)); },
        "editFolder;key=thekey;id=7;title=Home;private=0;archived=0;", "<success>1</success>", "true",
        {"false", 30}, {"false", 30}, {"false", 410}, {"false", 410}, {"true"}},
    {"deleteFolder", [](TDApi &api, TDError *e) { return word(api.deleteFolder(aFolder(), e)); },
        "deleteFolder;key=thekey;id=7;", "<success>1</success>", "true",
        {"false", 30, prefix + "deleting folder."}, {"false", 30, bad + "deleting folder."},
        {"false", 310}, {"false", 310}, {"true"}},
    {"getContexts", [](TDApi &api, TDError *e) { return word(api.getContexts(e)); },
        "getContexts;key=thekey;", "<contexts><context id='1'>A</context></contexts>", "1 items",
        {"nothing", 30, prefix + "getting contexts."}, {"nothing", 20},
        {"nothing", 30, bad + "getting contexts."}, {"0 items"}, {"0 items"}},
    {"addContext", [](TDApi &api, TDError *e) { return word(api.addContext(aContext(), e)); },
        "addContext;key=thekey;title=Phone;", "<added>17</added>", "17",
        {"-1", 30, prefix + "adding context."}, {"-1", 30, bad + "adding context."},
        {"-1", 510}, {"-1", 510}, {"0"}},
    {"editContext", [](TDApi &api, TDError *e) { return word(api.editContext(aContext(), e)); },
        "editContext;key=thekey;id=7;title=Phone;", "<success>1</success>", "true",
        {"false", 30}, {"false", 30}, {"false", 530}, {"false", 530}, {"true"}},
    {"deleteContext", [](TDApi &api, TDError *e) { return word(api.deleteContext(aContext(), e)); },
        "deleteContext;key=thekey;id=7;", "<success>1</success>", "true",
        {"false", 30, prefix + "deleting context."}, {"false", 30, bad + "deleting context."},
        {"false", 520}, {"false", 520}, {"true"}},
    {"getNotes", [](TDApi &api, TDError *e) { return word(api.getNotes(e)); },
        "getNotes;key=thekey;", "<notes><note id='1'>A</note></notes>", "1 items",
        {"nothing", 30, prefix + "getting notes."}, {"nothing", 20},
        {"nothing", 30, bad + "getting notes."}, {"0 items"}, {"0 items"}},
    {"addNote", [](TDApi &api, TDError *e) { return word(api.addNote(aNote(), e)); },
        "addNote;key=thekey;title=Plan;text=First;folder=3;private=0;", "<added>17</added>", "17",
        {"-1", 30, prefix + "adding note."}, {"-1", 20},
        {"-1", 30, bad + "adding note."}, {"-1", 30, bad + "adding note."}, {"0"}},
    {"editNote", [](TDApi &api, TDError *e) { return word(api.editNote(aNote(), e)); },
        "addNote;key=thekey;id=7;title=Plan;text=First;folder=3;private=0;", "<success>1</success>", "true",
        {"false", 30, prefix + "editing note."}, {"false", 20},
        {"false", 30, bad + "editing note."}, {"false", 30, bad + "editing note."}, {"true"}},
    {"deleteNote", [](TDApi &api, TDError *e) { return word(api.deleteNote(aNote(), e)); },
        "deleteNote;key=thekey;id=7;", "<success>1</success>", "true",
        {"false", 30, prefix + "deleting note."}, {"false", 20},
        {"false", 30, bad + "deleting note."}, {"false", 30, bad + "deleting note."}, {"true"}},
};
// clang-format on

class Operations : public ServiceClient, public testing::WithParamInterface<Case>
{
protected:
    [[nodiscard]] static std::string method() { return GetParam().wire.substr(0, GetParam().wire.find(';')); }

    Told perform()
    {
        TDError error;
        const std::string outcome = GetParam().call(client(), &error);
        EXPECT_EQ(error.domain, error.code == 0 ? "" : toodledoApiErrorDomain);
        return {outcome, error.code, error.message};
    }
    Told performAfter(const std::string &body)
    {
        holdKey();
        answer(method(), body.c_str());
        return perform();
    }
};

} // namespace

TEST_P(Operations, sendOneRequestAndReturnWhatTheServiceSays)
{
    EXPECT_EQ(performAfter(GetParam().reply), (Told{GetParam().outcome}));
    EXPECT_EQ(requests(), std::vector{GetParam().wire});
    EXPECT_FALSE(client().lastReplyWasRefused());
}

TEST_P(Operations, F25_tellTheirCallerThatNobodyAnswers)
{
    holdKey();
    answer(method(), {.mode = ScriptedReply::Mode::CloseAtOnce});
    EXPECT_EQ(perform(), GetParam().noConnection);
    EXPECT_EQ(client().lastReply().failure->domain, httpErrorDomain);
}

TEST_P(Operations, sendNothingWithoutAKey)
{
    answer("getToken", "<html/>");
    EXPECT_EQ(perform(), GetParam().notAuthenticated);
    for (const std::string &request : requests())
        EXPECT_EQ(request.substr(0, 9), "getToken;");
}

TEST_P(Operations, F32_countACutReplyAsABadResult)
{
    const std::string &reply = GetParam().reply;
    EXPECT_EQ(performAfter(reply.substr(0, reply.size() - 1)), GetParam().malformed);
    EXPECT_TRUE(client().lastReplyWasRefused());
}

TEST_P(Operations, F39_sayWhatTheServiceRefusedAndDropARefusedKey)
{
    for (const std::string text : {"key did not validate", "no such item"}) {
        const bool isKeyRefused = text == "key did not validate";
        const std::string error = "<error>" + text + "</error>";
        EXPECT_EQ(performAfter(isKeyRefused ? "<r>" + error + "<error>more</error></r>" : error),
            isKeyRefused ? GetParam().twoValues : GetParam().oneError);
        EXPECT_TRUE(client().lastReplyWasRefused());
        EXPECT_EQ(client().lastReply().errorText, text);
        EXPECT_EQ(settings.text("toodledoKey"), isKeyRefused ? "" : "thekey");
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, Operations, testing::ValuesIn(cases), [](const auto &row) { return std::string(row.param.name); });

namespace {

class Items : public ServiceClient
{
protected:
    Items()
    {
        holdKey();
        answer("addTask", "<added>17</added>");
        for (const char *method : {"editTask", "deleteTask", "editFolder", "deleteFolder", "editContext"})
            answer(method, "<success>1</success>");
    }

    template <typename Call> void expectUnusable(const char *failure, Call call)
    {
        TDError error;
        const std::size_t seen = requests().size();
        EXPECT_EQ(word(call(&error)), failure);
        EXPECT_EQ(error.code, 40);
        EXPECT_EQ(error.message, "");
        EXPECT_EQ(requests().size(), seen);
    }

    /// The value that the last request had for `name`; nothing when it was not sent.
    [[nodiscard]] std::optional<std::string> sent(const std::string &name) const
    {
        const std::string request = lastRequest();
        const std::size_t begin = request.find(';' + name + '=');
        if (begin == std::string::npos)
            return std::nullopt;
        const std::size_t value = begin + name.size() + 2;
        return request.substr(value, request.find(';', value) - value);
    }
};

template <typename Record, typename Field, typename Value> Record with(Record record, Field field, Value value)
{
    record.*field = value;
    return record;
}

} // namespace

TEST_F(Items, F37_thatCannotBeSentAreRefusedBeforeAnyRequest)
{
    TDApi &api = client();
    for (const std::int64_t id : {std::int64_t{-1}, std::int64_t{1} << 31, (std::int64_t{1} << 32) + 7, INT64_MIN}) {
        expectUnusable("false", [&](TDError *e) { return api.editTask(with(aTask(), &GtdTask::taskId, id), e); });
        expectUnusable("false", [&](TDError *e) { return api.deleteTask(with(aTask(), &GtdTask::taskId, id), e); });
        const GtdFolder folder = with(aFolder(), &GtdFolder::folderId, id);
        expectUnusable("false", [&](TDError *e) { return api.editFolder(folder, e); });
        expectUnusable("false", [&](TDError *e) { return api.deleteFolder(folder, e); });
        const GtdContext context = with(aContext(), &GtdContext::contextId, id);
        expectUnusable("false", [&](TDError *e) { return api.editContext(context, e); });
        expectUnusable("false", [&](TDError *e) { return api.deleteContext(context, e); });
        expectUnusable("false", [&](TDError *e) { return api.deleteNote(with(aNote(), &GtdNote::uid, id), e); });
    }
    const std::optional<std::string> none;
    const GtdTask task = with(aTask(), &GtdTask::title, none);
    expectUnusable("false", [&](TDError *e) { return api.editTask(task, e); });
    expectUnusable("false", [&](TDError *e) { return api.deleteTask(task, e); });
    const GtdFolder folder = with(aFolder(), &GtdFolder::title, none);
    expectUnusable("-1", [&](TDError *e) { return api.addFolder(folder, e); });
    expectUnusable("false", [&](TDError *e) { return api.editFolder(folder, e); });
    const GtdContext context = with(aContext(), &GtdContext::title, none);
    expectUnusable("-1", [&](TDError *e) { return api.addContext(context, e); });
    expectUnusable("false", [&](TDError *e) { return api.editContext(context, e); });
    for (const GtdNote &note : {with(aNote(), &GtdNote::uid, -1), with(aNote(), &GtdNote::folder, -1),
             with(aNote(), &GtdNote::text, none), with(aNote(), &GtdNote::title, none)}) {
        expectUnusable("-1", [&](TDError *e) { return api.addNote(note, e); });
        expectUnusable("false", [&](TDError *e) { return api.editNote(note, e); });
        expectUnusable("false", [&](TDError *e) { return api.deleteNote(note, e); }); // even to be deleted
    }
}

TEST_F(Items, withTheIdZeroOrAddedWithoutATitleAreSent)
{
    EXPECT_TRUE(client().editTask(with(aTask(), &GtdTask::taskId, 0)));
    EXPECT_EQ(sent("id"), "0");
    EXPECT_TRUE(client().deleteFolder(with(aFolder(), &GtdFolder::title, std::nullopt)));
    TDError error;
    EXPECT_EQ(client().addTask(with(aTask(), &GtdTask::title, std::nullopt), &error), 17);
    EXPECT_EQ(error.code, 40);
    EXPECT_EQ(sent("title"), "");
}

TEST_F(Items, carryEveryFieldOfATask)
{
    GtdTask task = aTask();
    task.tags = {{" home", "a;b"}};
    task.folder = 2;
    task.context = 3;
    task.goal = 4;
    task.priority = -1;
    task.star = true;
    task.parentId = 5;
    task.dueDate = at("2026-12-01 21:05");
    task.hasDueTime = true;
    task.startDate = at("2026-11-30");
    task.completed = true;
    task.reminder = 60;
    task.repeat = 9;
    task.status = 10;
    task.length = 20;
    task.repeatAdvanced = "Every 2 weeks";
    task.note = "1 & 2";
    EXPECT_TRUE(client().editTask(task));
    EXPECT_EQ(lastRequest(),
        "editTask;key=thekey;id=7;title=Call%20Ana;tag=%20home%2Ca%3Bb;folder=2;context=3;goal=4;priority=-1;star=1;"
        "parent=5;duedate=2026-12-01;duetime=09%3A05%20pm;startdate=2026-11-30;starttime=12%3A00%20am;completed=1;"
        "reminder=60;repeat=9;status=10;length=20;rep_advanced=Every%202%20weeks;note=1%20%26%202;");
    EXPECT_EQ(client().addTask(task), 17);
    EXPECT_EQ(sent("length"), std::nullopt);
    EXPECT_EQ(sent("id"), "7");
}

TEST_F(Items, sendADueTimeOnlyWithADueDate)
{
    GtdTask task = aTask();
    task.hasDueTime = true;
    EXPECT_TRUE(client().editTask(task));
    EXPECT_EQ(sent("duedate"), "0000-00-00");
    EXPECT_EQ(sent("duetime"), std::nullopt);
    EXPECT_EQ(sent("starttime"), std::nullopt);
    task.hasDueTime = false;
    task.dueDate = at("2026-12-01 21:05");
    task.startDate = at("2026-12-01 12:30");
    EXPECT_TRUE(client().editTask(task));
    EXPECT_EQ(sent("duedate"), "2026-12-01");
    EXPECT_EQ(sent("duetime"), "0");
    EXPECT_EQ(sent("starttime"), "12%3A30%20pm");
}

TEST_F(Items, F46_keepFormatsAndQuotesAsText)
{
    const std::string title = "%@ %n %s '; DROP TABLE Tasks;-- \"";
    EXPECT_TRUE(client().editTask(with(aTask(), &GtdTask::title, title)));
    EXPECT_EQ(sent("title"), "%25%40%20%25n%20%25s%20%27%3B%20DROP%20TABLE%20Tasks%3B--%20%22");
}

TEST_F(Items, keepTheFlagsOfAFolder)
{
    GtdFolder folder = aFolder();
    folder.archived = true;
    client().addFolder(folder);
    EXPECT_EQ(lastRequest(), "addFolder;key=thekey;title=Home;archived=1;");
    folder.isPrivate = true;
    client().addFolder(folder);
    EXPECT_EQ(lastRequest(), "addFolder;key=thekey;title=Home;private=1;archived=1;");
    EXPECT_TRUE(client().editFolder(folder));
    EXPECT_EQ(lastRequest(), "editFolder;key=thekey;id=7;title=Home;private=1;archived=1;");
}

TEST_F(Items, ofTheNotesAreAddedWithTheKeyThatIsHeldAlone)
{
    answer("getToken", "<token>td1</token>");
    forgetKey();
    TDError error;
    EXPECT_EQ(client().addNote(aNote(), &error), -1);
    EXPECT_EQ(error.code, 30);
    EXPECT_TRUE(requests().empty()) << "no token was to be asked for";
    EXPECT_TRUE(client().getContexts(&error)) << "others ask for one";
}
