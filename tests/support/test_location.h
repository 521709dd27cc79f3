// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qvl_location_manager_delegate.h"

namespace support {

/// A computer that is where the test says, and how often it was asked. Must outlive what asks it.
class TestLocation
{
public:
    [[nodiscard]] app::QVLLocationManagerDelegate::MakeManager makeManager()
    {
        return [this](const foundation::Settings &) { return std::make_unique<Manager>(*this); };
    }
    void moveTo(const location::Coordinate &place) const { m_asking->handlers.didUpdateToLocation(place); }
    void fail(location::LocationErrorCode code, std::string sentence) const
    {
        m_asking->handlers.didFailWithError(
            {location::locationErrorDomain, static_cast<int>(code), std::move(sentence), {}});
    }
    [[nodiscard]] bool isAsked() const { return m_asking != nullptr; }

    int starts = 0;

private:
    struct Manager final : location::LocationManager {
        explicit Manager(TestLocation &asked) : owner(asked) { }
        ~Manager() override { owner.m_asking = nullptr; }
        void startUpdatingLocation(Handlers given) override
        {
            handlers = std::move(given);
            owner.m_asking = this;
            ++owner.starts;
        }
        TestLocation &owner;
        Handlers handlers;
    };

    Manager *m_asking = nullptr;
};

} // namespace support
