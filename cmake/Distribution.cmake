# Sets DISTRIBUTION_NAME for each line "name=value" of the file `distribution`.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/distribution lines REGEX "^[a-z]+=")
foreach(line IN LISTS lines)
  string(REGEX MATCH "^([a-z]+)=(.*)" line "${line}")
  set(DISTRIBUTION_${CMAKE_MATCH_1} ${CMAKE_MATCH_2})
endforeach()
