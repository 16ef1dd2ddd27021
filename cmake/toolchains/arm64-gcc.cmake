include("${CMAKE_CURRENT_LIST_DIR}/arm64-linux.cmake")
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_ASM_COMPILER aarch64-linux-gnu-g++)
