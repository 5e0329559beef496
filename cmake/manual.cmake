# SPDX-License-Identifier: Apache-2.0
# The manual, made of the headers and of two pages of docs/. Needs doxygen.
find_program(MDM_DOXYGEN doxygen REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(MDM_MANUAL_DIR ${PROJECT_BINARY_DIR}/manual)
file(GLOB MDM_MANUAL_SOURCES CONFIGURE_DEPENDS include/mdm/*.h* include/mdm/body/*.h)
list(APPEND MDM_MANUAL_SOURCES
    ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/CMakeLists.txt
    ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/docs/Doxyfile
    ${PROJECT_SOURCE_DIR}/docs/reference.md ${PROJECT_SOURCE_DIR}/docs/wire-format.md
    ${PROJECT_SOURCE_DIR}/scripts/manual.py ${PROJECT_SOURCE_DIR}/tools/mdm-msg/mdm-msg.1)
add_custom_command(OUTPUT ${MDM_MANUAL_DIR}/made
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${MDM_MANUAL_DIR}
    COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/manual.py ${MDM_MANUAL_DIR}
    COMMAND ${CMAKE_COMMAND} -E touch ${MDM_MANUAL_DIR}/made
    DEPENDS ${MDM_MANUAL_SOURCES}
    VERBATIM)
add_custom_target(mdm-manual ALL DEPENDS ${MDM_MANUAL_DIR}/made)

if(MDM_INSTALL)
    install(DIRECTORY ${MDM_MANUAL_DIR}/man3 ${MDM_MANUAL_DIR}/man7
        DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT dev)
endif()
