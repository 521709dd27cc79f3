// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWindow;

namespace platform {

/// Shows a window in front of all others with the keyboard's focus, because the user has just asked for it, though in
/// another program. Main thread.
void bringToFront(QWindow &window);

} // namespace platform
