// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/table.h"
#include "foundation/clock.h"
#include "foundation/secret_store.h"
#include "foundation/settings.h"
#include "model/edit_tracking.h"
#include "model/task_store.h"

#include <filesystem>
#include <memory>
#include <string>

namespace cli {

/// Makes what keeps the secrets of the settings in a file.
using MakeSecretStore = std::unique_ptr<foundation::SecretStore> (*)(const std::filesystem::path &settingsFile);

/// What a command works with: the store and the settings, opened when they are first asked for, and where to print.
///
/// Belongs to the main thread. What a command prints is kept in `out` and written when the command has succeeded or
/// when `flush` is called, so that nothing is printed that did not happen.
class Workplace final : public foundation::ErrorPresenter
{
public:
    /// Without a store of secrets, those that lie in one cannot be read.
    Workplace(const Arguments &arguments, const foundation::Clock &clock, MakeSecretStore makeSecrets = nullptr);

    /// The open store; a failure says why it cannot be opened.
    [[nodiscard]] foundation::Result<model::TaskStore *> store();
    /// Its context, whose edits stamp the dates of modification.
    [[nodiscard]] foundation::Result<objectstore::ObjectContext *> context();
    [[nodiscard]] model::EditTracking &tracking() { return *m_tracking; }
    [[nodiscard]] foundation::Settings &settings();
    [[nodiscard]] bool keepsSecrets() const { return m_secrets != nullptr; }
    [[nodiscard]] const foundation::Clock &clock() const { return m_clock; }

    /// Saves the context; what another program changed meanwhile is told.
    [[nodiscard]] foundation::Result<void> save();

    /// Writes what was printed so far to standard output.
    [[nodiscard]] foundation::Result<void> flush();
    [[nodiscard]] const Terminal &terminal() const { return m_terminal; }

    void presentError(const foundation::Error &error) override;

    std::string out;

private:
    const foundation::Clock &m_clock;
    std::filesystem::path m_storeFolder;
    foundation::JsonSettingsFile m_settingsFile;
    std::unique_ptr<foundation::SecretStore> m_secrets;
    Terminal m_terminal;
    std::unique_ptr<foundation::Settings> m_settings;
    std::unique_ptr<model::TaskStore> m_store;
    std::unique_ptr<model::EditTracking> m_tracking;
};

/// Prints a sentence on standard error.
void complain(std::string_view sentence);

} // namespace cli
