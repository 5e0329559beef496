# SPDX-License-Identifier: Apache-2.0
# mdm-flags: what every target of this project is compiled and linked with.
# mdm-shared-flags: what the shared library is linked with besides.
# A target with the property MDM_UNOPTIMISED is compiled without optimisation in every build.

add_library(mdm-flags INTERFACE)
target_compile_options(mdm-flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
set(MDM_IS_UNOPTIMISED $<BOOL:$<TARGET_PROPERTY:MDM_UNOPTIMISED>>)
# The C library warns where it is to fortify code that nobody optimises. This spelling also undoes
# what -Wp defines.
target_compile_options(mdm-flags INTERFACE
    $<${MDM_IS_UNOPTIMISED}:-O0$<SEMICOLON>-Wp,-U_FORTIFY_SOURCE>)

add_library(mdm-shared-flags INTERFACE)
target_link_options(mdm-shared-flags INTERFACE -Wl,--as-needed)

include(cmake/hardening.cmake)

if(MDM_SANITIZE)
    add_compile_options(-fsanitize=${MDM_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${MDM_SANITIZE})
else()
    # The sanitizers' runtime is found only when a program runs.
    target_link_options(mdm-shared-flags INTERFACE -Wl,--no-undefined)
endif()

if(MDM_COVERAGE)
    # Counters that threads share, and sources found by absolute path. The tests have counters as
    # well: of an inline function, the linker may keep their copy.
    add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
    add_link_options(--coverage)
endif()

# A C program that links the library. An instrumented library needs the C++ part of the
# sanitizers' runtime, which only the C++ compiler links.
function(mdm_add_c_program name)
    add_executable(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE mdm-common mdm-flags)
    if(MDM_SANITIZE)
        set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    endif()
endfunction()
