# jansson, by header and library: Debian's package brings no CMake file of its own.
find_path(JANSSON_INCLUDE_DIR jansson.h)
find_library(JANSSON_LIBRARY NAMES jansson)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Jansson REQUIRED_VARS JANSSON_LIBRARY JANSSON_INCLUDE_DIR)
if(Jansson_FOUND AND NOT TARGET Jansson::Jansson)
  add_library(Jansson::Jansson UNKNOWN IMPORTED)
  set_target_properties(Jansson::Jansson PROPERTIES
    IMPORTED_LOCATION ${JANSSON_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${JANSSON_INCLUDE_DIR})
endif()
