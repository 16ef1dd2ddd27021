# Android, API level 31, built against an NDK's sysroot by a host clang and lld. Of the
# rest of the NDK only RUNTIME is used, the compiler's runtime library where the target
# needs one. Included once CMAKE_SYSTEM_PROCESSOR and TARGET (without the API level) are set.
#
# CMake's own Android support is not: it insists on the NDK's compiler and on
# the NDK's C++ library, and a library that platform processes load needs the
# platform's.
set(ANDROID_API 31)
if(NOT ANDROID_NDK_ROOT)
    set(ANDROID_NDK_ROOT "$ENV{ANDROID_NDK_ROOT}")
endif()
set(CMAKE_SYSROOT "${ANDROID_NDK_ROOT}/toolchains/llvm/prebuilt/linux-x86_64/sysroot")
if(NOT ANDROID_NDK_ROOT OR NOT EXISTS "${CMAKE_SYSROOT}/usr/include/c++/v1/string")
    message(FATAL_ERROR "ANDROID_NDK_ROOT must name an NDK: there is no sysroot with C++ headers "
                        "in '${CMAKE_SYSROOT}'")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ANDROID_NDK_ROOT)

set(CMAKE_SYSTEM_NAME Linux)
set(VESKO_PLATFORM android)
set(VESKO_DESKTOP OFF)

set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET ${TARGET}${ANDROID_API})
set(CMAKE_ASM_COMPILER clang++)
set(CMAKE_ASM_COMPILER_TARGET ${TARGET}${ANDROID_API})
# The NDK's C++ library is not linked: what of it is needed, the platform's exports.
set(link_flags "-fuse-ld=lld -nodefaultlibs")
if(RUNTIME)
    file(GLOB COMPILER_RUNTIME "${ANDROID_NDK_ROOT}/toolchains/llvm/prebuilt/linux-x86_64/lib*/clang/*/lib/linux/${RUNTIME}")
    if(NOT COMPILER_RUNTIME)
        message(FATAL_ERROR "ANDROID_NDK_ROOT must name an NDK: there is no ${RUNTIME} in "
                            "'${ANDROID_NDK_ROOT}'")
    endif()
    list(GET COMPILER_RUNTIME 0 COMPILER_RUNTIME)
endif()
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
