# 32-bit ARM Linux. The tree's own ABI is the soft-float one, to which softfp code is
# compatible.
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabi)
set(ROOT_NAME armel-root)
set(MAKE_ROOT "./dev arm")
set(EMULATOR qemu-arm-static)
include("${CMAKE_CURRENT_LIST_DIR}/emulated-linux.cmake")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mfloat-abi=softfp -mfpu=neon -mthumb")
set(CMAKE_ASM_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")
