# Android, 32-bit ARM. Divisions are the compiler's runtime library's, on a processor
# without them.
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(TARGET armv7a-linux-androideabi)
set(RUNTIME libclang_rt.builtins-arm-android.a)
set(CMAKE_CXX_FLAGS_INIT -mthumb)
set(CMAKE_ASM_FLAGS_INIT -mthumb)
include("${CMAKE_CURRENT_LIST_DIR}/android-ndk.cmake")
