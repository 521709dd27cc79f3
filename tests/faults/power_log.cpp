// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/power_log.h"

#include <algorithm>
#include <cstring>
#include <sqlite3.h>
#include <stdexcept>

namespace faults {

namespace {

using Kind = PowerLog::Operation::Kind;

constexpr std::size_t sector = 512;

PowerLog *theLog = nullptr;

/// Our part of an open file; the default layer's part lies behind it.
struct LoggedFile {
    sqlite3_file base;
    const char *path;
    bool folderIsSynced; ///< the first sync of a new file beside the store syncs the folder too
    [[nodiscard]] sqlite3_file *real() { return reinterpret_cast<sqlite3_file *>(this + 1); }
};

LoggedFile *logged(sqlite3_file *file)
{
    return reinterpret_cast<LoggedFile *>(file);
}
sqlite3_file *real(sqlite3_file *file)
{
    return logged(file)->real();
}

void log(Kind kind, const char *path, std::int64_t place = 0, std::string bytes = {})
{
    if (theLog && path)
        theLog->add({kind, std::filesystem::path(path).filename().string(), place, std::move(bytes)});
}

int write(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset)
{
    log(Kind::Write, logged(file)->path, offset,
        std::string(static_cast<const char *>(bytes), static_cast<std::size_t>(size)));
    return real(file)->pMethods->xWrite(real(file), bytes, size, offset);
}
int truncate(sqlite3_file *file, sqlite3_int64 size)
{
    log(Kind::Truncate, logged(file)->path, size);
    return real(file)->pMethods->xTruncate(real(file), size);
}
int sync(sqlite3_file *file, int flags)
{
    log(std::exchange(logged(file)->folderIsSynced, false) ? Kind::SyncWithFolder : Kind::Sync, logged(file)->path);
    return real(file)->pMethods->xSync(real(file), flags);
}

template <auto method, typename... Arguments> int pass(sqlite3_file *file, Arguments... arguments)
{
    return (real(file)->pMethods->*method)(real(file), arguments...);
}

int close(sqlite3_file *file)
{
    return real(file)->pMethods->xClose(real(file));
}
void barrier(sqlite3_file *file)
{
    real(file)->pMethods->xShmBarrier(real(file));
}

const sqlite3_io_methods methods{2, close, pass<&sqlite3_io_methods::xRead, void *, int, sqlite3_int64>, write,
    truncate, sync, pass<&sqlite3_io_methods::xFileSize, sqlite3_int64 *>, pass<&sqlite3_io_methods::xLock, int>,
    pass<&sqlite3_io_methods::xUnlock, int>, pass<&sqlite3_io_methods::xCheckReservedLock, int *>,
    pass<&sqlite3_io_methods::xFileControl, int, void *>, pass<&sqlite3_io_methods::xSectorSize>,
    pass<&sqlite3_io_methods::xDeviceCharacteristics>,
    pass<&sqlite3_io_methods::xShmMap, int, int, int, void volatile **>,
    pass<&sqlite3_io_methods::xShmLock, int, int, int>, barrier, pass<&sqlite3_io_methods::xShmUnmap, int>, nullptr,
    nullptr};

sqlite3_vfs *defaultLayer = nullptr;

int open(sqlite3_vfs *, const char *path, sqlite3_file *file, int flags, int *flagsOut)
{
    constexpr int ofAStore = SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_WAL | SQLITE_OPEN_MAIN_JOURNAL;
    logged(file)->path = flags & ofAStore ? path : nullptr;
    logged(file)->folderIsSynced
        = (flags & SQLITE_OPEN_CREATE) && (flags & (SQLITE_OPEN_WAL | SQLITE_OPEN_MAIN_JOURNAL));
    const int code = defaultLayer->xOpen(defaultLayer, path, real(file), flags, flagsOut);
    file->pMethods = code == SQLITE_OK ? &methods : nullptr;
    return code;
}

int remove(sqlite3_vfs *, const char *path, int syncFolder)
{
    log(syncFolder ? Kind::DeleteSynced : Kind::Delete, path);
    return defaultLayer->xDelete(defaultLayer, path, syncFolder);
}

sqlite3_vfs layer;

/// One file between the last sync and the cut.
struct FileState {
    std::string synced;
    std::vector<const PowerLog::Operation *> pending;
    bool exists = false;
};

/// Files that were made are there and files that were deleted are gone, whatever became of their contents.
void syncFolder(std::map<std::string, FileState> &files)
{
    for (auto &[name, file] : files) {
        const auto deletion = std::find_if(file.pending.rbegin(), file.pending.rend(),
            [](const auto *operation) { return operation->kind == Kind::Delete; });
        if (deletion != file.pending.rend()) {
            file.pending.erase(file.pending.begin(), deletion.base());
            file.synced.clear();
            file.exists = false;
        }
        file.exists = file.exists || !file.pending.empty();
    }
}

void put(std::string &content, std::size_t offset, std::string_view bytes)
{
    if (content.size() < offset + bytes.size())
        content.resize(offset + bytes.size());
    content.replace(offset, bytes.size(), bytes);
}

void apply(std::string &content, const PowerLog::Operation &operation)
{
    if (operation.kind == Kind::Write)
        put(content, static_cast<std::size_t>(operation.place), operation.bytes);
    else if (operation.kind == Kind::Truncate)
        content.resize(static_cast<std::size_t>(operation.place));
}

/// How a cut treats what was not synced.
enum class Loss { All, None, Chance };

void applyByChance(std::string &content, const PowerLog::Operation &operation, std::mt19937_64 &random)
{
    if (operation.kind != Kind::Write) {
        if (random() % 2)
            apply(content, operation);
        return;
    }
    for (std::size_t begin = 0; begin < operation.bytes.size();) {
        const std::size_t offset = static_cast<std::size_t>(operation.place) + begin;
        const std::size_t size = std::min(sector - offset % sector, operation.bytes.size() - begin);
        std::string piece = operation.bytes.substr(begin, size);
        const auto chance = random() % 16;
        if (chance == 0)
            std::generate(piece.begin(), piece.end(), [&] { return static_cast<char>(random()); });
        if (chance < 9)
            put(content, offset, piece);
        begin += size;
    }
}

} // namespace

PowerLog::PowerLog()
{
    if (theLog)
        throw std::logic_error("one log of power at a time");
    theLog = this;
    defaultLayer = sqlite3_vfs_find("unix");
    layer = *defaultLayer;
    layer.pNext = nullptr;
    layer.zName = "power-log";
    layer.szOsFile = static_cast<int>(sizeof(LoggedFile)) + defaultLayer->szOsFile;
    layer.xOpen = open;
    layer.xDelete = remove;
    sqlite3_vfs_register(&layer, 1);
}

PowerLog::~PowerLog()
{
    sqlite3_vfs_unregister(&layer);
    sqlite3_vfs_register(defaultLayer, 1);
    theLog = nullptr;
}

void PowerLog::add(Operation operation)
{
    m_operations.push_back(std::move(operation));
}

void PowerLog::saveBegins(int number)
{
    add({Kind::SaveBegins, {}, number, {}});
}

void PowerLog::saveAcknowledged(int number)
{
    add({Kind::SaveAcknowledged, {}, number, {}});
}

PowerLog::Disk PowerLog::diskAfterCut(std::size_t moment, std::mt19937_64 &random) const
{
    Disk disk;
    std::map<std::string, FileState> files;
    for (std::size_t i = 0; i < moment; ++i) {
        const Operation &operation = m_operations[i];
        if (operation.kind == Kind::SaveBegins) {
            disk.savesTried = static_cast<int>(operation.place);
            continue;
        }
        if (operation.kind == Kind::SaveAcknowledged) {
            disk.savesAcknowledged = static_cast<int>(operation.place);
            continue;
        }
        FileState &file = files[operation.file];
        if (operation.kind == Kind::DeleteSynced) {
            file = {};
        } else if (operation.kind == Kind::Sync || operation.kind == Kind::SyncWithFolder) {
            if (operation.kind == Kind::SyncWithFolder)
                syncFolder(files);
            for (const Operation *pending : file.pending) {
                if (pending->kind == Kind::Delete)
                    file.synced.clear();
                else
                    apply(file.synced, *pending);
            }
            file.pending.clear();
            file.exists = true;
        } else {
            file.pending.push_back(&operation);
        }
    }
    const std::array losses{Loss::All, Loss::None, Loss::Chance, Loss::Chance, Loss::Chance, Loss::Chance};
    const Loss loss = losses[random() % losses.size()];
    for (auto &[name, file] : files) {
        bool exists = file.exists;
        for (const Operation *pending : file.pending) {
            const bool happened = loss == Loss::None || (loss == Loss::Chance && random() % 2);
            if (pending->kind == Kind::Delete) {
                if (happened)
                    file.synced.clear();
                exists = exists && !happened;
                continue;
            }
            if (loss == Loss::None)
                apply(file.synced, *pending);
            else if (loss == Loss::Chance)
                applyByChance(file.synced, *pending, random);
            exists = exists || loss != Loss::All;
        }
        if (exists)
            disk.files[name] = file.synced;
    }
    return disk;
}

} // namespace faults
