# ARM Linux as a stand-in for a device: the same processor, calling convention and
# data layout, under emulation. Included once the following are set, which say of which
# processor: CMAKE_SYSTEM_PROCESSOR, CMAKE_LIBRARY_ARCHITECTURE, ROOT_NAME (the target's
# file tree is build/ROOT_NAME unless ARM_ROOT names another), MAKE_ROOT (the command
# that unpacks it) and EMULATOR.
if(NOT ARM_ROOT)
    get_filename_component(ARM_ROOT "${CMAKE_CURRENT_LIST_DIR}/../../build/${ROOT_NAME}" ABSOLUTE)
endif()
if(NOT EXISTS "${ARM_ROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
    message(FATAL_ERROR "No file tree of ${CMAKE_LIBRARY_ARCHITECTURE} in ${ARM_ROOT}: run "
                        "${MAKE_ROOT}, or name one with -DARM_ROOT=DIR")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ARM_ROOT)

set(CMAKE_SYSTEM_NAME Linux)
set(VESKO_PLATFORM arm-linux)
set(CMAKE_SYSROOT "${ARM_ROOT}")

set(CMAKE_FIND_ROOT_PATH "${ARM_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The graphics drivers are named because emulated programs may not be able to list
# folders: the host's file offsets do not fit into 32 bits.
file(GLOB vulkan_driver "${ARM_ROOT}/usr/share/vulkan/icd.d/lvp_icd.*.json")
set(CMAKE_CROSSCOMPILING_EMULATOR ${EMULATOR} -L "${ARM_ROOT}"
    -E "VK_ICD_FILENAMES=${vulkan_driver}"
    -E "__EGL_VENDOR_LIBRARY_FILENAMES=${ARM_ROOT}/usr/share/glvnd/egl_vendor.d/50_mesa.json")
