# SPDX-License-Identifier: GPL-3.0-or-later
# What belongs beside the programs in an installation; each program installs itself (quelvin_program).
install(FILES docs/man/quelvin.1 docs/man/qvl.1 docs/man/quelvin-service.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES completions/qvl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME qvl)
install(FILES completions/_qvl DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES README.md CHANGELOG.md docs/service.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES resources/demo/tasks.json DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
# How the desktop finds the window, and starts it for a call over D-Bus.
configure_file(${PROJECT_SOURCE_DIR}/resources/org.quelvin.Quelvin.service.in org.quelvin.Quelvin.service @ONLY)
install(FILES resources/org.quelvin.Quelvin.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/org.quelvin.Quelvin.service
    DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
install(FILES resources/icons/quelvin.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
    RENAME org.quelvin.Quelvin.svg)
