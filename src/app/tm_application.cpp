// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tm_application.h"

namespace app {

TMApplication::TMApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("Quelvin"));
    setApplicationDisplayName(QStringLiteral("Quelvin"));
    setDesktopFileName(QStringLiteral("org.quelvin.Quelvin")); // also the name on the session bus
    // The window's close and the delegate decide when the program ends: a question may be open when one goes.
    setQuitOnLastWindowClosed(false);
}

} // namespace app
