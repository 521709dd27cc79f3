# SPDX-License-Identifier: GPL-3.0-or-later
# What belongs beside the programs in an installation; each program installs itself (quelvin_program).
install(FILES docs/man/qvl.1 docs/man/quelvin-service.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES completions/qvl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME qvl)
install(FILES completions/_qvl DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES README.md CHANGELOG.md docs/service.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES resources/demo/tasks.json DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
