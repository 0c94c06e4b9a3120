# What a program sees of the library is the folder include/, in the sources as in an installation, and the header of the
# version, which is made:
#
#     zmfbconn.h               the C interface, with its parts
#     zmfbconn/c/*.h           the parts of the C interface
#     zmfbconn/*.h             the connection object
#     zmfbconn/methods/*.h     the declarations of its methods
#     zmfbconn/host/*.h        values and the runtime
#     zmfbconn/dbf/*.h         the reader of DBF files
#
# The headers include each other by their places in it, and mark what they declare as exported
# (#pragma GCC visibility).
set(zmfb_generated_headers "${PROJECT_BINARY_DIR}/include/generated")
set(zmfb_public_headers "${PROJECT_SOURCE_DIR}/include" "${zmfb_generated_headers}")

configure_file("${PROJECT_SOURCE_DIR}/include/zmfbconn/version.h.in"
    "${zmfb_generated_headers}/zmfbconn/version.h" @ONLY)

# zmfb_public_headers(target): those who link `target` see the public headers.
function(zmfb_public_headers target)
    target_include_directories(${target} PUBLIC
        "$<BUILD_INTERFACE:${zmfb_public_headers}>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
endfunction()

# What tests, benchmarks and fuzz targets see: the headers of every folder.
add_library(zmfb_every_header INTERFACE)
target_include_directories(zmfb_every_header INTERFACE
    "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include/zmfbconn" ${zmfb_public_headers})

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
