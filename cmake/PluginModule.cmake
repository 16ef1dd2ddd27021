# plugin_module(NAME SOURCES...): one folder of the library as a build target.
function(plugin_module name)
    add_library(${name} OBJECT ${ARGN})
    target_compile_options(${name} PRIVATE
        -fno-rtti -fvisibility=hidden -fvisibility-inlines-hidden
        -ffunction-sections -fdata-sections)
    target_include_directories(${name} SYSTEM PRIVATE ${ANDROID_INCLUDE_DIR})
endfunction()

# immortal_storage(SOURCES...): those that use platform/compiler/immortal.h, or give
# names to parts of an object in assembly.
function(immortal_storage)
    set_property(SOURCE ${ARGN} PROPERTY COMPILE_OPTIONS -fno-lto)
endfunction()

# Not linked: it holds static assertions only.
if(NOT VESKO_PROCESSOR STREQUAL other)
    plugin_module(arm_layout ${CMAKE_SOURCE_DIR}/arm/contract/layout.cpp)
endif()
