include("${CMAKE_CURRENT_LIST_DIR}/arm-linux.cmake")
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
