# SPDX-License-Identifier: Apache-2.0
# Cross build for 32-bit x86, against the sysroot that ./dev makes to fuzz. A kernel for 64 bits
# runs the programs as they are; they find the sysroot's own libraries.
set(MDM_ARCHITECTURE i386)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)

set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER_TARGET i686-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET i686-linux-gnu)

# The search path is a DT_RPATH: the loader also uses it for the libraries that a library needs.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,--dynamic-linker=${CMAKE_SYSROOT}/lib/ld-linux.so.2 -Wl,--disable-new-dtags\
,-rpath,${CMAKE_SYSROOT}/lib/i386-linux-gnu,-rpath,${CMAKE_SYSROOT}/usr/lib/i386-linux-gnu")
