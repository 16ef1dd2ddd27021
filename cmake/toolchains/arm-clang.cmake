include("${CMAKE_CURRENT_LIST_DIR}/arm-linux.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/clang.cmake")
