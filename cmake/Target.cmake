# What a build is for: two choices, of which neither follows from the other.
#
# VESKO_PLATFORM, which a toolchain file sets, says what the library takes from its
# surroundings: who owns the array that the thread's GL slot lies in, which libraries
# there are, who serves the binder.
#   desktop    the loader owns the array; Debian's libraries; the rig
#   arm-linux  the thread pointer's array, as on a device; Debian's libraries; emulated
#   android    a device
# VESKO_PROCESSOR says which trampolines, layouts and names there are: arm is the 32-bit
# one, arm64 the 64-bit one, and other has nothing of its own.
if(NOT VESKO_PLATFORM)
    set(VESKO_PLATFORM desktop)
endif()
if(NOT VESKO_PLATFORM MATCHES "^(desktop|arm-linux|android)$")
    message(FATAL_ERROR "VESKO_PLATFORM is '${VESKO_PLATFORM}'; there are desktop, arm-linux and android")
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(VESKO_PROCESSOR arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    set(VESKO_PROCESSOR arm)
else()
    set(VESKO_PROCESSOR other)
endif()

# A device's own build states nothing, so only the desktop has a mark.
if(VESKO_PLATFORM STREQUAL desktop)
    add_compile_definitions(VESKO_PLATFORM_DESKTOP)
endif()

# Jumps to where no landing pad is and altered return addresses end the process, on
# processors that look; new devices have pages of 16 KiB.
if(VESKO_PROCESSOR STREQUAL arm64)
    add_compile_options(-mbranch-protection=standard)
    add_link_options(-Wl,-z,max-page-size=16384)
endif()
