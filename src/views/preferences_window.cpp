// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/preferences_window.h"

#include "app/text.h"
#include "model/settings_defaults.h"
#include "viewcontrollers/task_columns.h"
#include "views/icons.h"
#include "views/location_pane.h"
#include "views/shortcut_recorder.h"
#include "views/theme.h"

#include <QColorDialog>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace views {

using app::toQString;
using app::toUtf8;
namespace keys = model::keys;

namespace {

struct UserColor {
    std::string_view key;
    const char *text;
    QColor Theme::*inUse; ///< the theme's own while the setting is at its default
};

constexpr UserColor userColors[] = {
    {keys::BackgroundColor, QT_TRANSLATE_NOOP("views::PreferencesWindow", "Task list"), &Theme::list},
    {keys::DetailBackgroundColor, QT_TRANSLATE_NOOP("views::PreferencesWindow", "Details"), &Theme::detail},
    {keys::TitleStartColor, QT_TRANSLATE_NOOP("views::PreferencesWindow", "Title, from"), &Theme::titleStart},
    {keys::TitleEndColor, QT_TRANSLATE_NOOP("views::PreferencesWindow", "Title, to"), &Theme::titleEnd},
};

QPixmap swatch(const QColor &color, const QSize &size, double scale)
{
    QPixmap picture(size * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Theme::current().border);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(QPointF(0.5, 0.5), QSizeF(size) - QSizeF(1, 1)), 6, 6);
    return picture;
}

constexpr std::string_view tipKeys[]
    = {"TodayTip", "InboxTip", "LocationTip", "TrashTip", "FolderTip", "ContextTip", "SmartFolderTip"};

QVBoxLayout *paneLayout(QWidget *pane)
{
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->setSpacing(10);
    return layout;
}

QFormLayout *makeForm()
{
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(9);
    return form;
}

} // namespace

PreferencesWindow::PreferencesWindow(app::TMApplicationDelegate &delegate, QWidget *parent)
    : QDialog(parent), m_delegate(delegate), m_connectionTest(delegate.settings(), delegate.clock())
{
    setAttribute(Qt::WA_DeleteOnClose);
    auto *bar = new QWidget;
    bar->setObjectName(QStringLiteral("paneBar"));
    m_bar = new QHBoxLayout(bar);
    m_bar->setContentsMargins(12, 8, 12, 8);
    m_bar->setSpacing(4);
    m_buttons = new QButtonGroup(this);
    m_panes = new QStackedWidget;
    addPane(tr("General"), QStringLiteral("settings"), makeGeneralPane());
    addPane(tr("Colors"), QStringLiteral("palette"), makeColorsPane());
    addPane(tr("Sync"), QStringLiteral("sync"), makeSyncPane());
    addPane(tr("Location"), QStringLiteral("location"), new LocationPane(m_delegate));
    addPane(tr("Columns"), QStringLiteral("detail"), makeColumnsPane());
    addPane(tr("Shortcut"), QStringLiteral("keyboard"), makeShortcutPane());
    m_bar->addStretch();
    connect(m_buttons, &QButtonGroup::idClicked, this, [this](int pane) {
        m_panes->setCurrentIndex(pane);
        setWindowTitle(m_buttons->button(pane)->text());
    });
    m_buttons->button(0)->click();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(m_panes);
    setMinimumWidth(std::max(520, bar->sizeHint().width())); // every title readable
    for (QPushButton *button : findChildren<QPushButton *>())
        button->setAutoDefault(false); // Return in a field must press nothing
}

void PreferencesWindow::addPane(const QString &title, const QString &iconName, QWidget *pane)
{
    auto *button = new QToolButton;
    button->setText(title);
    button->setIcon(icon(iconName));
    button->setIconSize({24, 24});
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setCheckable(true);
    button->setFocusPolicy(Qt::StrongFocus); // the ring lies on the pane that was clicked
    m_bar->addWidget(button);
    m_buttons->addButton(button, m_panes->addWidget(pane));
}

QCheckBox *PreferencesWindow::checkBox(const QString &text, std::string_view key, const std::function<void()> &changed)
{
    auto *box = new QCheckBox(text);
    box->setChecked(m_delegate.settings().boolean(key));
    connect(box, &QCheckBox::toggled, this, [this, key, changed](bool isOn) {
        m_delegate.settings().set(key, isOn);
        changed();
    });
    return box;
}

