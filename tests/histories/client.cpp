// SPDX-License-Identifier: GPL-3.0-or-later
#include "histories/client.h"

#include "model/settings_defaults.h"
#include "objectstore/object_context.h"
#include "support/store_picture.h"

#include <algorithm>
#include <stdexcept>

namespace histories {

using model::ManagedObject;
using model::Tasks;
using objectstore::Value;

namespace {

/// The program dies at a request: everything above unwinds, and nothing that was not saved remains.
class Killed : public std::runtime_error
{
public:
    Killed() : std::runtime_error("killed") { }
};

std::string methodOf(std::string_view target)
{
    const std::size_t from = target.find("method=") + 7;
    return std::string(target.substr(from, target.find(';', from) - from));
}

bool isLogin(const std::string &method)
{
    return method == "getUserid" || method == "getToken" || method == "getServerInfo" || method == "getAccountInfo";
}

/// Carries requests to the service in this process, one of them with a fault.
class FaultyTransport final : public toodledo::HttpTransport
{
public:
    FaultyTransport(const Answer &answer, const Step &step, std::function<void()> meddle,
        std::map<std::string, std::string> &lastLists)
        : m_answer(answer), m_step(step), m_meddle(std::move(meddle)), m_lastLists(lastLists)
    { }

    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override
    {
        const std::string_view target = std::string_view(request.url).substr(request.url.find("/api.php"));
        const std::string method = methodOf(target);
        const int number = isLogin(method) ? -1 : m_number++;
        if (number == m_step.meddleAt && m_meddle)
            m_meddle();
        const Fault fault = number == m_step.faultAt ? m_step.fault : Fault::None;
        if (fault == Fault::KillBefore)
            throw Killed();
        if (fault == Fault::Refuse || m_isCutOff)
            return failure();
        if (fault == Fault::ErrorReply)
            return deliver("<error>key did not validate</error>", body);
        if (fault == Fault::HtmlReply)
            return deliver("<html><body>Please accept the terms</body></html>", body);
        const std::string old = m_lastLists[method];
        const std::string reply = m_answer(target, request.body);
        if (method.starts_with("get") && !isLogin(method))
            m_lastLists[method] = reply;
        if (fault == Fault::KillAfter)
            throw Killed();
        if (fault == Fault::LoseReply) {
            m_isCutOff = m_step.cutsOff();
            return failure();
        }
        return deliver(fault == Fault::StaleList && !old.empty() ? old : reply, body);
    }

private:
    static foundation::Result<toodledo::HttpReply> failure()
    {
        return foundation::Failure(foundation::Error{
            toodledo::httpErrorDomain, static_cast<int>(toodledo::HttpErrorCode::Connection), {}, "no connection"});
    }
    static foundation::Result<toodledo::HttpReply> deliver(const std::string &reply, toodledo::BodySink &body)
    {
        body.receive(reply);
        return toodledo::HttpReply{200, "text/xml"};
    }

