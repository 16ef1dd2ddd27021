# Script: fails where one of FILES includes code of this tree that the room ROOM may not,
# or imports it in Python.
# ROOT is the tree, ROOMS all rooms, ALLOWED rooms and single files. Touches STAMP.
cmake_minimum_required(VERSION 3.22)

include(${CMAKE_CURRENT_LIST_DIR}/RoomOf.cmake)
set_property(GLOBAL PROPERTY ROOMS ${ROOMS})

# check(FILE WHAT): FILE uses WHAT, a file of this tree.
function(check file what)
    room_of(room ${what})
    if(room STREQUAL "" OR
       (NOT room IN_LIST ALLOWED AND NOT what IN_LIST ALLOWED AND NOT room STREQUAL ROOM))
        message("${file}: ${ROOM} may not include ${what}")
        set(failed TRUE PARENT_SCOPE)
    endif()
endfunction()

set(failed FALSE)
foreach(file IN LISTS FILES)
    if(file MATCHES "\\.py$")
        file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*(from|import)[ \t]+(tools|tests)[. ]")
        foreach(line IN LISTS lines)
            string(REGEX REPLACE "^[ \t]*[a-z]+[ \t]+([a-zA-Z0-9_.]+).*$" "\\1" module "${line}")
            string(REPLACE "." "/" module ${module})
            check(${file} ${module})
        endforeach()
        continue()
    endif()
    file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "^[^<\"]*([<\"])([^>\"]+).*$" "\\1;\\2" parts "${line}")
        list(POP_FRONT parts kind include)
        room_of(room ${include})
        if(room STREQUAL "" OR NOT EXISTS ${ROOT}/${include})
            if(kind STREQUAL "\"")
                message("${file}: \"${include}\" is not named from the tree's root")
                set(failed TRUE)
            endif()
            continue()  # the system's
        endif()
        check(${file} ${include})
    endforeach()
endforeach()
if(failed)
    message(FATAL_ERROR "cmake/Rooms.cmake states what each room may include")
endif()
file(TOUCH ${STAMP})