QWidget *PreferencesWindow::makeGeneralPane()
{
    auto *pane = new QWidget;
    QVBoxLayout *layout = paneLayout(pane);
    const auto shown = [this] { Q_EMIT visibilityChanged(); };
    const auto badge = [this] { m_delegate.updateDockBadge(); };
    layout->addWidget(checkBox(tr("Show completed tasks"), keys::ShowCompletedTasks, shown));
    layout->addWidget(checkBox(tr("Apply this to smart folders, too"), keys::SmartFoldersApplyShowCompleted, shown));
    layout->addSpacing(8);
    layout->addWidget(checkBox(tr("Count Today in the badge"), keys::ShowTodayInBadge, badge));
    layout->addWidget(checkBox(tr("Count the Inbox in the badge"), keys::ShowInboxInBadge, badge));
    layout->addSpacing(8);
    auto *appearance = new QComboBox;
    for (const auto &[text, value] :
        {std::pair{tr("As the desktop"), ""}, {tr("Light"), "light"}, {tr("Dark"), "dark"}})
        appearance->addItem(text, QString::fromLatin1(value));
    appearance->setCurrentIndex(std::max(0, appearance->findData(toQString(m_delegate.settings().text("Appearance")))));
    connect(appearance, &QComboBox::activated, this, [this, appearance] {
        m_delegate.settings().set("Appearance", toUtf8(appearance->currentData().toString()));
        Q_EMIT appearanceChanged();
    });
    auto *form = makeForm();
    form->addRow(tr("Appearance"), appearance);
    layout->addLayout(form);
    auto *tips = new QPushButton(tr("Show All Tips Again"));
    connect(tips, &QPushButton::clicked, this, [this] {
        for (const std::string_view key : tipKeys)
            m_delegate.settings().set(key, true);
        Q_EMIT visibilityChanged();
    });
    layout->addWidget(tips, 0, Qt::AlignLeft);
    layout->addStretch();
    return pane;
}

QWidget *PreferencesWindow::makeColorsPane()
{
    auto *pane = new QWidget;
    QVBoxLayout *layout = paneLayout(pane);
    auto *form = makeForm();
    for (const auto &[key, text, inUse] : userColors) {
        auto *well = new QToolButton;
        well->setIconSize({56, 22});
        well->setAccessibleName(tr(text));
        connect(well, &QToolButton::clicked, this, [this, which = key] { pickColor(which); });
        m_colorWells.push_back(well);
        form->addRow(tr(text), well);
    }
    layout->addLayout(form);
    auto *reset = new QPushButton(tr("Reset Colors"));
    connect(reset, &QPushButton::clicked, this, &PreferencesWindow::resetColors);
    layout->addWidget(reset, 0, Qt::AlignLeft);
    layout->addStretch();
    showColors();
    return pane;
}

void PreferencesWindow::showColors()
{
    for (std::size_t place = 0; place < m_colorWells.size(); ++place) {
        QToolButton *well = m_colorWells[place];
        well->setIcon(swatch(Theme::current().*userColors[place].inUse, well->iconSize(), devicePixelRatioF()));
    }
}

void PreferencesWindow::pickColor(std::string_view key)
{
    const auto color = std::find_if(
        std::begin(userColors), std::end(userColors), [key](const UserColor &known) { return known.key == key; });
    const QColor picked = QColorDialog::getColor(Theme::current().*color->inUse, this);
    if (!picked.isValid())
        return;
    m_delegate.settings().set(key, toUtf8(picked.name()));
    Q_EMIT appearanceChanged();
    showColors();
}

void PreferencesWindow::resetColors()
{
    for (const UserColor &color : userColors)
        m_delegate.settings().set(color.key, *m_delegate.settings().registeredDefault(color.key));
    Q_EMIT appearanceChanged();
    showColors();
}

QLineEdit *PreferencesWindow::textField(std::string_view key, bool isSecret)
{
    auto *field = new QLineEdit(toQString(m_delegate.settings().text(key)));
    field->setMinimumWidth(240);
    if (isSecret)
        field->setEchoMode(QLineEdit::Password);
    if (isSecret && m_delegate.settings().isInSecretStore(key))
        field->setPlaceholderText(tr("Kept in your keyring"));
    connect(field, &QLineEdit::textChanged, this,
        [this, key](const QString &text) { m_delegate.settings().set(key, toUtf8(text)); });
    return field;
}

