# The platform's libraries and headers for a build outside the platform's tree.
#
# Each library is a stand-in made here: a shared object with the real soname that
# defines exactly the symbols in android/imports/NAME.txt, or for 64 bits in
# android/imports/64/NAME.txt. A new import therefore fails the link until somebody
# adds it to a list, having made sure that the library of API 31 exports it.
set(IMPORTS "${CMAKE_SOURCE_DIR}/android/imports")
if(VESKO_PROCESSOR STREQUAL arm64)
    string(APPEND IMPORTS /64)
endif()
function(platform_library name)
    set(list "${IMPORTS}/${name}.txt")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
    set(source "${CMAKE_BINARY_DIR}/platform/${name}.cpp")
    set(definitions "")
    # A line is a symbol type and a mangled name.
    file(STRINGS "${list}" lines REGEX "^(function|object) ")
    foreach(line IN LISTS lines)
        string(REPLACE " " ";" line "${line}")
        list(GET line 0 type)
        list(GET line 1 symbol)
        string(APPEND definitions
            "__asm__(\".globl ${symbol}\\n.type ${symbol}, %${type}\\n\"\n"
            "        \"${symbol}: .long 0\\n.size ${symbol}, 4\\n\");\n")
    endforeach()
    file(CONFIGURE OUTPUT "${source}" CONTENT "${definitions}" @ONLY)
    add_library(platform_${name} SHARED "${source}")
    set_target_properties(platform_${name} PROPERTIES
        OUTPUT_NAME ${name} PREFIX lib LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/platform")
    target_link_options(platform_${name} PRIVATE -nostdlib)
endfunction()

foreach(name log cutils base utils binder c++)
    platform_library(${name})
endforeach()

# Debian's packages of the platform's headers. Only the folders that the library
# uses are let in: the others would hide the sysroot's own.
find_path(PLATFORM_HEADERS binder/Parcel.h
    PATHS /usr/include/android REQUIRED NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
set(ANDROID_INCLUDE_DIR "${CMAKE_BINARY_DIR}/platform/include")
file(MAKE_DIRECTORY "${ANDROID_INCLUDE_DIR}")
foreach(folder android-base binder cutils log system utils)
    file(CREATE_LINK "${PLATFORM_HEADERS}/${folder}" "${ANDROID_INCLUDE_DIR}/${folder}" SYMBOLIC)
endforeach()

foreach(name log base utils)
    add_library(android_${name} INTERFACE)
    target_link_libraries(android_${name} INTERFACE platform_${name})
endforeach()
target_link_libraries(android_log INTERFACE platform_cutils platform_binder platform_c++)
# The platform's C library has the threads.
add_library(pthread INTERFACE)
target_link_libraries(pthread INTERFACE c m ${COMPILER_RUNTIME})

# The sysroot's C++ headers declare the NDK's C++ library unless told otherwise.
# What a game loads should be small; nothing here computes for long.
add_compile_options(
    -nostdinc++ -isystem ${CMAKE_SYSROOT}/usr/include/c++/v1 -D_LIBCPP_ABI_NAMESPACE=__1
    -fexceptions -Oz -fomit-frame-pointer -faddrsig)
# Relative relocations in the packed form that the platform's linker reads from
# API 30 on.
add_link_options(
    -Wl,--pack-dyn-relocs=relr -Wl,-z,defs -Wl,-z,noexecstack
    -Wl,--hash-style=gnu -Wl,--build-id -Wl,--icf=safe)
# Variables are bound inside the library too: no program is linked with it on a
# device, so none can hold the only copy of one.
set(SYMBOL_BINDING -Wl,-Bsymbolic)
set(VERSION_SCRIPT ${CMAKE_SOURCE_DIR}/android/libtolvernvesko.map)
set(CMAKE_SKIP_RPATH ON)
