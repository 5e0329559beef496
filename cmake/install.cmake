# SPDX-License-Identifier: Apache-2.0
# Puts everything in place. Components: runtime is what programs run with, dev what they are built
# with, doc what their authors read.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(MDM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/mdm-common)

install(TARGETS mdm-common EXPORT mdm-common
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET mdm-common-archive)
    install(TARGETS mdm-common-archive ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
endif()
install(DIRECTORY include/mdm DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(FILES format/mdm.ksy format/mdm.lua COMPONENT dev
    DESTINATION ${CMAKE_INSTALL_DATADIR}/mdm-common)

# The prefix may still change when the library is installed, so the file is made in two steps.
foreach(directory LIBDIR INCLUDEDIR)
    set(MDM_PC_${directory} "\${prefix}")
    cmake_path(APPEND MDM_PC_${directory} ${CMAKE_INSTALL_${directory}})
endforeach()
# What a static library needs. Beside a shared library, only `pkg-config --static` names it.
list(TRANSFORM MDM_CXX_LIBRARIES REPLACE "^[^/].*" "-l\\0" OUTPUT_VARIABLE libraries)
list(JOIN libraries " " libraries)
string(STRIP "${libraries} ${CMAKE_THREAD_LIBS_INIT}" libraries)
if(NOT BUILD_SHARED_LIBS)
    set(MDM_PC_STATIC_REQUIRES ", libcrypto >= 3.0")
    set(MDM_PC_STATIC_LIBS " ${libraries}")
elseif(MDM_STATIC)
    set(MDM_PC_STATIC_REQUIRES "\nRequires.private: libcrypto >= 3.0")
    set(MDM_PC_STATIC_LIBS "\nLibs.private: ${libraries}")
endif()
set(MDM_PC_PREFIX @prefix@)
configure_file(cmake/mdm-common.pc.in mdm-common.pc.in @ONLY)
install(CODE "
    get_filename_component(prefix \"\${CMAKE_INSTALL_PREFIX}/\" ABSOLUTE)
    configure_file(\"${PROJECT_BINARY_DIR}/mdm-common.pc.in\"
        \"${PROJECT_BINARY_DIR}/mdm-common.pc\" @ONLY)"
    COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/mdm-common.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

configure_package_config_file(cmake/mdm-commonConfig.cmake.in mdm-commonConfig.cmake
    INSTALL_DESTINATION ${MDM_CMAKE_DIR})
write_basic_package_version_file(mdm-commonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/mdm-commonConfig.cmake
    ${PROJECT_BINARY_DIR}/mdm-commonConfigVersion.cmake
    DESTINATION ${MDM_CMAKE_DIR} COMPONENT dev)
install(EXPORT mdm-common NAMESPACE mdm-common:: FILE mdm-commonTargets.cmake
    DESTINATION ${MDM_CMAKE_DIR} COMPONENT dev)

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(FILES LICENSES/Apache-2.0.txt DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
    RENAME LICENSE)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
    FILES_MATCHING PATTERN *.md PATTERN *.svg REGEX "/docs/(debugging|other-languages)/.+"
    PATTERN docs/site EXCLUDE)