    const Answer &m_answer;
    const Step &m_step;
    std::function<void()> m_meddle;
    std::map<std::string, std::string> &m_lastLists;
    int m_number = 0;
    bool m_isCutOff = false;
};

std::string firstWord(std::string_view text)
{
    return std::string(text.substr(0, text.find(' ')));
}

/// A new store with its default records, made once: most of a history's time went into making three or four of them.
class Prototype
{
public:
    Prototype()
    {
        support::TestClock clock({1795510800});
        support::RecordingSyncHost host;
        if (const auto opened = model::TaskStore::open(m_folder.path(), clock, host); !opened)
            throw std::runtime_error(opened.error().message + opened.error().detail);
    }
    [[nodiscard]] std::filesystem::path file() const { return m_folder.path() / model::TaskStore::fileName; }

private:
    support::TemporaryFolder m_folder;
};

} // namespace

/// Does at once what the window's main thread would do soon.
class Client::Host final : public support::RecordingSyncHost
{
public:
    explicit Host(Client &client) : m_client(client) { answer = true; }
    void unregisterForChangeNotifications() override { m_client.m_tracking->unregisterForChangeNotifications(); }
    void registerForChangeNotifications() override { m_client.m_tracking->registerForChangeNotifications(); }
    void saveAction() override { m_client.save(); }
    void presentError(const foundation::Error &error) override { m_client.m_said.push_back(error.message); }

private:
    Client &m_client;
};

Client::Client(Answer answer, double start, std::int32_t skew, bool guards)
    : m_answer(std::move(answer))
    , m_skew(skew)
    , m_clock({start + skew})
    , m_settings(m_settingsFile, model::settingsDefaults())
    , m_host(std::make_unique<Host>(*this))
{
    m_settings.set("ToodledoHost", std::string("127.0.0.1"));
    m_settings.set("ToodleDoUsername", std::string("ana@example.org"));
    m_settings.set("ToodleDoPassword", std::string("secret word"));
    m_settings.set("SyncGuards", guards);
    static const Prototype prototype;
    std::filesystem::copy_file(prototype.file(), m_folder.path() / model::TaskStore::fileName);
    open();
}

Client::~Client() = default;

void Client::open()
{
    auto opened = model::TaskStore::open(m_folder.path(), m_clock, *m_host);
    if (!opened)
        throw std::runtime_error(opened.error().message + opened.error().detail);
    m_store = std::move(*opened);
    m_tracking = std::make_unique<model::EditTracking>(m_store->managedObjectContext(), m_clock);
    m_tracking->registerForChangeNotifications();
}

void Client::restart()
{
    m_tracking.reset();
    m_store.reset();
    m_host->merges.clear();
    open();
}

void Client::save()
{
    if (const auto saved = m_store->managedObjectContext().save(); !saved)
        throw std::runtime_error(saved.error().message + saved.error().detail);
}

/// A turn of the main thread: what the run has saved so far is merged.
void Client::turn()
{
    for (const auto &changes : std::exchange(m_host->merges, {}))
        m_store->managedObjectContext().mergeChanges(changes);
}

std::vector<ManagedObject *> Client::all(const char *entity)
{
    return support::allOf(m_store->managedObjectContext(), entity);
}

/// A record that the user can see and change: the defaults stay as they are.
ManagedObject *Client::pick(const char *entity, std::uint16_t target)
{
    std::vector<ManagedObject *> candidates;
    for (ManagedObject *object : all(entity)) {
        const std::string_view title = object->text("title");
        if (title != "Inbox" && title != "None" && !object->boolean("markedForDeletion"))
            candidates.push_back(object);
    }
    return candidates.empty() ? nullptr : candidates[target % candidates.size()];
}

bool Client::edit(const Step &step, const std::string &name)
{
    auto &moc = m_store->managedObjectContext();
    const auto retitle = [&](const char *entity) {
        ManagedObject *object = pick(entity, step.target);
        if (object)
            object->setValue("title", firstWord(object->text("title")) + " " + std::to_string(step.value));
        return object != nullptr;
    };
    const auto mark = [&](const char *entity) {
        ManagedObject *object = pick(entity, step.target);
        if (object)
            object->setValue("markedForDeletion", true);
        return object != nullptr;
    };
    bool done = true;
    switch (step.deed) {
    case Deed::AddTask:
        moc.insert("Tasks").setValue("title", "t" + name + " " + std::to_string(step.value));
        break;
    case Deed::AddFolder:
        moc.insert("Folders").setValue("title", "f" + name + " new");
        break;
    case Deed::AddContext:
        moc.insert("Contexts").setValue("title", "c" + name + " new");
        break;
    case Deed::RenameFolder:
        done = retitle("Folders");
        break;
    case Deed::RenameContext:
        done = retitle("Contexts");
        break;
    case Deed::DeleteFolder:
        done = mark("Folders");
        break;
    case Deed::DeleteContext:
        done = mark("Contexts");
        break;
    case Deed::EmptyTrash:
        for (ManagedObject *task : all("Tasks"))
            if (task->boolean("deleteOnSync"))
                task->setValue("markedDeleted", true);
        break;
    default: {
        std::vector<ManagedObject *> tasks = all("Tasks");
        std::erase_if(tasks, [&step](const ManagedObject *task) {
            return task->boolean("deleteOnSync") != (step.deed == Deed::Undelete) || task->boolean("markedDeleted");
        });
        done = !tasks.empty();
        if (done)
            editTask(step, *model::as<Tasks>(tasks[step.target % tasks.size()]), name);
    }
    }
    save();
    return done;
}

void Client::editTask(const Step &step, Tasks &task, const std::string &name)
{
    switch (step.deed) {
    case Deed::Retitle:
        task.setTitle(firstWord(task.title()) + " " + name);
        break;
    case Deed::Annotate:
        task.setNotes(step.value % 5 == 0 ? std::string() : "note " + name + "; a=b & 50 %\nsecond line");
        break;
    case Deed::Star:
        task.setStar(!task.star());
        break;
    case Deed::Prioritise: {

        model::DataUtilities(m_store->managedObjectContext(), *m_host).addTaskToPriority(step.value % 5 - 1, &task);
        break;
    }
    case Deed::SetDue:
        if (step.value % 4 == 0)
            task.setDueDate(std::nullopt);
        else
            task.setDueDate(foundation::startOfLocalDay({m_clock.now().seconds + 86400.0 * (step.value % 300)}));
        break;
    case Deed::Complete:
        task.setComplete(!task.complete());
        task.setCompletedDate(task.complete() ? std::optional(m_clock.now()) : std::nullopt);
        break;
    case Deed::Tag: {
        ManagedObject *tag = nullptr;
        const std::string title = "tag " + std::to_string(step.value % 4);
        for (ManagedObject *candidate : all("Tags"))
            if (candidate->text("title") == title)
                tag = candidate;
        if (!tag) {
            tag = &m_store->managedObjectContext().insert("Tags");
            tag->setValue("title", title);
        }
        const auto &tags = task.tags();
        if (std::ranges::find(tags, tag) == tags.end())
            task.addObject("tags", *tag);
        else
            task.removeObject("tags", *tag);
        break;
    }
    case Deed::MoveToFolder:
        if (ManagedObject *folder = pick("Folders", step.value))
            task.setRelated("folders", folder);
        break;
    case Deed::PutInContext:
        if (ManagedObject *context = pick("Contexts", step.value))
            task.setRelated("contexts", context);
        break;
    case Deed::Trash:
        task.setDeleteOnSync(true);
        break;
    case Deed::Undelete:
        task.setDeleteOnSync(false);
        break;
    default:
        break;
    }
}

void Client::sync(const Step &step, const std::function<void()> &meddle)
{
    const auto duringTheRun = [&] {
        turn();
        meddle();
    };
    syncing::ToodledoSync run({m_store->store(), m_settings, m_clock, *m_host, [&] {
                                   return std::make_unique<FaultyTransport>(m_answer, step,
                                       meddle ? std::function<void()>(duringTheRun) : nullptr, m_lastLists);
                               }});
    if (const auto started = run.startSyncTasks(); !started)
        return; // one is under way already
    run.wait();
    if (step.fault == Fault::KillBefore || step.fault == Fault::KillAfter)
        restart();
    else
        turn();
}

std::set<std::string> Client::trashed()
{
    std::set<std::string> found;
    for (const ManagedObject *task : all("Tasks"))
        if (task->boolean("deleteOnSync"))
            found.insert(firstWord(task->text("title")));
    return found;
}

std::multiset<std::string> Client::uids()
{
    std::multiset<std::string> found;
    for (const ManagedObject *task : all("Tasks"))
        if (!task->boolean("deleteOnSync"))
            found.insert(firstWord(task->text("title")));
    return found;
}

std::multiset<std::string> Client::contents()
{
    return support::pictureOf(m_store->managedObjectContext());
}

} // namespace histories
