# The platform's own libraries, which a desktop has from Debian's packages.
# Nothing stands in for libbinder and libcutils here: the program that hosts the
# library supplies their symbols, as it may supply any of the others.
find_path(ANDROID_INCLUDE_DIR binder/Parcel.h PATH_SUFFIXES android REQUIRED)
foreach(name log base utils)
    string(TOUPPER ${name} upper)
    find_library(ANDROID_${upper}_LIBRARY ${name}
        PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH REQUIRED)
    add_library(android_${name} INTERFACE)
    target_include_directories(android_${name} SYSTEM INTERFACE ${ANDROID_INCLUDE_DIR})
    target_link_libraries(android_${name} INTERFACE ${ANDROID_${upper}_LIBRARY})
endforeach()
