// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"
#include "foundation/settings.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace foundation {

namespace {

namespace fs = std::filesystem;

// Booleans, whole numbers and texts are plain JSON. Every other kind is an object with one member that names the kind,
// because JSON could not tell it from those: {"date": "2026-12-01T14:00:00+01:00"}.
const QString realTag = QStringLiteral("real");
const QString dateTag = QStringLiteral("date");
const QString dataTag = QStringLiteral("data");
const QString textTag = QStringLiteral("text"); // a text that is not UTF-8, in base64
const QString tableTag = QStringLiteral("table");

QJsonObject tagged(const QString &tag, const QJsonValue &value)
{
    return QJsonObject{{tag, value}};
}

QString fromUtf8(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString base64(const void *bytes, std::size_t size)
{
    const QByteArray data(static_cast<const char *>(bytes), static_cast<qsizetype>(size));
    return QString::fromLatin1(data.toBase64());
}

struct ToJson {
    QJsonValue operator()(bool value) const { return value; }
    QJsonValue operator()(std::int64_t value) const { return static_cast<qint64>(value); }
    QJsonValue operator()(double value) const
    {
        return tagged(realTag, std::isfinite(value) ? QJsonValue(value) : QJsonValue(QString::number(value)));
    }
    QJsonValue operator()(const std::string &value) const
    {
        const QString text = fromUtf8(value);
        return text.toStdString() == value ? QJsonValue(text) : tagged(textTag, base64(value.data(), value.size()));
    }
    QJsonValue operator()(Instant value) const { return tagged(dateTag, fromUtf8(toIso8601(value))); }
    QJsonValue operator()(const std::vector<std::byte> &value) const
    {
        return tagged(dataTag, base64(value.data(), value.size()));
    }
    QJsonValue operator()(const std::map<std::string, std::int64_t> &value) const
    {
        QJsonObject table;
        for (const auto &[key, number] : value)
            table.insert(fromUtf8(key), static_cast<qint64>(number));
        return tagged(tableTag, table);
    }
};

std::optional<QByteArray> bytesOf(const QJsonValue &value)
{
    const auto decoded
        = QByteArray::fromBase64Encoding(value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return value.isString() && decoded ? std::optional(*decoded) : std::nullopt;
}

/// Whether a JSON number was a whole one; the parser keeps such numbers exactly.
bool isWhole(const QJsonValue &value)
{
    return value.isDouble() && value.toVariant().typeId() == QMetaType::LongLong;
}

std::optional<SettingValue> tableFrom(const QJsonObject &object)
{
    std::map<std::string, std::int64_t> table;
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (!isWhole(entry.value()))
            return std::nullopt;
        table.emplace(entry.key().toStdString(), entry.value().toInteger());
    }
    return table;
}

std::optional<SettingValue> taggedFrom(const QString &tag, const QJsonValue &value)
{
    if (tag == realTag)
        return value.isString() ? value.toString().toDouble() : value.toDouble();
    if (tag == tableTag && value.isObject())
        return tableFrom(value.toObject());
    if (tag == dateTag) {
        const auto instant = fromIso8601(value.toString().toStdString());
        return instant ? std::optional<SettingValue>(*instant) : std::nullopt;
    }
    const auto bytes = bytesOf(value);
    if (!bytes)
        return std::nullopt;
    if (tag == textTag)
        return bytes->toStdString();
    if (tag != dataTag)
        return std::nullopt;
    const auto *begin = reinterpret_cast<const std::byte *>(bytes->constData());
    return std::vector<std::byte>(begin, begin + bytes->size());
}

std::optional<SettingValue> fromJson(const QJsonValue &value)
{
    if (value.isBool())
        return value.toBool();
    if (isWhole(value))
        return static_cast<std::int64_t>(value.toInteger());
    if (value.isDouble())
        return value.toDouble();
    if (value.isString())
        return value.toString().toStdString();
    const QJsonObject object = value.toObject();
    return object.size() == 1 ? taggedFrom(object.begin().key(), object.begin().value()) : std::nullopt;
}

Failure failure(SettingsErrorCode code, std::string message, const fs::path &path, int systemError)
{
    std::string detail = path.string();
    if (systemError != 0)
        detail.append(": ").append(std::strerror(systemError));
    return Failure(Error{settingsErrorDomain, static_cast<int>(code), std::move(message), std::move(detail)});
}

Failure notWritten(const fs::path &path, int systemError)
{
    return failure(SettingsErrorCode::NotWritten, "The settings could not be stored. Your former settings are kept.",
        path, systemError);
}

/// An open file that closes itself.
class File
{
public:
    File(const fs::path &path, int flags) : m_descriptor(::open(path.c_str(), flags | O_CLOEXEC, 0600)) { }
    ~File() { close(); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] bool sync() const { return ::fsync(m_descriptor) == 0; }
    /// A lock against other holders, until the file is closed; false while another has it.
    [[nodiscard]] bool tryLock() const { return ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

    bool close()
    {
        const int descriptor = std::exchange(m_descriptor, -1);
        return descriptor < 0 || ::close(descriptor) == 0;
    }

    [[nodiscard]] bool write(const QByteArray &bytes) const
    {
        qsizetype written = 0;
        while (written < bytes.size()) {
            const ssize_t count
                = ::write(m_descriptor, bytes.constData() + written, static_cast<std::size_t>(bytes.size() - written));
            if (count < 0 && errno != EINTR)
                return false;
            written += std::max<ssize_t>(count, 0);
        }
        return true;
    }

    [[nodiscard]] std::optional<QByteArray> readAll() const
    {
        QByteArray bytes;
        std::array<char, 65536> chunk{};
        for (;;) {
            const ssize_t count = ::read(m_descriptor, chunk.data(), chunk.size());
            if (count == 0)
                return bytes;
            if (count < 0 && errno != EINTR)
                return std::nullopt;
            bytes.append(chunk.data(), std::max<ssize_t>(count, 0));
        }
    }

private:
    int m_descriptor;
};

/// Makes the folder, and those above it that are missing, for this user alone.
bool makeFolder(const fs::path &folder)
{
    if (folder.empty() || ::access(folder.c_str(), F_OK) == 0)
        return true;
    return makeFolder(folder.parent_path()) && (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

fs::path folderOf(const fs::path &path)
{
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

bool syncFolder(const fs::path &path)
{
    const File opened(folderOf(path), O_RDONLY | O_DIRECTORY);
    return opened.isOpen() && opened.sync();
}

/// Writes, reads back, compares and syncs a new file. On failure nothing is left of it and errno tells why.
bool writeChecked(const fs::path &path, const QByteArray &bytes)
{
    ::unlink(path.c_str()); // left by an earlier process with this number that died while writing
    File file(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    if (!file.isOpen())
        return false;
    bool good = file.write(bytes) && file.sync() && file.close();
    if (good) {
        const File written(path, O_RDONLY);
        errno = EIO;
        good = written.isOpen() && written.readAll() == bytes;
    }
    if (!good) {
        const int why = errno;
        ::unlink(path.c_str());
        errno = why;
    }
    return good;
}

/// Gives the settings in force a second name before a new file takes the first.
void keepBackup(const fs::path &path)
{
    const fs::path backup = path.string() + ".bak";
    ::unlink(backup.c_str());
    if (::link(path.c_str(), backup.c_str()) != 0 && errno != ENOENT)
        logLine("Settings: no backup could be kept: " + std::string(std::strerror(errno)));
}

fs::path nameForDamaged(const fs::path &path)
{
    const CivilTime now = toLocal(Instant{static_cast<double>(std::time(nullptr))});
    std::array<char, 64> stamp{};
    std::snprintf(stamp.data(), stamp.size(), ".damaged-%04d%02d%02d-%02d%02d%02d", now.year, now.month, now.day,
        now.hour, now.minute, now.second);
    const std::string base = path.string() + stamp.data();
    std::string name = base;
    for (int i = 2; ::access(name.c_str(), F_OK) == 0 && i < 1000; ++i)
        name = base + "-" + std::to_string(i);
    return name;
}

/// Moves a file that holds no settings out of the way and reports it.
Failure keepAside(const fs::path &path)
{
    const fs::path aside = nameForDamaged(path);
    if (::rename(path.c_str(), aside.c_str()) != 0)
        return failure(
            SettingsErrorCode::Unreadable, "The settings are damaged and could not be kept aside.", path, errno);
    syncFolder(path);
    return failure(SettingsErrorCode::Damaged,
        "The settings were damaged. They are kept as " + aside.filename().string() + "; the defaults are used.", aside,
        0);
}

} // namespace

JsonSettingsFile::JsonSettingsFile(std::filesystem::path path) : m_path(std::move(path)) { }

JsonSettingsFile::Version JsonSettingsFile::currentVersion() const
{
    struct stat found = {};
    if (::stat(m_path.c_str(), &found) != 0)
        return {};
    return {found.st_ino, found.st_mtim.tv_sec, found.st_mtim.tv_nsec};
}

bool JsonSettingsFile::isChangedElsewhere()
{
    return currentVersion() != m_known;
}

std::shared_ptr<const void> JsonSettingsFile::lock()
{
    using namespace std::chrono_literals;
    const fs::path folder = folderOf(m_path);
    makeFolder(folder); // where it cannot be made, the write tells
    auto opened = std::make_shared<const File>(folder, O_RDONLY | O_DIRECTORY);
    for (int attempt = 0; opened->isOpen() && !opened->tryLock(); ++attempt) {
        if (attempt == 200) {
            logLine("Settings: another program has kept " + folder.string() + " locked for two seconds.");
            return nullptr;
        }
        std::this_thread::sleep_for(10ms);
    }
    return opened;
}

Result<SettingsTable> JsonSettingsFile::read()
{
    auto table = peek();
    if (!table && table.error().code == static_cast<int>(SettingsErrorCode::Damaged))
        return keepAside(m_path);
    return table;
}

Result<SettingsTable> JsonSettingsFile::peek()
{
    m_known = currentVersion(); // before the reading: a file that comes meanwhile is read again
    const File file(m_path, O_RDONLY);
    if (!file.isOpen() && errno == ENOENT)
        return SettingsTable();
    const auto bytes = file.isOpen() ? file.readAll() : std::nullopt;
    if (!bytes)
        return failure(SettingsErrorCode::Unreadable, "The settings could not be read.", m_path, errno);
    const QJsonDocument document = QJsonDocument::fromJson(*bytes);
    if (!document.isObject())
        return failure(SettingsErrorCode::Damaged, "The settings are damaged.", m_path, 0);

    SettingsTable table;
    const QJsonObject object = document.object();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        std::string key = entry.key().toStdString();
        if (auto value = fromJson(entry.value()))
            table.emplace(std::move(key), std::move(*value));
        else
            logLine("Settings: the value of " + key + " is of no known kind; its default is used.");
    }
    return table;
}

Result<void> JsonSettingsFile::write(const SettingsTable &table)
{
    QJsonObject object;
    for (const auto &[key, value] : table)
        object.insert(fromUtf8(key), std::visit(ToJson{}, value));
    const QByteArray bytes = QJsonDocument(object).toJson();

    const fs::path fresh = m_path.string() + ".new-" + std::to_string(::getpid());
    if (!makeFolder(m_path.parent_path()) || !writeChecked(fresh, bytes))
        return notWritten(m_path, errno);
    keepBackup(m_path);
    if (::rename(fresh.c_str(), m_path.c_str()) != 0) {
        const int why = errno;
        ::unlink(fresh.c_str());
        return notWritten(m_path, why);
    }
    m_known = currentVersion();
    if (!syncFolder(m_path))
        logLine("Settings: the folder could not be synced: " + std::string(std::strerror(errno)));
    return {};
}

} // namespace foundation
