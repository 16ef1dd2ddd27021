# What loading costs on a desktop is page faults first of all. Packed, 6600 relative
# relocations take one page instead of 40; and code may share a page with read-only
# data. (Android's options are in android/platform.cmake.)
if(NOT CMAKE_CROSSCOMPILING)
    include(CheckLinkerFlag)
    foreach(option pack-relative-relocs noseparate-code)
        check_linker_flag(CXX "-Wl,-z,${option}" LINKER_HAS_${option})
        if(LINKER_HAS_${option})
            list(APPEND DESKTOP_LINK_OPTIONS -Wl,-z,${option})
        endif()
    endforeach()
endif()

# plugin_library(NAME TRAMPOLINES): libtolvernvesko, from the folders' object
# libraries and the one that has the GL trampolines.
function(plugin_library name trampolines)
    add_library(${name} SHARED
        $<TARGET_OBJECTS:hook> $<TARGET_OBJECTS:interception> $<TARGET_OBJECTS:${trampolines}>
        $<TARGET_OBJECTS:GameImpl> $<TARGET_OBJECTS:monitor>)
    if(NOT VERSION_SCRIPT)
        set(VERSION_SCRIPT ${CMAKE_SOURCE_DIR}/libtolvernvesko.map)
    endif()
    set_target_properties(${name} PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}
        LINK_DEPENDS ${VERSION_SCRIPT})
    target_link_libraries(${name} PRIVATE android_log android_base android_utils pthread)
    # Functions bind inside the library, so that internal calls cost no detour;
    # exported data stays with the dynamic linker, since a program that refers to it
    # may hold the only copy.
    if(NOT SYMBOL_BINDING)
        set(SYMBOL_BINDING -Wl,-Bsymbolic-functions)
    endif()
    # Threads, their keys and the loader's slots point into the library as long as the
    # process lives: dlclose must not unload it.
    target_link_options(${name} PRIVATE
        ${SYMBOL_BINDING} -Wl,--version-script=${VERSION_SCRIPT}
        -Wl,-z,relro -Wl,-z,now -Wl,-z,nodelete -Wl,--gc-sections ${DESKTOP_LINK_OPTIONS})
endfunction()

plugin_library(tolvernvesko gl_trampolines)
