# room_of(VARIABLE PATH): the room of a file, of those in the global property ROOMS;
# empty where it has none.
function(room_of variable path)
    get_property(rooms GLOBAL PROPERTY ROOMS)
    while(NOT path STREQUAL "" AND NOT path IN_LIST rooms)
        get_filename_component(path "${path}" DIRECTORY)
    endwhile()
    set(${variable} "${path}" PARENT_SCOPE)
endfunction()
