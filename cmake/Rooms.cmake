# What may include what, for all code of the tree, Python's imports among it; includes
# are named from its root.
# From the ground up: a room names only what is stated above it, so no arrow runs up.
# The build keeps it: cmake/RoomChecks.cmake.
include(cmake/RoomChecks.cmake)

# The library.
room(platform)  # the lists of the loader's entries
room(platform/compiler)
room(platform/device)
room(platform/loader platform)
set(platform platform platform/compiler platform/device platform/loader)
room(games platform/compiler)
room(interception platform platform/compiler platform/loader)
room(monitor games platform/compiler platform/device)
room(GameImpl/common platform/device)
room(GameImpl/Filter ${platform})
room(GameImpl/FBOBase GameImpl/common ${platform})
room(GameImpl/AnyProgram GameImpl/Filter GameImpl/common interception monitor/GameInfo.h ${platform})
# The games' renderers and their factory.
room(GameImpl GameImpl/FBOBase GameImpl/Filter GameImpl/common games interception monitor/GameInfo.h ${platform})
room(hook GameImpl/AnyProgram games interception monitor ${platform})
set(library GameImpl GameImpl/AnyProgram GameImpl/FBOBase GameImpl/Filter GameImpl/common
    games hook interception monitor ${platform})
room(arm/contract ${library})
room(arm/host platform/loader)

# The rig, which stands in for a phone.
room(rig/clock)
room(rig/real_driver platform platform/loader)
room(rig/device GameImpl/Filter/filters.in monitor/game_parameters.in platform platform/device platform/loader)
room(rig/run games platform/device rig/device)
# Its loader: of the library, one part alone knows the classes.
room(rig/loader/thread platform platform/loader)
room(rig/loader/driver platform platform/loader)
room(rig/loader/tables platform platform/loader rig/device/call_counts.h rig/loader/driver)
room(rig/loader/quirks platform platform/loader rig/device/quirks.in rig/device/settings.h
    rig/loader/driver rig/loader/tables)
room(rig/loader/plugin platform/device platform/loader rig/device rig/loader/driver
    rig/loader/thread games hook/GPUVeskoMode.h hook/HookContext.h
    GameImpl/AnyProgram/ScaledGl.h GameImpl/GenshinImpact/GenshinImpactImpl.h GameImpl/sgame/SGAMEImpl.h)
room(rig/loader/statistics platform platform/loader rig/device rig/loader/driver
    rig/loader/tables rig/loader/thread)
room(rig/loader/limits platform platform/loader rig/loader/driver rig/loader/tables)
room(rig/loader/frames platform/loader rig/device rig/loader/driver rig/loader/limits
    rig/loader/plugin rig/loader/statistics rig/loader/thread)
room(rig/loader/entries platform platform/loader rig/device rig/loader/driver
    rig/loader/frames rig/loader/limits rig/loader/plugin rig/loader/tables
    rig/loader/thread hook/GPUVeskoMode.h)
room(rig/loader/core platform/loader rig/device rig/loader/driver rig/loader/entries
    rig/loader/frames rig/loader/limits rig/loader/plugin rig/loader/quirks
    rig/loader/statistics rig/loader/tables rig/loader/thread)
room(rig/loader/exports platform rig/loader/core/interface.h rig/loader/thread/slots.h)

# What is played under the rig knows neither it nor the library.
room(programs/scene)
room(programs/probes programs/scene)
room(programs/random_calls)

# What measures.
room(tools/common)
room(tools tools/common)
room(tools/bench tools/common ${library} rig/real_driver)
room(tools/conform tools/common)
room(tools/demo tools/common)
room(tools/faults tools/common)
room(tools/tune tools/common)

# Nothing but tests includes tests.
room(tests/support ${library})
room(tests/arm ${library} tests/support)
room(tests/arm/platform platform/device)
room(tests/unit ${library} tests/support)
room(tests/faults ${library} tests/support)
room(tests/fuzz ${library} tests/faults/modelled_driver.h tests/support)
room(tests/gl ${library} rig/real_driver tests/support)
room(tests/any ${library} rig/real_driver tests/support)
room(tests/device ${library} tests/support)
room(tests/rig rig/loader/statistics tests/support)
room(tests/android tests/rig tests/support tools/common)
room(tests/conform tests/support tools/common tools/conform)
room(tests/structure)
room(tests/tune tests/support tools/common tools/tune)

cmake_language(DEFER CALL check_rooms)
