# Finds the terminal library in its form for UTF-8: the imported target NcursesWide::NcursesWide.
find_path(NcursesWide_INCLUDE_DIR ncurses.h)
find_library(NcursesWide_LIBRARY NAMES ncursesw)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(NcursesWide REQUIRED_VARS NcursesWide_LIBRARY NcursesWide_INCLUDE_DIR)

if(NcursesWide_FOUND AND NOT TARGET NcursesWide::NcursesWide)
    add_library(NcursesWide::NcursesWide UNKNOWN IMPORTED)
    set_target_properties(NcursesWide::NcursesWide PROPERTIES
        IMPORTED_LOCATION "${NcursesWide_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${NcursesWide_INCLUDE_DIR}")
endif()
