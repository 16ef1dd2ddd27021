# may_include(TARGET WHAT...): the target's sources, and the headers of its folder,
# include of this repository only what is in their own folder and in WHAT: folders
# and single files, named from the root, folders without those in them. Checked
# while the target is built.
function(may_include target)
    get_target_property(folder ${target} SOURCE_DIR)
    get_target_property(sources ${target} SOURCES)
    file(GLOB headers CONFIGURE_DEPENDS ${folder}/*.h ${folder}/*.in)
    set(files ${headers})
    foreach(source IN LISTS sources)
        if(NOT source MATCHES "^\\$")
            get_filename_component(source ${source} ABSOLUTE BASE_DIR ${folder})
            list(APPEND files ${source})
        endif()
    endforeach()
    file(RELATIVE_PATH own ${CMAKE_SOURCE_DIR} ${folder})
    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.includes)
    set(script ${CMAKE_SOURCE_DIR}/cmake/CheckIncludes.cmake)
    add_custom_command(OUTPUT ${stamp}
        COMMAND ${CMAKE_COMMAND} -DROOT=${CMAKE_SOURCE_DIR} -DTARGET=${target} -DSTAMP=${stamp}
            "-DFILES=${files}" "-DALLOWED=${own};${ARGN}" -P ${script}
        DEPENDS ${files} ${script} ${CMAKE_CURRENT_LIST_FILE}
        COMMENT "Checking what ${target} includes" VERBATIM)
    add_custom_target(${target}_includes DEPENDS ${stamp})
    add_dependencies(${target} ${target}_includes)
endfunction()
