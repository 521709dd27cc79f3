// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "foundation/error.h"
#include "foundation/settings.h"
#include "toodledo/gtd_context.h"
#include "toodledo/gtd_folder.h"
#include "toodledo/gtd_note.h"
#include "toodledo/gtd_task.h"
#include "toodledo/http_transport.h"
#include "toodledo/known_tasks.h"
#include "toodledo/td_key.h"
#include "toodledo/td_parser.h"
#include "toodledo/td_request.h"
#include "toodledo/td_tasks_parser.h"
#include "toodledo/td_user_info_parser.h"

#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace toodledo {

struct Operation;
struct Complaint;

inline constexpr const char *toodledoApiErrorDomain = "ToodledoApiErrorDomain";

/// What a client works with; all of it must outlive the client.
struct TDApiEnvironment {
    foundation::Settings &settings;
    HttpTransport &transport;
    const foundation::Clock &clock;
    ContextLookup contextByTitle = {}; ///< gives the tasks of a reply their contexts
    std::stop_token stop = {}; ///< cancels the request under way and fails every later one
};

/// What the last reply was, beside the result that was made of it.
struct TDReply {
    /// It held an `error` element, was no XML, or its outermost element is not one that answers the method. Some
    /// operations succeed on such a reply ("no tasks", "done"); whoever acts on their results must ask this first.
    bool wasRefused = false;
    std::string errorText; ///< the first `error` text
    std::optional<foundation::Error> failure; ///< why there was no reply, or why it could not be read
};

/// A task to add, and what the service shall know the addition by when it is sent again, see `TDApi::addTask`.
struct MarkedTask {
    const GtdTask *task;
    std::string mark;
};

/// What came of adding several tasks at once.
struct AddedTasks {
    std::size_t sent = 0; ///< the first so many
    std::vector<std::int64_t> ids = {}; ///< theirs, -1 for one that was refused; empty where no reply tells them
};

/// The client of the to-do service: one blocking operation per method, for one synchronisation run and one thread.
///
/// An operation that fails returns its failure value (nothing, false or -1) and, where its caller passed an error,
/// fills that; nothing is retried and nothing throws. Domain and codes are those of `ToodledoApiErrorDomain`.
class TDApi
{
public:
    /// Logs in: asks for the user id, the key, the server's clock and the account. Nothing, and code 30, 110 or 120,
    /// when there is no user of that name and password.
    [[nodiscard]] static std::unique_ptr<TDApi> initWithUsername(
        std::string_view username, std::string_view password, TDApiEnvironment environment, TDError *error = nullptr);

    /// A client that has not logged in, such as one that creates an account.
    explicit TDApi(TDApiEnvironment environment);
    TDApi(const TDApi &) = delete;
    TDApi &operator=(const TDApi &) = delete;

    [[nodiscard]] static std::string_view identifier() { return "syncservice.toodledo"; }

    // Account and key
    [[nodiscard]] std::optional<std::string> getUserIdForUsername(std::string_view username, std::string_view password);
    void setPasswordHashWithPassword(std::string_view password);
    /// The authentication key: the stored one while it is fresh, else a new one; nothing when none can be had.
    [[nodiscard]] std::optional<std::string> key();
    /// Whether a key is held that was obtained no later than now. Makes no request.
    [[nodiscard]] bool isAuthenticated() const;
    bool loadServerInfos();
    bool loadAccountInfo();
    /// `date` moved by the account's time zone, which counts half hours.
    [[nodiscard]] foundation::Instant serverDateAsLocal(foundation::Instant date) const;
    /// The server's texts under `lastTaskAddEdit`, `lastTaskDelete`, `lastFolderEdit` and `lastContextEdit`.
    [[nodiscard]] std::optional<AccountInfo> getLastModificationsDates(TDError *error = nullptr);
    /// The id of a new user, or nothing.
    [[nodiscard]] std::optional<std::string> createAccount(
        std::string_view email, std::string_view password, TDError *error = nullptr);

    // Tasks
    [[nodiscard]] std::optional<std::vector<GtdTask>> getTasks(TDError *error = nullptr);
    /// The same, but the tasks in `known` are only named, and the others come with their marks.
    [[nodiscard]] std::optional<TaskList> getTasks(const KnownTasks &known, TDError *error = nullptr);
    [[nodiscard]] std::optional<std::vector<GtdTask>> getTasksAfterDate(
        foundation::Instant date, TDError *error = nullptr);
    /// The ids of the tasks that were deleted; 0 stands for one that could not be read.
    [[nodiscard]] std::optional<std::vector<std::int64_t>> getDeleted(TDError *error = nullptr);
    /// The id of the new task, or -1. A task without a title is code 40, and is sent all the same.
    /// A service that knows marks answers an add that is sent again with the same mark by the id of the first, while it
    /// has that task; to others the mark is not sent.
    std::int64_t addTask(const GtdTask &task, TDError *error = nullptr, std::string_view mark = {});
    /// How many calls the service takes in one request; one where it does not say, and once it gave no true answer.
    [[nodiscard]] std::size_t mostCalls() const;
    /// Adds the first of `tasks` by one request, as many as fit; nothing is sent where fewer than two do, where the
    /// service takes no more than one call in a request, or once such a request got no true answer.
    [[nodiscard]] AddedTasks addTasks(std::span<const MarkedTask> tasks, TDError *error = nullptr);
    bool editTask(const GtdTask &task, TDError *error = nullptr);
    bool deleteTask(const GtdTask &task, TDError *error = nullptr);

