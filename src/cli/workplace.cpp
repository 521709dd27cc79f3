// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/workplace.h"

#include "cli/command_error.h"
#include "cli/text.h"
#include "model/settings_defaults.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <unistd.h>

namespace cli {

using foundation::Error;
using foundation::Failure;
using foundation::Result;

namespace {

bool writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

std::filesystem::path settingsFileOf(const Arguments &arguments)
{
    return arguments.settingsFile ? std::filesystem::path(*arguments.settingsFile) : model::settingsFile();
}

} // namespace

Workplace::Workplace(const Arguments &arguments, const foundation::Clock &clock, MakeSecretStore makeSecrets)
    : m_clock(clock)
    , m_storeFolder(
          arguments.storeFolder ? std::filesystem::path(*arguments.storeFolder) : model::applicationSupportFolder())
    , m_settingsFile(settingsFileOf(arguments))
    , m_secrets(makeSecrets ? makeSecrets(settingsFileOf(arguments)) : nullptr)
    , m_terminal(terminalOf(STDOUT_FILENO))
{ }

Result<model::TaskStore *> Workplace::store()
{
    if (!m_store) {
        auto opened = model::TaskStore::open(m_storeFolder, m_clock, *this);
        if (!opened)
            return Failure(std::move(opened.error()));
        m_store = std::move(*opened);
        m_tracking = std::make_unique<model::EditTracking>(m_store->managedObjectContext(), m_clock);
        m_tracking->registerForChangeNotifications();
    }
    return m_store.get();
}

Result<objectstore::ObjectContext *> Workplace::context()
{
    return store().map([](model::TaskStore *opened) { return &opened->managedObjectContext(); });
}

foundation::Settings &Workplace::settings()
{
    if (!m_settings) {
        m_settings = std::make_unique<foundation::Settings>(m_settingsFile, model::settingsDefaults(),
            foundation::SecretSettings{m_secrets.get(), model::secretSettings()});
        if (m_settings->loadError())
            presentError(*m_settings->loadError());
    }
    return *m_settings;
}

Result<void> Workplace::save()
{
    auto saved = m_store->managedObjectContext().save();
    if (!saved)
        return Failure(std::move(saved.error()));
    if (!saved->discarded.empty())
        return failed("Another program changed the same records at the same moment; its changes stand. Try again.");
    return {};
}

Result<void> Workplace::flush()
{
    if (writeAll(STDOUT_FILENO, std::exchange(out, {})))
        return {};
    const int reason = errno;
    // the reader of a pipe has had enough, which is nobody's mistake
    return failed(reason == EPIPE
            ? std::string()
            : "The output could not be written: " + std::generic_category().message(reason) + ".");
}

void Workplace::presentError(const Error &error)
{
    complain(error.message.empty() ? error.detail : error.message);
}

void complain(std::string_view sentence)
{
    if (!sentence.empty())
        writeAll(STDERR_FILENO, "qvl: " + printableLines(sentence) + "\n"); // nowhere left to tell of a failure
}

} // namespace cli
