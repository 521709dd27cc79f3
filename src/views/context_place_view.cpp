// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/context_place_view.h"

#include "app/error_text.h"
#include "app/text.h"
#include "location/coordinate_text.h"
#include "viewcontrollers/undo_group.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

namespace views {

using viewcontrollers::UndoGroup;

namespace {

QString distanceText(double metres)
{
    const QLocale locale;
    if (metres < 1000)
        return ContextPlaceView::tr("%1 m from you.").arg(locale.toString(qRound(metres)));
    const double kilometres = metres / 1000;
    return ContextPlaceView::tr("%1 km from you.").arg(locale.toString(kilometres, 'f', kilometres < 10 ? 1 : 0));
}

} // namespace

ContextPlaceView::ContextPlaceView(app::TMApplicationDelegate &delegate, QWidget *parent)
    : QWidget(parent), m_delegate(delegate)
{
    m_useLocation = new QCheckBox(tr("Belongs to a place"));
    m_coordinate = new QLineEdit;
    m_coordinate->setPlaceholderText(tr("52.4915, 13.4236 or 52° 29.49' N, 13° 25.42' E"));
    m_coordinate->setAccessibleName(tr("Coordinates"));
    m_usePosition = new QPushButton(tr("Use My Position"));
    m_usePosition->setAutoDefault(false);
    m_alwaysShow = new QCheckBox(tr("Show its tasks everywhere"));
    m_message = new QLabel;
    m_message->setWordWrap(true);
    m_message->setMinimumHeight(2 * m_message->fontMetrics().lineSpacing()); // so that nothing jumps
    m_message->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_coordinate, 1);
    row->addWidget(m_usePosition);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(m_useLocation);
    layout->addLayout(row);
    layout->addWidget(m_message);
    layout->addWidget(m_alwaysShow);
    connect(m_useLocation, &QCheckBox::clicked, this, &ContextPlaceView::locationCheckboxChanged);
    connect(m_coordinate, &QLineEdit::editingFinished, this, &ContextPlaceView::takeCoordinate);
    connect(m_usePosition, &QPushButton::clicked, this, &ContextPlaceView::getCurrentLocation);
    connect(m_alwaysShow, &QCheckBox::clicked, this, &ContextPlaceView::alwaysShowChanged);
    connect(&m_delegate, &app::TMApplicationDelegate::commitEditing, this, &ContextPlaceView::takeCoordinate);
    connect(&m_delegate, &app::TMApplicationDelegate::objectsDidChange, this, &ContextPlaceView::follow);
    connect(&m_delegate.locationController(), &app::QVLLocationManagerDelegate::locationUpdated, this,
        &ContextPlaceView::showDistance);
    connect(&m_delegate.locationController(), &app::QVLLocationManagerDelegate::statusChanged, this,
        &ContextPlaceView::showDistance);
    showContext();
}

void ContextPlaceView::setContext(model::Contexts *context)
{
    if (context == m_context)
        return;
    takeCoordinate(); // of the one that was shown
    m_context = context;
    m_coordinate->setModified(false);
    showContext();
}

void ContextPlaceView::follow(const objectstore::ObjectsChange &change)
{
    const auto holdsMine = [this](const std::vector<objectstore::ManagedObject *> &objects) {
        return std::find(objects.begin(), objects.end(), m_context) != objects.end();
    };
    if (holdsMine(change.deleted))
        m_context = nullptr;
    else if (!holdsMine(change.updated))
        return;
    showContext();
}

void ContextPlaceView::showContext()
{
    const bool hasPlace = m_context && m_context->useLocation();
    m_useLocation->setEnabled(m_context);
    m_useLocation->setChecked(hasPlace);
    m_coordinate->setEnabled(hasPlace);
    m_usePosition->setEnabled(hasPlace);
    m_alwaysShow->setEnabled(m_context);
    m_alwaysShow->setChecked(m_context && m_context->alwaysShow());
    if (m_context && m_coordinate->isModified())
        return; // it is being typed
    const bool isSet = m_context && m_context->coordinate() != location::Coordinate{};
    m_coordinate->setText(isSet ? app::toQString(location::coordinateText(m_context->coordinate())) : QString());
    m_coordinate->setCursorPosition(0);
    showDistance();
}

void ContextPlaceView::showDistance()
{
    if (m_coordinate->isModified())
        return; // there may be a refusal to read
    const auto &here = m_delegate.locationController().location();
    if (!m_context || !m_context->useLocation())
        say({}, false);
    else if (m_context->coordinate() == location::Coordinate{})
        say(tr("Type where it is, or go there and use your position."), false);
    else
        say(here ? distanceText(location::metresBetween(*here, m_context->coordinate())) : QString(), false);
}

void ContextPlaceView::locationCheckboxChanged(bool isOn)
{
    const UndoGroup group(m_delegate.managedObjectContext(), tr("Change Place"));
    m_context->setUseLocation(isOn);
    m_coordinate->setModified(false);
    showContext();
    if (isOn)
        m_coordinate->setFocus();
}

void ContextPlaceView::alwaysShowChanged(bool isOn)
{
    const UndoGroup group(m_delegate.managedObjectContext(), tr("Change Place"));
    m_context->setAlwaysShow(isOn);
}

void ContextPlaceView::takeCoordinate()
{
    if (!m_context || !m_coordinate->isModified())
        return;
    const QString typed = m_coordinate->text().trimmed();
    if (typed.isEmpty())
        return store({});
    const auto place = location::readCoordinate(app::toUtf8(typed));
    if (!place)
        return say(app::errorText(place.error()), true);
    store(*place);
}

void ContextPlaceView::getCurrentLocation()
{
    const auto &here = m_delegate.locationController().location();
    if (here)
        store(*here);
    else
        say(m_delegate.locationController().statusText(), true);
}

void ContextPlaceView::store(const location::Coordinate &place)
{
    m_coordinate->setModified(false);
    {
        const UndoGroup group(m_delegate.managedObjectContext(), tr("Change Place"));
        m_context->setCoordinate(place);
    }
    showContext();
}

void ContextPlaceView::say(const QString &sentence, bool isProblem)
{
    m_message->setObjectName(isProblem ? QStringLiteral("problem") : QStringLiteral("subline"));
    style()->unpolish(m_message); // which looks at the name again
    style()->polish(m_message);
    m_message->setText(sentence);
}

} // namespace views
