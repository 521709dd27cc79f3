// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "model/entities.h"
#include "objectstore/object_context.h"

namespace model {

/// Writes the current time into `modifiedDate` of the tasks, folders and contexts that the user changes, which is how
/// synchronisation knows what to send. Work of the program itself runs with the tracking paused.
///
/// Observes one context, on that context's thread; tracks nothing until `registerForChangeNotifications`.
class EditTracking
{
public:
    /// Both must outlive the object.
    EditTracking(ObjectContext &moc, const foundation::Clock &clock) : m_moc(moc), m_clock(clock) { }
    EditTracking(const EditTracking &) = delete;
    EditTracking &operator=(const EditTracking &) = delete;

    /// Changes made before the call are announced first, and so are not tracked. Calling twice is as calling once.
    void registerForChangeNotifications();
    /// Changes made before the call are announced first, and so still tracked.
    void unregisterForChangeNotifications();
    [[nodiscard]] bool isRegistered() const { return m_registered; }

    /// Stamps the updated objects of an announcement.
    void updateManagedObjectModificationDates(const objectstore::ObjectsChange &change) const;

    /// Keeps the tracking off while it lives. Pauses nest: work inside a paused synchronisation does not end its pause.
    class Pause
    {
    public:
        explicit Pause(EditTracking &tracking) : m_tracking(&tracking) { m_tracking->beginPause(); }
        Pause(Pause &&other) noexcept : m_tracking(std::exchange(other.m_tracking, nullptr)) { }
        Pause &operator=(Pause &&) = delete;
        ~Pause()
        {
            if (m_tracking)
                m_tracking->endPause();
        }

    private:
        EditTracking *m_tracking;
    };
    [[nodiscard]] Pause pause() { return Pause(*this); }

private:
    void beginPause();
    void endPause();
    void observe();

    ObjectContext &m_moc;
    const foundation::Clock &m_clock;
    objectstore::Subscription m_subscription;
    bool m_registered = false;
    int m_pauses = 0;
};

} // namespace model
