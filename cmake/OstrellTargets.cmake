# Compiler settings of every target, and the functions that the folders describe themselves with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(ostrell_options INTERFACE)
target_compile_options(ostrell_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror
  # Debug information and assertions name files relative to the checkout.
  -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
target_include_directories(ostrell_options INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR})

if(WIN32)
  target_compile_definitions(ostrell_options INTERFACE
    UNICODE _UNICODE _WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX CURL_STATICLIB)
  target_compile_options(ostrell_options INTERFACE
    -ffunction-sections -fdata-sections -fstack-protector-strong)
  # The stack protector needs its flag at link time too; without a time stamp two links are equal.
  target_link_options(ostrell_options INTERFACE
    -static -fstack-protector-strong -Wl,--gc-sections -Wl,--no-insert-timestamp)
  foreach(folder IN LISTS CMAKE_FIND_ROOT_PATH)
    file(REAL_PATH ${folder} real_folder)
    target_compile_options(ostrell_options INTERFACE
      -ffile-prefix-map=${folder}=deps -ffile-prefix-map=${real_folder}=deps)
  endforeach()
  set_property(TARGET CURL::libcurl APPEND PROPERTY
    INTERFACE_LINK_LIBRARIES ws2_32 crypt32 bcrypt advapi32)
endif()

# What the environment of the tests that talk to a server names: a proxy where nobody listens. No
# request may go there.
set(OSTRELL_DEAD_PROXY http_proxy=http://127.0.0.1:9 https_proxy=http://127.0.0.1:9
    HTTPS_PROXY=http://127.0.0.1:9 ALL_PROXY=http://127.0.0.1:9)

# ostrell_library(NAME [SOURCES portable...] [WINDOWS adapters...] [LINKS libraries...])
# One library a folder of src/. Its links are the folders and libraries that it may use.
function(ostrell_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;WINDOWS;LINKS" ${ARGN})
  if(WIN32)
    list(APPEND ARG_SOURCES ${ARG_WINDOWS})
  endif()
  if(NOT ARG_SOURCES)
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ostrell_options ${ARG_LINKS})
    return()
  endif()
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ostrell_options ${ARG_LINKS})
endfunction()

# ostrell_test(NAME [SOURCES portable...] [WINDOWS adapters...] [LINKS libraries...])
# One test program a folder, and one test of CTest's: a Windows program takes longer to start under
# Wine than its cases to run. The cases run in another order each time.
function(ostrell_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;WINDOWS;LINKS" ${ARGN})
  if(WIN32)
    list(APPEND ARG_SOURCES ${ARG_WINDOWS})
  endif()
  if(NOT ARG_SOURCES)
    return()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE -O0 -g1)  # what is tested is optimised
  target_link_libraries(${name} PRIVATE ostrell_options ${ARG_LINKS} gmock gtest_main)
  if(WIN32)
    ostrell_copy_jansson(${name})
  endif()
  add_test(NAME ${name} COMMAND ${name} --gtest_shuffle --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()

# Puts jansson.dll beside a Windows program, where the loader looks first.
function(ostrell_copy_jansson target)
  find_file(JANSSON_DLL NAMES bin/jansson.dll PATHS ${CMAKE_FIND_ROOT_PATH} NO_DEFAULT_PATH
            NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${JANSSON_DLL} $<TARGET_FILE_DIR:${target}>)
endfunction()