QWidget *PreferencesWindow::makeSyncPane()
{
    auto *pane = new QWidget;
    QVBoxLayout *layout = paneLayout(pane);
    layout->addWidget(checkBox(tr("Synchronize with Toodledo"), keys::SyncToToodledo, [] {}));
    layout->addWidget(checkBox(tr("When Quelvin starts"), keys::SyncOnLaunch, [] {}));
    auto *interval = new QSpinBox;
    interval->setRange(0, 60 * 24);
    interval->setSpecialValueText(tr("Never"));
    interval->setSuffix(tr(" minutes"));
    interval->setValue(static_cast<int>(m_delegate.settings().integer(keys::SyncInterval)));
    connect(interval, &QSpinBox::valueChanged, this, [this](int minutes) {
        m_delegate.settings().set(keys::SyncInterval, std::int64_t{minutes});
        m_delegate.resetTimer();
    });
    auto *form = makeForm();
    form->addRow(tr("Repeat every"), interval);
    auto *email = textField(keys::ToodleDoUsername);
    form->addRow(tr("E-mail"), email);
    auto *password = textField(keys::ToodleDoPassword, true);
    form->addRow(tr("Password"), password);
    auto *server = textField(keys::ToodledoHost);
    server->setPlaceholderText(tr("sync.example.org"));
    form->addRow(tr("Server"), server);
    layout->addLayout(form);

    auto *test = new QPushButton(tr("Test Connection"));
    m_connectionStatus = new QLabel;
    m_connectionStatus->setObjectName(QStringLiteral("subline"));
    for (QLineEdit *field : {email, password, server}) // what was found out is not said of another account
        connect(field, &QLineEdit::textChanged, m_connectionStatus, &QLabel::clear);
    connect(test, &QPushButton::clicked, this, [this] {
        m_connectionStatus->setText(tr("Connecting…"));
        m_connectionTest.testConnection();
    });
    connect(&m_connectionTest, &app::ConnectionTest::finished, this, [this](bool isSuccessful) {
        m_connectionStatus->setText(isSuccessful ? tr("Connection succeeded") : tr("Connection FAILED!"));
    });
    auto *row = new QHBoxLayout;
    row->addWidget(test);
    row->addWidget(m_connectionStatus, 1);
    layout->addLayout(row);
    auto *sendAll = new QPushButton(tr("Send All Tasks as New…"));
    connect(sendAll, &QPushButton::clicked, this, &PreferencesWindow::setAllTasksToNew);
    layout->addWidget(sendAll, 0, Qt::AlignLeft);
    layout->addStretch();
    return pane;
}

void PreferencesWindow::setAllTasksToNew()
{
    if (!m_delegate.user().ask(tr("Every task will be sent to the service as a new one at the next synchronization."),
            tr("Send All"), tr("Cancel")))
        return;
    const auto tasks = m_delegate.managedObjectContext().fetch(model::everyTask());
    if (!tasks) {
        m_delegate.user().presentError(tasks.error());
        return;
    }
    for (objectstore::ManagedObject *task : *tasks)
        task->setValue("isNew", true);
}

QWidget *PreferencesWindow::makeColumnsPane()
{
    auto *pane = new QWidget;
    QVBoxLayout *layout = paneLayout(pane);
    for (const viewcontrollers::TaskColumnDescription &column : viewcontrollers::taskColumns) {
        if (!column.setting.empty())
            layout->addWidget(checkBox(QCoreApplication::translate("TaskTable", column.title), column.setting,
                [this] { Q_EMIT m_delegate.columnsDidChange(); }));
    }
    layout->addStretch();
    return pane;
}

QWidget *PreferencesWindow::makeShortcutPane()
{
    auto *pane = new QWidget;
    QVBoxLayout *layout = paneLayout(pane);
    auto *recorder
        = new ShortcutRecorder([this](const hotkeys::QVLKeyCombo &keyCombo) { return m_delegate.parts(keyCombo); });
    recorder->setKeyCombo(m_delegate.hotKey().keyCombo());
    recorder->setAccessibleName(tr("Quick entry"));
    recorder->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *form = makeForm();
    form->addRow(tr("Quick entry"), recorder);
    layout->addLayout(form);
    auto *text = new QLabel(tr("Opens a small window for a new task, whatever program you are working in. Click the "
                               "button, then type the new keys; Backspace removes them."));
    text->setObjectName(QStringLiteral("subline"));
    text->setWordWrap(true);
    layout->addWidget(text);
    auto *problem = new QLabel(m_delegate.hotKeyProblem());
    problem->setObjectName(QStringLiteral("problem"));
    problem->setWordWrap(true);
    layout->addWidget(problem);
    layout->addStretch();
    connect(recorder, &ShortcutRecorder::recordingChanged, this,
        [this](bool isRecording) { isRecording ? m_delegate.suspendHotKey() : m_delegate.initializeHotKey(); });
    connect(recorder, &ShortcutRecorder::keyComboDidChange, this,
        [this](const hotkeys::QVLKeyCombo &keyCombo) { m_delegate.changeHotKey(keyCombo); });
    connect(&m_delegate, &app::TMApplicationDelegate::hotKeyProblemChanged, problem, &QLabel::setText);
    return pane;
}

} // namespace views
