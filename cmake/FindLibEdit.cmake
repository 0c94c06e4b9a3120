# Finds the line editor: the imported target LibEdit::LibEdit.
find_path(LibEdit_INCLUDE_DIR editline/readline.h)
find_library(LibEdit_LIBRARY NAMES edit)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibEdit REQUIRED_VARS LibEdit_LIBRARY LibEdit_INCLUDE_DIR)

if(LibEdit_FOUND AND NOT TARGET LibEdit::LibEdit)
    add_library(LibEdit::LibEdit UNKNOWN IMPORTED)
    set_target_properties(LibEdit::LibEdit PROPERTIES
        IMPORTED_LOCATION "${LibEdit_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${LibEdit_INCLUDE_DIR}")
endif()
