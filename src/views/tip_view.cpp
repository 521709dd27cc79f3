// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/tip_view.h"

#include "views/icons.h"
#include "views/theme.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>
#include <array>

namespace views {

namespace {

struct Tip {
    std::string_view defaultsKey;
    const char *icon;
    const char *textKey;
};

/// In the order of `TipType`.
constexpr std::array<Tip, 7> tips{{
    {"TodayTip", "calendar", "Today"},
    {"InboxTip", "inbox", "Inbox"},
    {"LocationTip", "location", "Location"},
    {"TrashTip", "trash", "Trash"},
    {"FolderTip", "folder", "Folder"},
    {"ContextTip", "context", "Context"},
    {"SmartFolderTip", "smartfolder", "SmartFolder"},
}};

constexpr int iconSize = 56;
constexpr int textWidth = 340;

QJsonObject loadTipTable()
{
    QFile file(QStringLiteral(":/TipText.json"));
    const bool isOpen = file.open(QFile::ReadOnly);
    Q_ASSERT_X(isOpen, "TipPlaceHolderController", "Contents of TipText is nil");
    return isOpen ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

} // namespace

QString textForTipName(const QString &name)
{
    static const QJsonObject table = loadTipTable();
    const QString text = table.value(name).toString();
    if (!text.isEmpty())
        return QCoreApplication::translate("TipText", text.toUtf8().constData());
    return QCoreApplication::translate(
        "TipText", "Organizes tasks something they all have in common, such as a folder or when the task is due.");
}

TipPlaceHolderView::TipPlaceHolderView(foundation::Settings &settings, QWidget *parent)
    : QWidget(parent), m_settings(settings)
{
    m_content = new QWidget;
    m_icon = new QLabel;
    m_icon->setAlignment(Qt::AlignCenter);
    m_explanatoryText = new QLabel;
    m_explanatoryText->setObjectName(QStringLiteral("tipText"));
    m_explanatoryText->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_explanatoryText->setWordWrap(true);
    m_explanatoryText->setFixedWidth(textWidth);
    m_closeButton = new QToolButton;
    m_closeButton->setText(tr("Do not show this tip again"));
    m_closeButton->setObjectName(QStringLiteral("tipClose"));
    QSizePolicy policy = m_closeButton->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // so that nothing jumps as the pointer comes and goes
    m_closeButton->setSizePolicy(policy);
    m_closeButton->hide();
    connect(m_closeButton, &QToolButton::clicked, this, &TipPlaceHolderView::closeButtonClicked);
    auto *inner = new QVBoxLayout(m_content);
    inner->setSpacing(14);
    inner->addWidget(m_icon);
    inner->addWidget(m_explanatoryText, 0, Qt::AlignHCenter);
    inner->addWidget(m_closeButton, 0, Qt::AlignHCenter);
    auto *outer = new QVBoxLayout(this);
    outer->addStretch(2);
    outer->addWidget(m_content);
    outer->addStretch(3);
}

void TipPlaceHolderView::setTipType(viewcontrollers::TipType type)
{
    const Tip &tip = tips[static_cast<std::size_t>(type)];
    m_defaultsKey = tip.defaultsKey;
    m_content->setVisible(m_settings.boolean(tip.defaultsKey));
    fill(QString::fromLatin1(tip.icon), textForTipName(QString::fromLatin1(tip.textKey)));
}

void TipPlaceHolderView::setMessage(const QString &iconName, const QString &text)
{
    m_defaultsKey.clear();
    m_content->setVisible(true);
    fill(iconName, text);
}

void TipPlaceHolderView::fill(const QString &iconName, const QString &text)
{
    const Theme &theme = Theme::current();
    m_icon->setPixmap(iconPixmap(iconName, mixed(theme.text, theme.list, 0.28), iconSize, devicePixelRatioF()));
    m_explanatoryText->setText(text);
    m_explanatoryText->setFixedHeight(m_explanatoryText->heightForWidth(textWidth));
}

void TipPlaceHolderView::closeButtonClicked()
{
    m_settings.set(m_defaultsKey, false);
    m_content->hide();
}

void TipPlaceHolderView::enterEvent(QEnterEvent *)
{
    m_closeButton->setVisible(!m_defaultsKey.empty());
}

void TipPlaceHolderView::leaveEvent(QEvent *)
{
    m_closeButton->hide();
}

} // namespace views
