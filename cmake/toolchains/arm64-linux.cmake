# 64-bit ARM Linux. The emulated processor checks landing pads and signed addresses, with
# signatures that are quick to make.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(ROOT_NAME arm64-root)
set(MAKE_ROOT "./dev arm64")
set(EMULATOR qemu-aarch64-static -cpu "max,pauth-impdef=on")
include("${CMAKE_CURRENT_LIST_DIR}/emulated-linux.cmake")
