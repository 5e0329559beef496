# SPDX-License-Identifier: Apache-2.0
# Cross build for 32-bit ARM, against the sysroot that ./dev test-arm makes, run by an emulator.
set(MDM_ARCHITECTURE armhf)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)

set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm;-L;${CMAKE_SYSROOT})

# Notes on what GCC 7.1 changed, for templates of the test framework.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
