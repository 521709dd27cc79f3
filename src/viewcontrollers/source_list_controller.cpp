// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/source_list_controller.h"

#include "app/text.h"
#include "foundation/log.h"
#include "model/settings_defaults.h"
#include "viewcontrollers/task_cells.h"

#include <QLocale>
#include <ctime>

namespace viewcontrollers {

using app::toQString;
using objectstore::FetchRequest;
using objectstore::ManagedObject;
using objectstore::Predicate;
namespace keys = model::keys;

namespace {

constexpr quintptr topLevelId = 0; // of an index; below a group it is one more than the group's row

constexpr double longestToday = 60; // seconds after which an edit has Today counted anew, for time goes on, too
constexpr double longestCounting = 0.02; // seconds in one turn of the event loop; longer would be felt

/// Seconds that this thread has computed, which other programs do not lengthen.
double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The key of a row's number; a record's address is no small number.
quintptr badgeKey(const QModelIndex &index, const ManagedObject *record)
{
    return record ? reinterpret_cast<quintptr>(record) : static_cast<quintptr>(index.row());
}

const TopLevelItem &topLevel(int row)
{
    return topLevelItems[static_cast<std::size_t>(row)];
}

} // namespace

QString todayImageName(foundation::Instant now)
{
    return QStringLiteral("today_%1").arg(foundation::toLocal(now).day);
}

SourceListController::SourceListController(app::TMApplicationDelegate &delegate)
    : m_delegate(delegate), m_counts(delegate.managedObjectContext())
{
    m_countTimer.setSingleShot(true);
    m_countTimer.setInterval(0);
    connect(&m_countTimer, &QTimer::timeout, this, &SourceListController::beginTurn);
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(0);
    connect(&m_refreshTimer, &QTimer::timeout, this, &SourceListController::refreshOutlineView);
    m_badgeTimer.setSingleShot(true);
    m_badgeTimer.setInterval(0);
    connect(&m_badgeTimer, &QTimer::timeout, &m_delegate, &app::TMApplicationDelegate::updateDockBadge);
    m_flagTimer.setSingleShot(true);
    m_flagTimer.setInterval(0);
    connect(&m_flagTimer, &QTimer::timeout, &m_delegate, &app::TMApplicationDelegate::flagAllTasksForLocation);
    connect(&m_delegate, &app::TMApplicationDelegate::objectsDidChange, this, &SourceListController::follow);
    connect(&m_delegate, &app::TMApplicationDelegate::newDayDidBegin, this, &SourceListController::refreshOutlineView);
    connect(&m_delegate, &app::TMApplicationDelegate::syncDidEnd, this, &SourceListController::refreshOutlineView);
    const app::QVLLocationManagerDelegate &location = m_delegate.locationController();
    connect(
        &location, &app::QVLLocationManagerDelegate::locationUpdated, this, &SourceListController::locationDidUpdate);
    connect(&location, &app::QVLLocationManagerDelegate::statusChanged, this, &SourceListController::locationDidUpdate);
    connect(&m_delegate, &app::TMApplicationDelegate::storeDidChangeElsewhere, this, [this] {
        m_counts.forget();
        m_refreshTimer.start();
    });
    for (int row = 0; row < rowCount(); ++row) {
        if (topLevel(row).childKind != SourceKind::None)
            children(row) = fetchChildren(topLevel(row).childKind);
    }
}

SourceKind SourceListController::kind(const QModelIndex &index) const
{
    if (!index.isValid())
        return SourceKind::None;
    return index.internalId() == topLevelId ? topLevel(index.row()).kind : topLevel(index.parent().row()).childKind;
}

ManagedObject *SourceListController::record(const QModelIndex &index) const
{
    if (!index.isValid() || index.internalId() == topLevelId)
        return nullptr;
    return children(index.parent().row())[static_cast<std::size_t>(index.row())];
}

QModelIndex SourceListController::indexOf(SourceKind topLevelKind) const
{
    for (int row = 0; row < rowCount(); ++row) {
        if (topLevel(row).kind == topLevelKind)
            return index(row, 0);
    }
    return {};
}

QModelIndex SourceListController::indexOf(const ManagedObject &record) const
{
    for (int group = 0; group < rowCount(); ++group) {
        const Records &records = children(group);
        const auto found = std::find(records.begin(), records.end(), &record);
        if (found != records.end())
            return index(static_cast<int>(found - records.begin()), 0, index(group, 0));
    }
    return {};
}

bool SourceListController::isExpandableGroup(const QModelIndex &index) const
{
    return index.isValid() && index.internalId() == topLevelId && topLevel(index.row()).childKind != SourceKind::None;
}

bool SourceListController::isNonExpandableGroup(const QModelIndex &index) const
{
    return index.isValid() && index.internalId() == topLevelId && topLevel(index.row()).childKind == SourceKind::None;
}

bool SourceListController::isRenamable(const QModelIndex &index) const
{
    const ManagedObject *named = record(index);
    if (!named)
        return false;
    if (const auto *folder = model::as<model::Folders>(named))
        return folder->title() != "Inbox";
    if (const auto *context = model::as<model::Contexts>(named))
        return context->title() != "None";
    return true;
}

SourceListController::Records SourceListController::fetchChildren(SourceKind kind) const
{
    const RecordKind &wanted = recordKind(kind);
    auto found = m_delegate.managedObjectContext().fetch({
        .entity = wanted.entity,
        .predicate = Predicate::format(wanted.predicate),
        .sortDescriptors = {{.key = "title", .ascending = true, .localized = true}},
    });
    if (found)
        return std::move(*found);
    m_delegate.user().presentError(found.error());
    return {};
}

void SourceListController::refreshOutlineView()
{
    m_refreshTimer.stop();
    m_delegate.flagAllTasksForLocation();
    for (int row = 0; row < rowCount(); ++row) {
        if (topLevel(row).childKind != SourceKind::None)
            reloadGroup(row);
    }
    m_counts.doubtAll();
    repaintAll();
    m_delegate.updateDockBadge();
    Q_EMIT refreshed();
}

void SourceListController::reloadGroup(int group)
{
    const QModelIndex parent = index(group, 0);
    rearrange(children(group), fetchChildren(topLevel(group).childKind), parent);
}

void SourceListController::repaintAll()
{
    Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0));
    for (int group = 0; group < rowCount(); ++group) {
        if (const int count = rowCount(index(group, 0)); count > 0)
            Q_EMIT dataChanged(index(0, 0, index(group, 0)), index(count - 1, 0, index(group, 0)));
    }
}

