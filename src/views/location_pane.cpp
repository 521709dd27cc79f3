// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/location_pane.h"

#include "app/text.h"
#include "location/coordinate_text.h"
#include "model/settings_defaults.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QStyle>
#include <QVBoxLayout>

namespace views {

namespace keys = model::keys;

LocationPane::LocationPane(app::TMApplicationDelegate &delegate, QWidget *parent)
    : QWidget(parent), m_delegate(delegate)
{
    auto *use = new QCheckBox(tr("Use my location"));
    use->setChecked(m_delegate.settings().boolean(keys::UseLocation));
    connect(use, &QCheckBox::toggled, this, [this](bool isOn) {
        m_delegate.settings().set(keys::UseLocation, isOn);
        m_delegate.locationController().applySettings();
    });
    auto *text = new QLabel(tr("Shows the tasks of the contexts that are less than a kilometre away. Your position "
                               "stays on this computer; it is compared with the places of your contexts."));
    text->setObjectName(QStringLiteral("subline"));
    text->setWordWrap(true);
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(9);
    addSource(*form);
    addBaudRate(*form);
    m_status = new QLabel;
    m_status->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->setSpacing(10);
    layout->addWidget(use);
    layout->addWidget(text);
    layout->addLayout(form);
    layout->addWidget(m_status);
    layout->addStretch();
    const app::QVLLocationManagerDelegate &location = m_delegate.locationController();
    connect(&location, &app::QVLLocationManagerDelegate::statusChanged, this, &LocationPane::showStatus);
    connect(&location, &app::QVLLocationManagerDelegate::locationUpdated, this, &LocationPane::showStatus);
    showFields();
    showStatus();
}

void LocationPane::addSource(QFormLayout &form)
{
    const QString file = app::toQString(m_delegate.settings().text(keys::NmeaSource));
    m_source = new QComboBox;
    m_source->addItems({tr("The desktop"), tr("A receiver or recording (NMEA)")});
    m_source->setCurrentIndex(file.isEmpty() ? 0 : 1);
    m_source->setAccessibleName(tr("Position from"));
    m_file = new QLineEdit(file);
    m_file->setPlaceholderText(QStringLiteral("/dev/ttyUSB0"));
    m_file->setAccessibleName(tr("Device or file"));
    m_choose = new QPushButton(tr("Choose…"));
    auto *fileRow = new QHBoxLayout;
    fileRow->setSpacing(8);
    fileRow->addWidget(m_file, 1);
    fileRow->addWidget(m_choose);
    form.addRow(tr("Position from"), m_source);
    form.addRow(tr("Device or file"), fileRow);
    connect(m_source, &QComboBox::activated, this, &LocationPane::takeSource);
    connect(m_file, &QLineEdit::editingFinished, this, &LocationPane::takeSource);
    connect(m_choose, &QPushButton::clicked, this, &LocationPane::chooseFile);
}

void LocationPane::addBaudRate(QFormLayout &form)
{
    m_baudRate = new QComboBox;
    m_baudRate->setAccessibleName(tr("Speed"));
    for (const int rate : {4800, 9600, 19200, 38400, 57600, 115200})
        m_baudRate->addItem(tr("%1 baud").arg(rate), rate);
    const auto chosen = static_cast<int>(m_delegate.settings().integer(keys::NmeaBaudRate));
    m_baudRate->setCurrentIndex(m_baudRate->findData(chosen));
    form.addRow(tr("Speed"), m_baudRate);
    connect(m_baudRate, &QComboBox::activated, this, [this] {
        m_delegate.settings().set(keys::NmeaBaudRate, std::int64_t{m_baudRate->currentData().toInt()});
        m_delegate.locationController().applySettings();
    });
}

void LocationPane::chooseFile()
{
    const QString chosen = QFileDialog::getOpenFileName(this, tr("Device or file"), m_file->text());
    if (chosen.isEmpty())
        return;
    m_file->setText(chosen);
    takeSource();
}

void LocationPane::takeSource()
{
    const bool isDesktop = m_source->currentIndex() == 0;
    const std::string file = isDesktop ? std::string() : app::toUtf8(m_file->text().trimmed());
    showFields();
    if (file == m_delegate.settings().text(keys::NmeaSource))
        return; // a field that was left as it was found
    m_delegate.settings().set(keys::NmeaSource, file);
    m_delegate.locationController().applySettings();
}

void LocationPane::showFields()
{
    const bool isDesktop = m_source->currentIndex() == 0;
    for (QWidget *field :
        {static_cast<QWidget *>(m_file), static_cast<QWidget *>(m_choose), static_cast<QWidget *>(m_baudRate)})
        field->setEnabled(!isDesktop);
}

void LocationPane::showStatus()
{
    const app::QVLLocationManagerDelegate &location = m_delegate.locationController();
    const bool hasFailed = location.status() == app::LocationStatus::Failed;
    m_status->setObjectName(hasFailed ? QStringLiteral("problem") : QStringLiteral("subline"));
    style()->unpolish(m_status); // which looks at the name again
    style()->polish(m_status);
    if (location.status() == app::LocationStatus::Off)
        m_status->clear(); // the box above says it
    else if (location.location())
        m_status->setText(tr("You are at %1.").arg(app::toQString(location::coordinateText(*location.location()))));
    else
        m_status->setText(location.statusText());
}

} // namespace views
