# SPDX-License-Identifier: Apache-2.0
# Hardening, as mdm-flags: each flag is a default, for a builder whose own flags do not speak of the
# same thing.
include(CheckSourceCompiles)

# The builder's flags of a kind (a language, or a kind of linked file): from the environment, the
# command line, a toolchain file or a super-project.
function(mdm_builder_flags kind)
    set(flags ${CMAKE_${kind}_FLAGS})
    foreach(configuration IN LISTS CMAKE_BUILD_TYPE CMAKE_CONFIGURATION_TYPES)
        string(TOUPPER ${configuration} configuration)
        list(APPEND flags ${CMAKE_${kind}_FLAGS_${configuration}})
    endforeach()
    foreach(property IN LISTS ARGN)
        get_directory_property(of_directory ${property})
        list(APPEND flags ${of_directory})
    endforeach()
    set(MDM_${kind}_FLAGS "${flags}" PARENT_SCOPE)
endfunction()

foreach(language C CXX)
    mdm_builder_flags(${language} COMPILE_OPTIONS COMPILE_DEFINITIONS)
    set(flags "${MDM_${language}_FLAGS}")
    set(here $<COMPILE_LANGUAGE:${language}>)
    if(NOT flags MATCHES "-f(no-)?stack-protector")
        target_compile_options(mdm-flags INTERFACE $<${here}:-fstack-protector-strong>)
    endif()
    if(NOT flags MATCHES "-f(no-)?plt")
        target_compile_options(mdm-flags INTERFACE $<${here}:-fno-plt>)
    endif()
    if(flags MATCHES _FORTIFY_SOURCE OR MDM_SANITIZE)
        continue() # the sanitizers bring checks of their own
    endif()
    set(CMAKE_REQUIRED_FLAGS -O2)
    check_source_compiles(${language}
        "#ifndef _FORTIFY_SOURCE\n#error\n#endif\nint main(void) { return 0; }"
        MDM_${language}_COMPILER_FORTIFIES)
    unset(CMAKE_REQUIRED_FLAGS)
    if(NOT MDM_${language}_COMPILER_FORTIFIES)
        set(here $<AND:${here},$<NOT:$<OR:$<CONFIG:Debug>,${MDM_IS_UNOPTIMISED}>>>)
        target_compile_options(mdm-flags INTERFACE $<${here}:-D_FORTIFY_SOURCE=2>)
    endif()
endforeach()

set(MDM_LINKER_HARDENING relro now noexecstack)
set(MDM_LINKER_OTHERS norelro lazy execstack)
set(kinds EXE_LINKER SHARED_LINKER MODULE_LINKER)
set(types EXECUTABLE SHARED_LIBRARY MODULE_LIBRARY)
foreach(kind type IN ZIP_LISTS kinds types)
    mdm_builder_flags(${kind} LINK_OPTIONS)
    set(flags "${MDM_${kind}_FLAGS};${MDM_C_FLAGS};${MDM_CXX_FLAGS}")
    set(here $<STREQUAL:$<TARGET_PROPERTY:TYPE>,${type}>)
    foreach(default other IN ZIP_LISTS MDM_LINKER_HARDENING MDM_LINKER_OTHERS)
        if(NOT flags MATCHES "[z, ](${default}|${other})($|[, ;])")
            target_link_options(mdm-flags INTERFACE $<${here}:-Wl,-z,${default}>)
        endif()
    endforeach()
endforeach()