void SourceListController::follow(const objectstore::ObjectsChange &change)
{
    m_counts.follow(change);
    if (m_delegate.clock().now().seconds - m_todayCounted.seconds > longestToday
        || m_delegate.clock().now() < m_todayCounted)
        m_counts.doubt(badgeKey(indexOf(SourceKind::Today), nullptr));
    const auto concernsGroups = [](const std::vector<ManagedObject *> &objects) {
        return std::any_of(objects.begin(), objects.end(), [](const ManagedObject *object) {
            const std::string &entity = object->entity().name();
            if (TaskCounts::hasOnlyOtherMembers(*object)) // as when a task is dropped on a folder
                return false;
            return entity == "Folders" || entity == "Contexts" || entity == "SmartFolder";
        });
    };
    const auto isPlacedElsewhere
        = [](const ManagedObject *object) { return model::as<model::Tasks>(object) && object->hasChanged("contexts"); };
    if (concernsGroups(change.inserted) || concernsGroups(change.updated) || concernsGroups(change.deleted)) {
        m_refreshTimer.start();
        return;
    }
    if (std::any_of(change.inserted.begin(), change.inserted.end(), isPlacedElsewhere)
        || std::any_of(change.updated.begin(), change.updated.end(), isPlacedElsewhere))
        m_flagTimer.start();
    m_badgeTimer.start();
    repaintAll();
}

void SourceListController::locationDidUpdate()
{
    if (m_delegate.followLocation())
        refreshOutlineView();
    else
        Q_EMIT dataChanged(indexOf(SourceKind::Location), indexOf(SourceKind::Location)); // its tool tip
}

FetchRequest SourceListController::smartFolderTasks(const model::SmartFolder &folder) const
{
    const foundation::Settings &settings = m_delegate.settings();
    std::optional<bool> complete;
    if (settings.boolean(keys::SmartFoldersApplyShowCompleted))
        complete = settings.boolean(keys::ShowCompletedTasks);
    return model::smartFolderTasks(folder.predicate().value_or(Predicate()), complete);
}

std::optional<FetchRequest> SourceListController::tasks(const QModelIndex &index) const
{
    const model::ListFilter filter = m_delegate.listFilter();
    ManagedObject *const row = record(index);
    switch (kind(index)) {
    case SourceKind::Today:
        return model::todayTasks(m_delegate.clock().now(), filter);
    case SourceKind::Inbox:
        if (const auto *inbox = m_delegate.records().getFolderByTitle("Inbox"))
            return model::folderTasks(*inbox, filter);
        return std::nullopt;
    case SourceKind::Location:
        return model::locationTasks();
    case SourceKind::Trash:
        return model::trashTasks();
    case SourceKind::Folder:
    case SourceKind::ArchivedFolder:
        return model::folderTasks(*model::as<model::Folders>(row), filter);
    case SourceKind::Context:
        return model::contextTasks(*model::as<model::Contexts>(row), filter);
    case SourceKind::SmartFolder:
        return smartFolderTasks(*model::as<model::SmartFolder>(row));
    default:
        return std::nullopt;
    }
}

std::optional<FetchRequest> SourceListController::badgeTasks(const QModelIndex &index) const
{
    const bool showCompleted = m_delegate.listFilter().showCompleted;
    switch (kind(index)) {
    case SourceKind::Today:
        return model::todayBadgeTasks(m_delegate.clock().now(), showCompleted);
    case SourceKind::Location:
        return model::locationBadgeTasks(showCompleted);
    default:
        return tasks(index);
    }
}

