# SPDX-License-Identifier: GPL-3.0-or-later
# What belongs beside the programs in an installation; each program installs itself (quelvin_program).
# Two components, which become two packages: "quelvin" for the desktop and "quelvin-service" for whoever runs a service.
find_program(GZIP gzip REQUIRED)
find_program(RSVG_CONVERT rsvg-convert)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME quelvin)
set(QUELVIN_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    CACHE STRING "Where zsh looks for completions; Debian's packages use another folder than /usr/local")
set(QUELVIN_HOLD ${PROJECT_BINARY_DIR}/install) # where files are made that are installed as they are

# quelvin_install_compressed(SOURCE DESTINATION COMPONENT [NAME]): a file as .gz, without a time in it.
function(quelvin_install_compressed source destination component)
    get_filename_component(name ${source} NAME)
    if(ARGC GREATER 3)
        set(name ${ARGV3})
    endif()
    set(compressed ${QUELVIN_HOLD}/${component}/${name}.gz)
    file(MAKE_DIRECTORY ${QUELVIN_HOLD}/${component})
    add_custom_command(OUTPUT ${compressed} DEPENDS ${PROJECT_SOURCE_DIR}/${source} VERBATIM
        COMMAND sh -c "${GZIP} -9nc \"$0\" >\"$1\"" ${PROJECT_SOURCE_DIR}/${source} ${compressed})
    set_property(GLOBAL APPEND PROPERTY QUELVIN_INSTALLED_FILES ${compressed})
    install(FILES ${compressed} DESTINATION ${destination} COMPONENT ${component})
endfunction()

# quelvin_install_with_paths(SOURCE DESTINATION COMPONENT): a file that names the folder of the programs. It is written
# at the installation, since only then the prefix is known.
function(quelvin_install_with_paths source destination component)
    get_filename_component(name ${source} NAME_WLE)
    install(CODE "
        set(QUELVIN_BINDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
        configure_file(\"${PROJECT_SOURCE_DIR}/${source}\" \"${QUELVIN_HOLD}/${destination}/${name}\" @ONLY)
        file(INSTALL \"${QUELVIN_HOLD}/${destination}/${name}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${destination}\")"
        COMPONENT ${component})
endfunction()

foreach(page quelvin qvl qvl-sync)
    quelvin_install_compressed(docs/man/${page}.1 ${CMAKE_INSTALL_MANDIR}/man1 quelvin)
endforeach()
quelvin_install_compressed(docs/man/quelvin-service.1 ${CMAKE_INSTALL_MANDIR}/man1 quelvin-service)

install(FILES completions/qvl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME qvl)
install(FILES completions/_qvl DESTINATION ${QUELVIN_ZSH_COMPLETIONS})

# How the desktop finds the window, and starts it for a call over D-Bus.
install(FILES resources/org.quelvin.Quelvin.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES resources/org.quelvin.Quelvin.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
quelvin_install_with_paths(resources/org.quelvin.Quelvin.service.in ${CMAKE_INSTALL_DATADIR}/dbus-1/services quelvin)
quelvin_install_with_paths(resources/quelvin-service.service.in lib/systemd/user quelvin-service)

set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES resources/icons/quelvin.svg DESTINATION ${icons}/scalable/apps RENAME org.quelvin.Quelvin.svg)
install(FILES resources/org.quelvin.Quelvin-symbolic.svg DESTINATION ${icons}/symbolic/apps)
set(sizes 16 22 24 32 48 64 128 256)
if(NOT RSVG_CONVERT)
    message(WARNING "There is no rsvg-convert, so the icon is installed as SVG alone.")
    set(sizes "")
endif()
foreach(size IN LISTS sizes)
    set(drawn ${QUELVIN_HOLD}/icons/${size}/org.quelvin.Quelvin.png)
    file(MAKE_DIRECTORY ${QUELVIN_HOLD}/icons/${size})
    add_custom_command(OUTPUT ${drawn} DEPENDS ${PROJECT_SOURCE_DIR}/resources/icons/quelvin.svg VERBATIM
        COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${drawn}
            ${PROJECT_SOURCE_DIR}/resources/icons/quelvin.svg)
    set_property(GLOBAL APPEND PROPERTY QUELVIN_INSTALLED_FILES ${drawn})
    install(FILES ${drawn} DESTINATION ${icons}/${size}x${size}/apps)
endforeach()

# Each package has its licence, what changed, and what to read.
foreach(component quelvin quelvin-service)
    set(documents ${CMAKE_INSTALL_DATADIR}/doc/${component})
    install(FILES packaging/debian/copyright DESTINATION ${documents} COMPONENT ${component})
    quelvin_install_compressed(CHANGELOG.md ${documents} ${component} changelog)
    quelvin_install_compressed(packaging/debian/changelog ${documents} ${component} changelog.Debian)
endforeach()
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quelvin)
install(DIRECTORY docs/guide DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quelvin)
install(FILES resources/demo/tasks.json DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quelvin/examples)
install(FILES docs/service.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quelvin-service COMPONENT quelvin-service)

get_property(installed GLOBAL PROPERTY QUELVIN_INSTALLED_FILES)
add_custom_target(quelvin_installed_files ALL DEPENDS ${installed})
