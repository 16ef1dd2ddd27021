# Android, 64-bit ARM. Atomic operations take no detour through functions that ask for
# the processor's kind, so nothing of the compiler's runtime library is needed.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(TARGET aarch64-linux-android)
set(CMAKE_CXX_FLAGS_INIT -mno-outline-atomics)
include("${CMAKE_CURRENT_LIST_DIR}/android-ndk.cmake")
