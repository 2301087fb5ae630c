# SQLite as script/bootstrap builds it for both flavours with the same options; a library of the
# machine's own has others. On the host also SQLite::Plain, the one without sanitizers.
if(WIN32)
  find_path(OSTRELL_SQLITE_INCLUDE_DIR sqlite3.h)
  find_library(OSTRELL_SQLITE_LIBRARY NAMES sqlite3)
else()
  set(folder ${CMAKE_SOURCE_DIR}/build/deps/host)
  find_path(OSTRELL_SQLITE_INCLUDE_DIR sqlite3.h PATHS ${folder}/include NO_DEFAULT_PATH)
  find_library(OSTRELL_SQLITE_LIBRARY NAMES sqlite3 PATHS ${folder}/lib NO_DEFAULT_PATH)
  find_library(OSTRELL_SQLITE_PLAIN_LIBRARY NAMES sqlite3_plain PATHS ${folder}/lib NO_DEFAULT_PATH)
  set(plain OSTRELL_SQLITE_PLAIN_LIBRARY)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SQLite3
  REQUIRED_VARS OSTRELL_SQLITE_LIBRARY ${plain} OSTRELL_SQLITE_INCLUDE_DIR)

function(ostrell_sqlite_target name library)
  add_library(${name} UNKNOWN IMPORTED)
  set_target_properties(${name} PROPERTIES
    IMPORTED_LOCATION ${library} INTERFACE_INCLUDE_DIRECTORIES ${OSTRELL_SQLITE_INCLUDE_DIR})
endfunction()
if(SQLite3_FOUND AND NOT TARGET SQLite::SQLite3)
  ostrell_sqlite_target(SQLite::SQLite3 ${OSTRELL_SQLITE_LIBRARY})
  if(NOT WIN32)
    ostrell_sqlite_target(SQLite::Plain ${OSTRELL_SQLITE_PLAIN_LIBRARY})
  endif()
endif()
