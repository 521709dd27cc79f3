// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>

namespace app {

/// The application: the event loop, and whether the lists are narrowed to the current location. Main thread.
class TMApplication final : public QApplication
{
    Q_OBJECT

public:
    TMApplication(int &argc, char **argv);

    [[nodiscard]] bool isFilteringByLocation() const { return m_isFilteringByLocation; }
    void setIsFilteringByLocation(bool isFiltering) { m_isFilteringByLocation = isFiltering; }

private:
    bool m_isFilteringByLocation = false;
};

} // namespace app
