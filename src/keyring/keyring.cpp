// SPDX-License-Identifier: GPL-3.0-or-later
#include "keyring/keyring.h"

#include <cstdlib>
#include <libsecret/secret.h>
#include <unistd.h>

namespace keyring {

using foundation::Error;
using foundation::Failure;
using foundation::Result;

namespace {

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
using Cancellation = std::unique_ptr<GCancellable, Release<&g_object_unref>>;

Failure failure(const char *sentence, GError *reported)
{
    const std::unique_ptr<GError, Release<&g_error_free>> owned(reported);
    return Failure(Error{keyringErrorDomain, owned ? owned->code + 1 : 1, sentence, owned ? owned->message : ""});
}

/// Without a bus the library would start one of its own.
bool hasSessionBus()
{
    if (std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return true;
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime && ::access((std::string(runtime) + "/bus").c_str(), F_OK) == 0;
}

} // namespace

struct Keyring::State {
    std::string settingsFile;
    Cancellation cancellation{g_cancellable_new()};

    [[nodiscard]] Attributes attributes(const std::string &name) const
    {
        return Attributes(secret_attributes_build(
            schema(), settingAttribute, name.c_str(), fileAttribute, settingsFile.c_str(), nullptr));
    }
};

Keyring::Keyring(const std::filesystem::path &settingsFile)
    : m_state(std::make_unique<State>(State{.settingsFile = std::filesystem::absolute(settingsFile).string()}))
{ }

Keyring::~Keyring() = default;

void Keyring::cancel()
{
    g_cancellable_cancel(m_state->cancellation.get());
}

Result<std::optional<std::string>> Keyring::read(const std::string &name)
{
    constexpr const char *sentence = "The password could not be read from the keyring of your desktop.";
    if (!hasSessionBus())
        return failure(sentence, nullptr);
    GError *error = nullptr;
    const Attributes attributes = m_state->attributes(name);
    const Value value(
        secret_password_lookupv_binary_sync(schema(), attributes.get(), m_state->cancellation.get(), &error));
    if (error)
        return failure(sentence, error);
    if (!value)
        return std::nullopt;
    gsize size = 0;
    const char *bytes = secret_value_get(value.get(), &size);
    return std::string(bytes, size);
}

Result<void> Keyring::write(const std::string &name, const std::string &secret)
{
    constexpr const char *sentence = "The password could not be kept in the keyring of your desktop.";
    if (!hasSessionBus())
        return failure(sentence, nullptr);
    GError *error = nullptr;
    const Attributes attributes = m_state->attributes(name);
    const Value value(secret_value_new(secret.data(), static_cast<gssize>(secret.size()), "text/plain"));
    const std::string label = "Quelvin: " + name;
    if (!secret_password_storev_binary_sync(schema(), attributes.get(), SECRET_COLLECTION_DEFAULT, label.c_str(),
            value.get(), m_state->cancellation.get(), &error))
        return failure(sentence, error);
    return {};
}

Result<void> Keyring::remove(const std::string &name)
{
    constexpr const char *sentence = "The password could not be taken out of the keyring of your desktop.";
    if (!hasSessionBus())
        return failure(sentence, nullptr);
    GError *error = nullptr;
    const Attributes attributes = m_state->attributes(name);
    secret_password_clearv_sync(schema(), attributes.get(), m_state->cancellation.get(), &error);
    if (error)
        return failure(sentence, error);
    return {};
}

} // namespace keyring
