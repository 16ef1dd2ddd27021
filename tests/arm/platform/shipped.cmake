# Takes the place of the library's own build: the Android library of VESKO_SHIPPED, byte
# for byte, at the place where tests and rig look for theirs.
configure_file(${VESKO_SHIPPED} ${CMAKE_BINARY_DIR}/libtolvernvesko.so COPYONLY)
add_library(tolvernvesko SHARED IMPORTED GLOBAL)
set_target_properties(tolvernvesko PROPERTIES
    IMPORTED_LOCATION ${CMAKE_BINARY_DIR}/libtolvernvesko.so)
# Its own libraries are found when it is loaded.
target_link_options(tolvernvesko INTERFACE -Wl,--allow-shlib-undefined)
list(APPEND CMAKE_CROSSCOMPILING_EMULATOR -E
    LD_LIBRARY_PATH=${CMAKE_BINARY_DIR}/platform:${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android)
# Under the rig nothing but the stand-ins serves it.
add_compile_definitions(RIG_PLUGIN_SCOPE=RTLD_DEEPBIND)
enable_testing()  # a folder that is added before it would have no tests
add_subdirectory(tests/arm/platform)

# Test programs share the library's C++ classes, and so are built with a C++ library of
# its namespace; GoogleTest too, from its sources.
if(BUILD_TESTING)
    add_library(platform_cxx INTERFACE)
    target_compile_options(platform_cxx INTERFACE -nostdinc++
        "SHELL:-isystem ${CMAKE_SYSROOT}/usr/lib/llvm-14/include/c++/v1")
    # What is linked in serves the program alone; the library has the stand-ins.
    target_link_options(platform_cxx INTERFACE -nostdlib++ -Wl,--exclude-libs,ALL)
    # That of the C++ library is named here, so that it comes before the GNU one, which
    # Debian's libutils needs and which has the same runtime functions.
    target_link_libraries(platform_cxx INTERFACE ${CMAKE_SYSROOT}/usr/lib/llvm-14/lib/libc++.a
        ${CMAKE_SYSROOT}/usr/lib/llvm-14/lib/libc++abi.a -l:libatomic.a stand_in_c++)
    set(googletest ${CMAKE_SYSROOT}/usr/src/googletest/googletest)
    configure_file(${googletest}/src/gtest-all.cc ${CMAKE_BINARY_DIR}/googletest/gtest-all.cc COPYONLY)
    add_library(platform_gtest STATIC ${CMAKE_BINARY_DIR}/googletest/gtest-all.cc)
    target_include_directories(platform_gtest SYSTEM
        PUBLIC ${googletest}/include PRIVATE ${googletest})
    target_link_libraries(platform_gtest PUBLIC platform_cxx)
    add_library(GTest::gtest ALIAS platform_gtest)
endif()
