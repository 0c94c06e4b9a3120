# The target `api` makes pages of the comments in the public headers: api/html/index.html in the build folder. What
# Doxygen does not understand, or finds without a comment, is an error.
find_package(Doxygen)

if(DOXYGEN_FOUND)
    configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/api/Doxyfile" @ONLY)
    add_custom_target(api
        COMMAND Doxygen::doxygen "${PROJECT_BINARY_DIR}/api/Doxyfile"
        COMMENT "Making api/html/index.html"
        VERBATIM)
endif()
