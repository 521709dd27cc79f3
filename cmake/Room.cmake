# SPDX-License-Identifier: GPL-3.0-or-later
# A room is one folder under src/ and one static library; its LINKS are the arrows it may draw.
# A program is an executable over rooms; a room test is one GoogleTest program per room.

add_library(quelvin_flags INTERFACE)
target_compile_options(quelvin_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2
    -Wno-missing-field-initializers # a designated initialiser names what differs from the defaults
    -Werror
    # GCC 12 sees uninitialised members in every moved std::variant, so that one warning is off.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<COMPILE_LANGUAGE:CXX>>:-Wduplicated-cond -Wlogical-op -Wno-maybe-uninitialized
    -fpch-preprocess>) # lets ccache see what a precompiled header holds
target_compile_definitions(quelvin_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400 _GLIBCXX_ASSERTIONS)
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(quelvin_flags INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)
    target_link_options(quelvin_flags INTERFACE -Wl,-z,relro,-z,now -pie)
endif()
if(QUELVIN_SANITIZE)
    target_compile_options(quelvin_flags INTERFACE -fsanitize=${QUELVIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(quelvin_flags INTERFACE -fsanitize=${QUELVIN_SANITIZE})
endif()

set(QUELVIN_STANDARD_HEADERS
    <algorithm> <array> <chrono> <cstdint> <functional> <map> <memory> <optional> <span> <string> <string_view>
    <unordered_map> <utility> <variant> <vector>)

function(quelvin_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(quelvin_${name} STATIC ${ROOM_SOURCES})
    add_library(Quelvin::${name} ALIAS quelvin_${name})
    target_include_directories(quelvin_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(quelvin_${name} PUBLIC ${ROOM_LINKS} PRIVATE quelvin_flags ${ROOM_PRIVATE_LINKS})
    target_precompile_headers(quelvin_${name} PRIVATE ${QUELVIN_STANDARD_HEADERS})
endfunction()

# PACKAGE is the package that the program belongs to (cmake/Install.cmake).
function(quelvin_program name)
    cmake_parse_arguments(PROGRAM "" "PACKAGE" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${PROGRAM_SOURCES})
    target_link_libraries(${name} PRIVATE quelvin_flags ${PROGRAM_LINKS})
    target_precompile_headers(${name} PRIVATE ${QUELVIN_STANDARD_HEADERS})
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${PROGRAM_PACKAGE})
endfunction()

function(quelvin_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE quelvin_flags ${TEST_LINKS} GTest::gmock GTest::gtest_main rapidcheck)
    target_precompile_headers(${name} PRIVATE ${QUELVIN_STANDARD_HEADERS} <gtest/gtest.h>)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
endfunction()

# A test that makes windows: the same, on a screen that nobody sees, with an application around it.
function(quelvin_gui_test name)
    cmake_parse_arguments(TEST "" "LOCK" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/gui_main.cpp)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE quelvin_flags ${TEST_LINKS} GTest::gmock GTest::gtest rapidcheck Qt6::Test)
    target_precompile_headers(${name} PRIVATE ${QUELVIN_STANDARD_HEADERS} <gtest/gtest.h>)
    set(lock "")
    if(TEST_LOCK)
        set(lock RESOURCE_LOCK ${TEST_LOCK})
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600 LABELS gui ${lock})
endfunction()