QVariant SourceListController::badge(const QModelIndex &index) const
{
    if (isExpandableGroup(index))
        return {};
    const quintptr key = badgeKey(index, record(index));
    if (const auto known = m_counts.known(key))
        return static_cast<qint64>(m_badges[key] = *known);
    m_countTimer.start();
    if (m_counted > longestCounting) {
        m_isWaiting = true;
        const auto shown = m_badges.find(key);
        return shown == m_badges.end() ? QVariant() : shown->second;
    }
    const double start = processorSeconds();
    const auto request = badgeTasks(index);
    if (kind(index) == SourceKind::Today)
        m_todayCounted = m_delegate.clock().now();
    // This runs while the list is drawn, where no alert can be shown; reading the list itself will show the error.
    const auto counted = request ? m_counts.count(key, *request) : 0;
    if (!counted)
        foundation::logLine("A list could not be counted: " + counted.error().message);
    m_counted += processorSeconds() - start;
    return static_cast<qint64>(m_badges[key] = counted.value_or(0));
}

void SourceListController::beginTurn()
{
    m_counted = 0;
    if (std::exchange(m_isWaiting, false))
        repaintAll();
}

TipType SourceListController::tip(const QModelIndex &index) const
{
    const SourceKind row = kind(index);
    if (row == SourceKind::None)
        return TipType::Today;
    return record(index) ? recordKind(row).tip : topLevel(index.row()).tip;
}

QString SourceListController::persistentName(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    if (const ManagedObject *object = record(index))
        return toQString(m_delegate.managedObjectContext().uri(*object));
    return QString::fromLatin1(topLevel(index.row()).key);
}

QModelIndex SourceListController::indexForPersistentName(const QString &name) const
{
    for (int row = 0; row < rowCount(); ++row) {
        if (name == QLatin1String(topLevel(row).key))
            return index(row, 0);
    }
    const ManagedObject *object = m_delegate.managedObjectContext().objectWithURI(app::toUtf8(name));
    return object ? indexOf(*object) : QModelIndex();
}

QModelIndex SourceListController::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : topLevelId);
}

QModelIndex SourceListController::parent(const QModelIndex &child) const
{
    if (!child.isValid() || child.internalId() == topLevelId)
        return {};
    return createIndex(static_cast<int>(child.internalId()) - 1, 0, topLevelId);
}

int SourceListController::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return static_cast<int>(topLevelItems.size());
    return parent.internalId() == topLevelId ? static_cast<int>(children(parent.row()).size()) : 0;
}

int SourceListController::columnCount(const QModelIndex &) const
{
    return 1;
}

QString SourceListController::title(const QModelIndex &index) const
{
    if (const ManagedObject *object = record(index))
        return recordTitle(
            kind(index) == SourceKind::Context ? TaskColumn::Context : TaskColumn::Title, object->text("title"));
    return QCoreApplication::translate("SourceList", topLevel(index.row()).key);
}

/// The title, which a narrow list cuts, and of a smart folder how much work its tasks are.
QString SourceListController::toolTip(const QModelIndex &index) const
{
    auto *folder = model::as<model::SmartFolder>(record(index));
    if (!folder)
        return title(index);
    const auto work = folder->work(m_delegate.user());
    const QString format = work.isOneDay ? tr("%1 tasks, %2 day") : tr("%1 tasks, %2 days");
    return title(index) + u'\n' + format.arg(work.tasks).arg(QLocale().toString(work.days, 'f', 2));
}

QVariant SourceListController::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return title(index);
    case Qt::ToolTipRole:
        if (kind(index) == SourceKind::Location)
            return m_delegate.locationController().statusText();
        return record(index) ? toolTip(index) : QVariant();
    case KindRole:
        return static_cast<int>(kind(index));
    case BadgeRole:
        return badge(index);
    case IconRole:
        if (kind(index) == SourceKind::Today)
            return todayImageName(m_delegate.clock().now());
        return QString::fromLatin1(record(index) ? recordKind(kind(index)).icon : topLevel(index.row()).icon);
    default:
        return {};
    }
}

bool SourceListController::setData(const QModelIndex &index, const QVariant &value, int role)
{
    ManagedObject *object = record(index);
    const QString wanted = value.toString().simplified();
    if (role != Qt::EditRole || !object || wanted.isEmpty())
        return false;
    object->setValue("title", app::toUtf8(wanted));
    Q_EMIT dataChanged(index, index);
    m_delegate.saveAction();
    return true;
}

Qt::ItemFlags SourceListController::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    flags.setFlag(Qt::ItemIsEditable, isRenamable(index));
    flags.setFlag(Qt::ItemIsDropEnabled, isPlace(index) || kind(index) == SourceKind::Trash);
    return flags;
}

} // namespace viewcontrollers
