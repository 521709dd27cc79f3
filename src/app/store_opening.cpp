// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/store_opening.h"

#include "app/error_text.h"
#include "app/text.h"
#include "foundation/log.h"

namespace app {

namespace fs = std::filesystem;
using foundation::Error;
using objectstore::StoreErrorCode;

namespace {

struct Store {
    Q_DECLARE_TR_FUNCTIONS(Store)
};

bool hasBackups(const fs::path &folder)
{
    std::error_code none;
    return fs::is_directory(backupFolder(folder), none) && !fs::is_empty(backupFolder(folder), none);
}

/// What the user can do about a store that was not opened.
QString advice(const Error &error, const fs::path &folder)
{
    const QString place = toQString(folder.string());
    switch (static_cast<StoreErrorCode>(error.code)) {
    case StoreErrorCode::InUse:
        return Store::tr("Use that window, or close it first.");
    case StoreErrorCode::NewerSchema:
        return Store::tr("Open it with the newer version.");
    case StoreErrorCode::Damaged:
        return hasBackups(folder)
            ? Store::tr("Copies of the last days lie in \"%1\": move the damaged file away and put the "
                        "latest copy in its place.")
                  .arg(toQString(backupFolder(folder).string()))
            : Store::tr("Move it out of \"%1\" to start with an empty one.").arg(place);
    default:
        return Store::tr("Look whether \"%1\" is a folder of yours, and whether its disk has room.").arg(place);
    }
}

Error withAdvice(Error error, const fs::path &folder)
{
    if (error.domain == "ObjectStoreErrorDomain")
        error.message = toUtf8(errorText(error) + QLatin1Char(' ') + advice(error, folder));
    return error;
}

} // namespace

fs::path backupFolder(const fs::path &folder)
{
    return folder / "Backups";
}

foundation::Result<OpenStore> openStore(
    const fs::path &folder, const foundation::Clock &clock, foundation::ErrorPresenter &presenter)
{
    OpenStore opened;
    (void)model::makeStoreFolder(folder); // opening tells where it is missing
    if (auto lock = objectstore::StoreLock::acquire(folder / model::TaskStore::fileName))
        opened.lock.emplace(std::move(*lock));
    else if (lock.error().code == static_cast<int>(StoreErrorCode::InUse))
        return foundation::Failure(withAdvice(std::move(lock.error()), folder));
    else // a folder that cannot be written holds a store that can be read
        foundation::logLine(lock.error().message + " " + lock.error().detail);

    auto tasks = model::TaskStore::open(folder, clock, presenter);
    if (!tasks)
        return foundation::Failure(withAdvice(std::move(tasks.error()), folder));
    opened.tasks = std::move(*tasks);
    return opened;
}

} // namespace app