    // Folders
    [[nodiscard]] std::optional<std::vector<GtdFolder>> getFolders(TDError *error = nullptr);
    /// Always -1: list the folders to learn the new id. Only `error` tells a failure.
    std::int64_t addFolder(const GtdFolder &folder, TDError *error = nullptr);
    bool editFolder(const GtdFolder &folder, TDError *error = nullptr);
    bool deleteFolder(const GtdFolder &folder, TDError *error = nullptr);

    // Contexts
    [[nodiscard]] std::optional<std::vector<GtdContext>> getContexts(TDError *error = nullptr);
    /// The id of the new context, or -1.
    std::int64_t addContext(const GtdContext &context, TDError *error = nullptr);
    bool editContext(const GtdContext &context, TDError *error = nullptr);
    bool deleteContext(const GtdContext &context, TDError *error = nullptr);

    // Notes; to add and to edit one needs a key that is already held, whereas all else asks for one
    [[nodiscard]] std::optional<std::vector<GtdNote>> getNotes(TDError *error = nullptr);
    /// The id of the new note, or -1.
    std::int64_t addNote(const GtdNote &note, TDError *error = nullptr);
    bool editNote(const GtdNote &note, TDError *error = nullptr);
    bool deleteNote(const GtdNote &note, TDError *error = nullptr);

    // What came of the last request
    [[nodiscard]] const TDReply &lastReply() const { return m_lastReply; }
    [[nodiscard]] bool lastReplyWasRefused() const { return m_lastReply.wasRefused; }
    /// Whether the "user id" of the login was in truth a refusal.
    [[nodiscard]] bool loginWasRefused() const { return m_loginWasRefused; }

    // Requests; `urlText` is the host, the path and the method, without a scheme
    [[nodiscard]] HttpRequest requestForURLString(std::string_view urlText, const Parameters &parameters) const;
    [[nodiscard]] HttpRequest authenticatedRequestForURLString(
        std::string_view urlText, const Parameters &parameters = {});

    // Fields
    [[nodiscard]] const std::string &userId() const { return m_userId; }
    void setUserId(std::string userId) { m_userId = std::move(userId); }
    [[nodiscard]] const std::optional<std::string> &currentKey() const { return m_key.key; }
    void setKey(std::optional<std::string> key) { m_key.key = std::move(key); }
    /// When the key was obtained; not when it ends.
    [[nodiscard]] const std::optional<foundation::Instant> &keyValidity() const { return m_key.obtained; }
    void setKeyValidity(std::optional<foundation::Instant> obtained) { m_key.obtained = obtained; }
    [[nodiscard]] const std::string &passwordHash() const { return m_passwordHash; }
    void setPasswordHash(std::string hash) { m_passwordHash = std::move(hash); }
    /// Seconds that the server's clock is ahead of this computer's.
    [[nodiscard]] double servertimeDifference() const { return m_servertimeDifference; }
    void setServertimeDifference(double seconds) { m_servertimeDifference = seconds; }
    [[nodiscard]] const AccountInfo &accountInfo() const { return m_accountInfo; }
    void setAccountInfo(AccountInfo info) { m_accountInfo = std::move(info); }

private:
    [[nodiscard]] std::string urlText(std::string_view method) const;
    [[nodiscard]] std::string accountValue(std::string_view name) const;
    void warnOfPlainLogin();

    /// Sends and parses; true when a whole reply arrived, whether or not it was well-formed.
    bool send(const HttpRequest &request, TDParser &parser, std::string_view root = {});
    bool perform(const Operation &operation, const Parameters &parameters, TDParser &parser, TDError *error,
        std::string body = {});
    [[nodiscard]] std::optional<std::string> performForValue(
        const Operation &operation, std::string_view awaited, const Parameters &parameters, TDError *error);
    template <typename Parser>
    [[nodiscard]] auto performForList(
        const Operation &operation, const Parameters &parameters, Parser &&parser, TDError *error);
    [[nodiscard]] Parameters additionParameters(const GtdTask &task, std::string_view mark) const;
    void complain(const Complaint &complaint, TDError *error, std::span<const std::string> texts = {}) const;

    TDApiEnvironment m_environment;
    std::string m_host;
    double m_timeout; ///< seconds
    bool m_escapeValues;
    StoredKey m_storedKey;

    std::string m_userId;
    StoredKey::Entry m_key;
    std::string m_passwordHash;
    double m_servertimeDifference = 0;
    AccountInfo m_accountInfo;

    TDReply m_lastReply;
    bool m_loginWasRefused = false;
    bool m_warnedOfPlainLogin = false;
    bool m_sendsOneByOne = false; ///< although the service takes several calls in a request
};

} // namespace toodledo
