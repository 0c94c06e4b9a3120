# The Debian package: `cpack --config <build folder>/CPackConfig.cmake`. One package for all of it, so that the tool,
# the library, its headers and the module of functions, which must fit together, are always of one version.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zmfbconn)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_CONTACT "zmfbconn maintainers <maintainers@zmfbconn.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"zmFBConn, the connection object: tables of xBase applications in a Firebird
database instead of in DBF files. The library with its C++ and C interface,
the module for Python over it, the command-line tool zmfb, and the module of
SQL functions that databases need.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The embedded engine is loaded by name, which no list of linked libraries shows.
set(CPACK_DEBIAN_PACKAGE_DEPENDS firebird3.0-server-core)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS firebird3.0-utils)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "firebird3.0-server, firebird-dev, libfmt-dev, libncurses-dev, python3")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
if(CMAKE_LIBRARY_ARCHITECTURE MATCHES "^i[3-6]86-")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
endif()

include(CPack)
