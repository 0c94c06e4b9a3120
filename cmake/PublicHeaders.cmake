# What a program sees of the library, in the build tree as in an installation:
#
#     zmfbconn.h               the C interface
#     zmfbconn/*.h             the connection object
#     zmfbconn/host/*.h        values and the runtime
#
# The headers of host/ that are listed here include each other by their bare names, so that they work in both
# places, and mark what they declare as exported (#pragma GCC visibility).
set(zmfb_public_host_headers
    array class compare date driver error file latin1 number screen settings text utf8 value workarea)
list(TRANSFORM zmfb_public_host_headers REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/host/\\1.h")
set(zmfb_generated_headers "${PROJECT_BINARY_DIR}/include/generated")
set(zmfb_public_headers
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/cancel.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/connection.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/database.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/blob.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/decimal.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/exact.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/rows.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/sql_error.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/sql_value.h"
    "${PROJECT_SOURCE_DIR}/include/zmfbconn/transaction.h"
    "${zmfb_generated_headers}/zmfbconn/version.h")

configure_file("${PROJECT_SOURCE_DIR}/include/zmfbconn/version.h.in"
    "${zmfb_generated_headers}/zmfbconn/version.h" @ONLY)

# One folder of links, so that an example in the build tree sees no more than an installed program does.
set(zmfb_public_view "${PROJECT_BINARY_DIR}/include/public")
file(REMOVE_RECURSE "${zmfb_public_view}")
file(MAKE_DIRECTORY "${zmfb_public_view}/zmfbconn/host")
file(CREATE_LINK "${PROJECT_SOURCE_DIR}/include/zmfbconn.h" "${zmfb_public_view}/zmfbconn.h" SYMBOLIC)
foreach(header IN LISTS zmfb_public_headers)
    cmake_path(GET header FILENAME name)
    file(CREATE_LINK "${header}" "${zmfb_public_view}/zmfbconn/${name}" SYMBOLIC)
endforeach()
foreach(header IN LISTS zmfb_public_host_headers)
    cmake_path(GET header FILENAME name)
    file(CREATE_LINK "${header}" "${zmfb_public_view}/zmfbconn/host/${name}" SYMBOLIC)
endforeach()

# zmfb_public_headers(target): those who link `target` see the public headers.
function(zmfb_public_headers target)
    target_include_directories(${target} PUBLIC
        "$<BUILD_INTERFACE:${zmfb_public_view}>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
endfunction()

# zmfb_shared_library(target): the name, version and exported symbols of the shared library.
function(zmfb_shared_library target)
    set(exports "${PROJECT_SOURCE_DIR}/packaging/exports.map")
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        LINK_DEPENDS "${exports}")
    # Never unloaded: the engine in it keeps threads until the process ends.
    target_link_options(${target} PRIVATE
        "LINKER:--version-script=${exports}" LINKER:-Bsymbolic-functions LINKER:-z,nodelete)
endfunction()
