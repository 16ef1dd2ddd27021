# 32-bit ARM Linux as a stand-in for a device: the same processor, calling
# convention and data layout, under emulation. Included by the two toolchain
# files that name a compiler.
#
# The file tree of the target is ARM_ROOT. Its own ABI is the soft-float one, to
# which softfp code is compatible.
if(NOT ARM_ROOT)
    get_filename_component(ARM_ROOT "${CMAKE_CURRENT_LIST_DIR}/../../build/armel-root" ABSOLUTE)
endif()
if(NOT EXISTS "${ARM_ROOT}/usr/lib/arm-linux-gnueabi")
    message(FATAL_ERROR "No ARM file tree in ${ARM_ROOT}: run ./dev arm, or name one with "
                        "-DARM_ROOT=DIR")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ARM_ROOT)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(VESKO_PLATFORM arm-linux)
set(CMAKE_SYSROOT "${ARM_ROOT}")
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabi)
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mfloat-abi=softfp -mfpu=neon -mthumb")
set(CMAKE_ASM_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")

set(CMAKE_FIND_ROOT_PATH "${ARM_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The graphics drivers are named because emulated programs may not be able to list
# folders: the host's file offsets do not fit into 32 bits.
file(GLOB vulkan_driver "${ARM_ROOT}/usr/share/vulkan/icd.d/lvp_icd.*.json")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L "${ARM_ROOT}"
    -E "VK_ICD_FILENAMES=${vulkan_driver}"
    -E "__EGL_VENDOR_LIBRARY_FILENAMES=${ARM_ROOT}/usr/share/glvnd/egl_vendor.d/50_mesa.json")
