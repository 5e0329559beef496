# SPDX-License-Identifier: Apache-2.0
# Cross build for 32-bit x86, against the sysroot that ./dev fuzz-all makes. A kernel for 64 bits
# runs the programs as they are; they find the sysroot's own libraries.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-i386)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_C_COMPILER_TARGET i686-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET i686-linux-gnu)

# The search path is the old kind, which counts for the libraries' own libraries as well.
cmake_path(ABSOLUTE_PATH CMAKE_SYSROOT NORMALIZE OUTPUT_VARIABLE MDM_SYSROOT)
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,--dynamic-linker=${MDM_SYSROOT}/lib/ld-linux.so.2 -Wl,--disable-new-dtags\
,-rpath,${MDM_SYSROOT}/lib/i386-linux-gnu,-rpath,${MDM_SYSROOT}/usr/lib/i386-linux-gnu")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/i386-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
