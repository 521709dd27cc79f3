// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/task_store.h"

#include "model/default_records.h"
#include "model/entities.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace model {

namespace fs = std::filesystem;
using foundation::Result;

namespace {

constexpr const char *folderName = "Quelvin";

/// The folder that the XDG variable names, else `fallback` below the home folder, else the temporary folder.
fs::path userFolder(const char *variable, const char *fallback)
{
    const char *named = std::getenv(variable);
    if (named && fs::path(named).is_absolute()) // a relative one is to be ignored
        return named;
    const char *home = std::getenv("HOME");
    if (home && fs::path(home).is_absolute())
        return fs::path(home) / fallback;
    std::error_code error;
    const fs::path temporary = fs::temp_directory_path(error);
    return error ? fs::path("/tmp") : temporary;
}

/// The turn of one process to open a store and set it up, so that two that start together do not both make the default
/// records. A folder that takes no lock file gives the turn to everybody.
class SetUpTurn
{
public:
    explicit SetUpTurn(const fs::path &folder)
        : m_descriptor(::open((folder / lockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR))
    {
        while (m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) { }
    }
    SetUpTurn(const SetUpTurn &) = delete;
    SetUpTurn &operator=(const SetUpTurn &) = delete;
    ~SetUpTurn()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

private:
    static constexpr const char *lockName = "Quelvin.setup.lock";
    int m_descriptor;
};

} // namespace

fs::path applicationSupportFolder()
{
    return userFolder("XDG_DATA_HOME", ".local/share") / folderName;
}

fs::path settingsFile()
{
    return userFolder("XDG_CONFIG_HOME", ".config") / folderName / "settings.json";
}

std::error_code makeStoreFolder(fs::path folder)
{
    if (!folder.has_filename()) // "Quelvin/" means "Quelvin"
        folder = folder.parent_path();
    std::error_code error;
    if (folder.has_parent_path())
        fs::create_directories(folder.parent_path(), error);
    if (error)
        return error;
    if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        return {errno, std::generic_category()};
    return {};
}

TaskStore::TaskStore(std::unique_ptr<objectstore::Store> store)
    : m_store(std::move(store)), m_managedObjectContext(*m_store, objectstore::MergePolicy::Rollback)
{ }

Result<std::unique_ptr<TaskStore>> TaskStore::open(
    const fs::path &folder, const foundation::Clock &clock, foundation::ErrorPresenter &presenter)
{
    if (const std::error_code error = makeStoreFolder(folder))
        presenter.presentError({"TaskStoreErrorDomain", error.value(),
            "The folder \"" + folder.string() + "\" could not be created: " + error.message() + ".", {}});

    const SetUpTurn turn(folder);
    auto store = objectstore::Store::open(objectModel(), folder / fileName, clock);
    if (!store)
        return foundation::Failure(std::move(store.error()));
    std::unique_ptr<TaskStore> tasks(new TaskStore(std::move(*store)));
    if (const std::string &notice = tasks->store().notice(); !notice.empty())
        presenter.presentError({"TaskStoreErrorDomain", EROFS, notice, {}});
    else
        initializeDataStore(tasks->managedObjectContext(), presenter);
    return tasks;
}

} // namespace model
