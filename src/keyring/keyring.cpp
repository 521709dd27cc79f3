// SPDX-License-Identifier: GPL-3.0-or-later
#include "keyring/keyring.h"

#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <libsecret/secret.h>
#include <memory>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace keyring {

using foundation::Error;
using foundation::Failure;
using foundation::Result;
using foundation::SecretStoreErrorCode;
using foundation::Waiting;

namespace {

constexpr const char *notRead = "The password could not be read from the keyring of your desktop.";
constexpr const char *notKept = "The password could not be kept in the keyring of your desktop.";
constexpr const char *notForgotten = "The password could not be taken out of the keyring of your desktop.";

constexpr const char *settingAttribute = "setting";
constexpr const char *fileAttribute = "settings-file";

const SecretSchema *schema()
{
    static const SecretSchema described{"org.quelvin.Quelvin.Secret", SECRET_SCHEMA_NONE,
        {{settingAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING}, {fileAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING}}, 0,
        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    return &described;
}

template <auto release> struct Release {
    template <class Held> void operator()(Held *held) const { release(held); }
};
using Attributes = std::unique_ptr<GHashTable, Release<&g_hash_table_unref>>;
using Value = std::unique_ptr<SecretValue, Release<[](SecretValue *held) { secret_value_unref(held); }>>;
using Found = std::unique_ptr<GList, Release<[](GList *held) { g_list_free_full(held, g_object_unref); }>>;
using Cancellation = std::shared_ptr<GCancellable>;

/// What names one secret.
struct Place {
    std::string name;
    std::string settingsFile;

    [[nodiscard]] Attributes attributes() const
    {
        return Attributes(secret_attributes_build(
            schema(), settingAttribute, name.c_str(), fileAttribute, settingsFile.c_str(), nullptr));
    }
};

Failure failure(SecretStoreErrorCode code, const char *sentence, std::string detail = {})
{
    return Failure(Error{foundation::secretStoreErrorDomain, static_cast<int>(code), sentence, std::move(detail)});
}

/// Whether nobody can be asked: no service, no bus, or a locked keyring on a desktop that shows no prompt.
bool tellsOfNoStore(const GError *error)
{
    return g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN)
        || g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER)
        || g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SPAWN_EXEC_FAILED)
        || g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SPAWN_CHILD_EXITED)
        || g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED)
        || (error->domain == G_IO_ERROR && error->code != G_IO_ERROR_CANCELLED && error->code != G_IO_ERROR_TIMED_OUT
            && error->code != G_IO_ERROR_DBUS_ERROR);
}

Failure failure(const char *sentence, GError *reported)
{
    const std::unique_ptr<GError, Release<&g_error_free>> error(reported);
    return failure(tellsOfNoStore(reported) ? SecretStoreErrorCode::NoStore : SecretStoreErrorCode::Refused, sentence,
        error->message);
}

/// Without a bus the library would start one of its own.
bool hasSessionBus()
{
    if (std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return true;
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime && ::access((std::string(runtime) + "/bus").c_str(), F_OK) == 0;
}

// A prompt that its user closes is no error to the library, so each call looks at what came of it.

Result<std::optional<std::string>> lookUp(const Place &place, GCancellable *cancellation)
{
    GError *error = nullptr;
    const Attributes attributes = place.attributes();
    const Value value(secret_password_lookupv_binary_sync(schema(), attributes.get(), cancellation, &error));
    if (error)
        return failure(notRead, error);
    if (value) {
        gsize size = 0;
        const char *bytes = secret_value_get(value.get(), &size);
        return std::string(bytes, size);
    }
    const Found locked(
        secret_password_searchv_sync(schema(), attributes.get(), SECRET_SEARCH_NONE, cancellation, &error));
    if (error)
        return failure(notRead, error);
    if (locked)
        return failure(SecretStoreErrorCode::Refused, notRead, "it is locked");
    return std::nullopt;
}

Result<void> store(const Place &place, const std::string &secret, GCancellable *cancellation)
{
    GError *error = nullptr;
    const Attributes attributes = place.attributes();
    const Value value(secret_value_new(secret.data(), static_cast<gssize>(secret.size()), "text/plain"));
    const std::string label = "Quelvin: " + place.name;
    secret_password_storev_binary_sync(
        schema(), attributes.get(), SECRET_COLLECTION_DEFAULT, label.c_str(), value.get(), cancellation, &error);
    if (error)
        return failure(notKept, error);
    const auto kept = lookUp(place, cancellation);
    if (kept && *kept == secret)
        return {};
    return failure(SecretStoreErrorCode::Refused, notKept, kept ? "it was not taken" : kept.error().detail);
}

Result<void> forget(const Place &place, GCancellable *cancellation)
{
    GError *error = nullptr;
    const Attributes attributes = place.attributes();
    secret_password_clearv_sync(schema(), attributes.get(), cancellation, &error);
    if (error)
        return failure(notForgotten, error);
    const Found left(
        secret_password_searchv_sync(schema(), attributes.get(), SECRET_SEARCH_NONE, cancellation, &error));
    if (error)
        return failure(notForgotten, error);
    return left ? failure(SecretStoreErrorCode::Refused, notForgotten, "it is still there") : Result<void>();
}

/// A call under way, which outlives the caller that stops waiting for it.
template <class Outcome> struct Call {
    std::mutex mutex;
    std::condition_variable_any ended;
    std::optional<Outcome> outcome;
    Cancellation cancellation{g_cancellable_new(), &g_object_unref};
};

template <class Outcome>
Outcome await(const char *sentence, const Waiting &waiting, std::function<Outcome(GCancellable *)> work)
{
    if (!hasSessionBus())
        return failure(SecretStoreErrorCode::NoStore, sentence, "there is no session bus");
    const auto call = std::make_shared<Call<Outcome>>();
    std::thread([call, work = std::move(work)] {
        secret_service_disconnect(); // or a keyring that was started anew would never be found
        Outcome outcome = work(call->cancellation.get());
        const std::scoped_lock lock(call->mutex);
        call->outcome = std::move(outcome);
        call->ended.notify_all();
    }).detach();
    std::unique_lock lock(call->mutex);
    call->ended.wait_for(lock, waiting.stop, waiting.patience, [&call] { return call->outcome.has_value(); });
    if (call->outcome)
        return std::move(*call->outcome);
    lock.unlock();
    g_cancellable_cancel(call->cancellation.get());
    return failure(SecretStoreErrorCode::Refused, sentence, "nobody waits any longer");
}

} // namespace

Keyring::Keyring(const std::filesystem::path &settingsFile)
{
    std::error_code error;
    const auto known = std::filesystem::weakly_canonical(settingsFile, error);
    m_settingsFile = (error ? std::filesystem::absolute(settingsFile) : known).string();
}

Result<std::optional<std::string>> Keyring::read(const std::string &name, const Waiting &waiting)
{
    return await<Result<std::optional<std::string>>>(notRead, waiting,
        [place = Place{name, m_settingsFile}](GCancellable *cancellation) { return lookUp(place, cancellation); });
}

Result<void> Keyring::write(const std::string &name, const std::string &secret, const Waiting &waiting)
{
    return await<Result<void>>(
        notKept, waiting, [place = Place{name, m_settingsFile}, secret](GCancellable *cancellation) {
            return store(place, secret, cancellation);
        });
}

Result<void> Keyring::remove(const std::string &name, const Waiting &waiting)
{
    return await<Result<void>>(notForgotten, waiting,
        [place = Place{name, m_settingsFile}](GCancellable *cancellation) { return forget(place, cancellation); });
}

} // namespace keyring
