# SPDX-License-Identifier: GPL-3.0-or-later
# Two Debian packages by `cpack -G DEB`: the desktop's and the service's. tools/package makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quelvin)
set(CPACK_PACKAGE_CONTACT "Quelvin developers <packages@quelvin.org>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR ON) # so that files which hold the prefix see /usr, not the folder in which the package is laid out
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL quelvin quelvin-service)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_QUELVIN_PACKAGE_NAME quelvin)
set(CPACK_DEBIAN_QUELVIN_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_QUELVIN_DESCRIPTION "task manager with two-way synchronisation
Quelvin keeps tasks in folders, contexts and tags in one file on the disk. It
has a window with smart folders, reminders and a quick entry that opens from
any program, and a command line, qvl, over the same tasks.

It synchronises in both directions with the service Toodledo, or with one of
your own: see the package quelvin-service.")
set(CPACK_DEBIAN_QUELVIN_PACKAGE_DEPENDS hicolor-icon-theme) # Qt's plugins for X11 and SVG lie beside its libraries
# Wayland, Qt's own texts in other languages, the look of the desktop, one running program, notifications, hot keys
# under Wayland, screen readers, the position.
string(JOIN ", " CPACK_DEBIAN_QUELVIN_PACKAGE_RECOMMENDS
    qt6-wayland qt6-translations-l10n qt6-gtk-platformtheme "default-dbus-session-bus | dbus-session-bus"
    "notification-daemon" xdg-desktop-portal at-spi2-core geoclue-2.0
    libqt6positioning6-plugins)
set(CPACK_DEBIAN_QUELVIN_PACKAGE_SUGGESTS quelvin-service)

set(CPACK_DEBIAN_QUELVIN-SERVICE_PACKAGE_NAME quelvin-service)
set(CPACK_DEBIAN_QUELVIN-SERVICE_PACKAGE_SECTION net)
set(CPACK_COMPONENT_QUELVIN-SERVICE_DESCRIPTION "service that task stores synchronise with
The other end of a synchronisation, for your own machine: accounts, TLS and
plain http on one port, and one SQLite file. A systemd unit for the user who
owns the data comes along.

The package quelvin holds the window and the command line.")
set(CPACK_DEBIAN_QUELVIN-SERVICE_PACKAGE_SUGGESTS "quelvin, sqlite3")
set(scripts ${PROJECT_SOURCE_DIR}/packaging/debian/quelvin-service)
set(CPACK_DEBIAN_QUELVIN-SERVICE_PACKAGE_CONTROL_EXTRA "${scripts}/prerm;${scripts}/postinst")
set(CPACK_DEBIAN_QUELVIN-SERVICE_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
