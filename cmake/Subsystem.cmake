# zmfb_subsystem(NAME folder SOURCES file... MAY_INCLUDE folder...)
#
# Makes the object library zmfb_<folder> of one subsystem folder. The folder sees its own headers and those of
# the folders in MAY_INCLUDE and no others: each is reached through a directory that holds only a link to it,
# so a forbidden include does not compile.
function(zmfb_subsystem)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;MAY_INCLUDE" ${ARGN})
    add_library(zmfb_${ARG_NAME} OBJECT ${ARG_SOURCES})
    target_link_libraries(zmfb_${ARG_NAME} PRIVATE zmfb_warnings fmt::fmt)
    foreach(folder IN LISTS ARG_NAME ARG_MAY_INCLUDE)
        if(NOT IS_DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}")
            continue()
        endif()
        set(view "${PROJECT_BINARY_DIR}/include/${folder}")
        file(MAKE_DIRECTORY "${view}")
        file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${folder}" "${view}/${folder}" SYMBOLIC)
        target_include_directories(zmfb_${ARG_NAME} PRIVATE "${view}")
    endforeach()
endfunction()
