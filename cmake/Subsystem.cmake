# What most files of the library include, compiled once. The flags of a subsystem must be these, or it is not used.
add_library(zmfb_headers OBJECT "${CMAKE_CURRENT_LIST_DIR}/headers.cpp")
target_link_libraries(zmfb_headers PRIVATE zmfb_warnings fmt::fmt)
target_precompile_headers(zmfb_headers PRIVATE
    <algorithm> <array> <fmt/format.h> <map> <memory> <optional> <span> <string> <vector>)

# zmfb_subsystem(NAME folder SOURCES file... MAY_INCLUDE folder...)
#
# Makes the object library zmfb_<folder> of one subsystem folder. The folder sees its own headers and those of
# the folders in MAY_INCLUDE and no others: each is reached through a directory that holds only a link to it,
# so a forbidden include does not compile. host/ and dbf/ are two such folders each: their public headers lie in
# include/zmfbconn/ under these names.
function(zmfb_subsystem)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;MAY_INCLUDE" ${ARGN})
    add_library(zmfb_${ARG_NAME} OBJECT ${ARG_SOURCES})
    target_link_libraries(zmfb_${ARG_NAME} PRIVATE zmfb_warnings fmt::fmt)
    target_precompile_headers(zmfb_${ARG_NAME} REUSE_FROM zmfb_headers)
    foreach(folder IN LISTS ARG_NAME ARG_MAY_INCLUDE)
        if(NOT IS_DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}")
            continue()
        endif()
        zmfb_view(${folder} "${folder}")
        target_include_directories(zmfb_${ARG_NAME} PRIVATE "${PROJECT_BINARY_DIR}/include/${folder}")
        if(IS_DIRECTORY "${PROJECT_SOURCE_DIR}/include/zmfbconn/${folder}")
            zmfb_view(public_${folder} include/zmfbconn/${folder})
            target_include_directories(zmfb_${ARG_NAME} PRIVATE "${PROJECT_BINARY_DIR}/include/public_${folder}")
        endif()
    endforeach()
    # The frame of conn/ stands on the declarations of the methods.
    if("conn" IN_LIST ARG_NAME OR "conn" IN_LIST ARG_MAY_INCLUDE)
        target_include_directories(zmfb_${ARG_NAME} PRIVATE ${zmfb_public_headers})
    endif()
endfunction()

# zmfb_view(name folder): include/<name> in the build folder, with a link to `folder` of the sources and nothing else.
function(zmfb_view name folder)
    set(view "${PROJECT_BINARY_DIR}/include/${name}")
    file(MAKE_DIRECTORY "${view}")
    cmake_path(GET folder FILENAME link)
    file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${folder}" "${view}/${link}" SYMBOLIC)
endfunction()
