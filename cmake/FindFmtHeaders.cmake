# {fmt}, header-only on every platform, and without locales: a fixed separator, which no text here
# asks for, keeps std::locale out of the program, a third of its size.
find_path(FMT_INCLUDE_DIR fmt/printf.h)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FmtHeaders REQUIRED_VARS FMT_INCLUDE_DIR)
if(FmtHeaders_FOUND AND NOT TARGET FmtHeaders::fmt)
  add_library(FmtHeaders::fmt INTERFACE IMPORTED)
  set_target_properties(FmtHeaders::fmt PROPERTIES
    INTERFACE_COMPILE_DEFINITIONS "FMT_HEADER_ONLY=1;FMT_STATIC_THOUSANDS_SEPARATOR=','"
    INTERFACE_INCLUDE_DIRECTORIES ${FMT_INCLUDE_DIR})
endif()
