# Finds the terminal library: the imported target Ncurses::Ncurses.
find_path(Ncurses_INCLUDE_DIR ncurses.h)
find_library(Ncurses_LIBRARY NAMES ncurses)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Ncurses REQUIRED_VARS Ncurses_LIBRARY Ncurses_INCLUDE_DIR)

if(Ncurses_FOUND AND NOT TARGET Ncurses::Ncurses)
    add_library(Ncurses::Ncurses UNKNOWN IMPORTED)
    set_target_properties(Ncurses::Ncurses PROPERTIES
        IMPORTED_LOCATION "${Ncurses_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${Ncurses_INCLUDE_DIR}")
endif()
