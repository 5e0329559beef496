# SPDX-License-Identifier: Apache-2.0
# Cross build for a machine of the list architectures, against the sysroot that ./dev makes, run by
# an emulator. MDM_ARCHITECTURE is its name there.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MDM_ARCHITECTURE)
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/architectures columns REGEX "^${MDM_ARCHITECTURE} ")
separate_arguments(columns UNIX_COMMAND "${columns}")
list(GET columns 1 CMAKE_LIBRARY_ARCHITECTURE)
list(GET columns 2 CMAKE_SYSTEM_PROCESSOR)
list(GET columns 3 suite)
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)

set(CMAKE_C_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-gcc)
set(CMAKE_CXX_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR};-L;${CMAKE_SYSROOT})

# Notes on what GCC 7.1 changed, for templates of the test framework.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

# Libraries of a newer suite need its C and C++ libraries. Those of this system's compiler are older.
if(NOT suite STREQUAL "-")
    set(libraries ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
    set(CMAKE_EXE_LINKER_FLAGS_INIT -L${libraries})
    set(CMAKE_SHARED_LINKER_FLAGS_INIT -L${libraries})
    set(CMAKE_CXX_STANDARD_LIBRARIES ${libraries}/libstdc++.so.6)
endif()
