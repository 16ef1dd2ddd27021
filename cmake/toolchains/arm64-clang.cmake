include("${CMAKE_CURRENT_LIST_DIR}/arm64-linux.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/clang.cmake")
