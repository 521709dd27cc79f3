// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/first_run_controller.h"

#include "app/text.h"
#include "model/settings_defaults.h"

#include <QFormLayout>
#include <QVBoxLayout>

namespace views {

using app::toQString;
using app::toUtf8;
namespace keys = model::keys;

namespace {

QLabel *subline(const QString &text = {})
{
    auto *label = new QLabel(text);
    label->setObjectName(QStringLiteral("subline"));
    label->setWordWrap(true);
    return label;
}

} // namespace

FirstRunController::FirstRunController(app::TMApplicationDelegate &delegate, QWidget *parent)
    : QDialog(parent)
    , m_delegate(delegate)
    , m_connectionTest(delegate.settings(), delegate.clock())
    , m_server(field(keys::ToodledoHost, tr("Server")))
    , m_email(field(keys::ToodleDoUsername, tr("E-mail")))
    , m_password(field(keys::ToodleDoPassword, tr("Password")))
    , m_create(new QPushButton(tr("Create Account")))
    , m_test(new QPushButton(tr("Test Connection")))
    , m_done(new QPushButton)
    , m_status(subline())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Welcome"));
    m_server->setPlaceholderText(tr("sync.example.org"));
    m_password->setEchoMode(QLineEdit::Password);
    m_done->setDefault(true);
    auto *title = new QLabel(tr("Welcome to Quelvin"));
    title->setObjectName(QStringLiteral("windowTitle"));
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(9);
    form->addRow(tr("Server"), m_server);
    form->addRow(tr("E-mail"), m_email);
    form->addRow(tr("Password"), m_password);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_create);
    buttons->addWidget(m_test);
    buttons->addStretch();
    buttons->addWidget(m_done);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 28, 32, 24);
    layout->setSpacing(14);
    layout->addWidget(title);
    layout->addWidget(
        subline(tr("Your tasks stay on this computer. If you have an account at a service that speaks the "
                   "Toodledo protocol, they can be kept the same there, too. You can set this up later.")));
    layout->addLayout(form);
    layout->addWidget(m_status);
    layout->addLayout(buttons);
    setFixedWidth(540);
    connectButtons();
    showWhatCanBeDone();
}

QLineEdit *FirstRunController::field(std::string_view key, const QString &name)
{
    auto *field = new QLineEdit(toQString(m_delegate.settings().text(key)), this);
    field->setAccessibleName(name);
    if (m_delegate.settings().isInSecretStore(key))
        field->setPlaceholderText(tr("Kept in your keyring"));
    connect(field, &QLineEdit::textChanged, this, [this, key](const QString &typed) {
        m_delegate.settings().set(key, toUtf8(typed));
        m_status->clear(); // what was found out is not said of another account
        showWhatCanBeDone();
    });
    return field;
}

void FirstRunController::connectButtons()
{
    connect(m_create, &QPushButton::clicked, this, [this] {
        m_connectionTest.createAccount();
        m_status->setText(tr("Test the connection to see whether the account is there."));
    });
    connect(m_test, &QPushButton::clicked, this, [this] {
        m_status->setText(tr("Connecting…"));
        m_connectionTest.testConnection();
    });
    connect(&m_connectionTest, &app::ConnectionTest::finished, this, [this](bool isSuccessful) {
        m_status->setText(isSuccessful ? tr("Connection succeeded") : tr("Connection FAILED!"));
        if (!isSuccessful)
            return;
        m_delegate.settings().set(keys::HasBeenRun, true);
        m_done->setFocus(); // nothing is left to do here
    });
    connect(m_done, &QPushButton::clicked, this, [this] {
        m_delegate.settings().set(keys::HasBeenRun, true);
        close();
    });
}

void FirstRunController::showWhatCanBeDone()
{
    const bool hasPassword
        = !m_password->text().isEmpty() || m_delegate.settings().isInSecretStore(keys::ToodleDoPassword);
    const bool isComplete = !m_server->text().isEmpty() && !m_email->text().isEmpty() && hasPassword;
    m_create->setEnabled(isComplete);
    m_test->setEnabled(isComplete);
    m_done->setText(m_email->text().isEmpty() ? tr("Work Without an Account") : tr("Done"));
}

} // namespace views
