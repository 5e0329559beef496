# SPDX-License-Identifier: Apache-2.0
# Cross builds against a sysroot of ./dev include this file. MDM_ARCHITECTURE is the package
# manager's name of the architecture; CMAKE_LIBRARY_ARCHITECTURE is its name in the libraries'
# directories.
set(CMAKE_SYSTEM_NAME Linux)
cmake_path(SET CMAKE_SYSROOT NORMALIZE
    ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-${MDM_ARCHITECTURE})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
