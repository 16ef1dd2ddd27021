include("${CMAKE_CURRENT_LIST_DIR}/arm-linux.cmake")
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(CMAKE_ASM_COMPILER arm-linux-gnueabi-g++)
# Silences remarks that GCC 6 passed some arguments in another way.
string(APPEND CMAKE_CXX_FLAGS_INIT " -Wno-psabi")
