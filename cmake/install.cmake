# SPDX-License-Identifier: Apache-2.0
# Puts the library, the headers, the pkg-config file and the CMake package in place.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(MDM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/mdm-common)

install(TARGETS mdm-common EXPORT mdm-common
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/mdm DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# Relative, so that the installed tree may be moved.
file(RELATIVE_PATH MDM_PREFIX_FROM_PC_FILE /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/mdm-common.pc.in mdm-common.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/mdm-common.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

configure_package_config_file(cmake/mdm-commonConfig.cmake.in mdm-commonConfig.cmake
    INSTALL_DESTINATION ${MDM_CMAKE_DIR})
write_basic_package_version_file(mdm-commonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/mdm-commonConfig.cmake
    ${PROJECT_BINARY_DIR}/mdm-commonConfigVersion.cmake
    DESTINATION ${MDM_CMAKE_DIR})
install(EXPORT mdm-common NAMESPACE mdm-common:: FILE mdm-commonTargets.cmake
    DESTINATION ${MDM_CMAKE_DIR})
