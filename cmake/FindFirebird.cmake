# Finds the Firebird client library: the imported target Firebird::Client.
find_path(Firebird_INCLUDE_DIR ibase.h PATH_SUFFIXES firebird)
find_library(Firebird_LIBRARY NAMES fbclient)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Firebird REQUIRED_VARS Firebird_LIBRARY Firebird_INCLUDE_DIR)

if(Firebird_FOUND AND NOT TARGET Firebird::Client)
    add_library(Firebird::Client UNKNOWN IMPORTED)
    set_target_properties(Firebird::Client PROPERTIES
        IMPORTED_LOCATION "${Firebird_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${Firebird_INCLUDE_DIR}")
endif()
