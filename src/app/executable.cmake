# ostrell.exe as it ships: stripped, its debug information beside it as ostrell.exe.debug, collected
# in one folder with the libraries that it is developed against.
enable_language(RC)
set(product_folder ${CMAKE_BINARY_DIR}/product)
configure_file(ostrell.rc.in ostrell.rc @ONLY)
configure_file(ostrell.manifest.in ostrell.manifest @ONLY)

add_executable(ostrell WIN32 main_win.cpp exception_memory.cpp load_configuration.cpp
  ${CMAKE_CURRENT_BINARY_DIR}/ostrell.rc)
target_link_libraries(ostrell PRIVATE app)
target_include_directories(ostrell PRIVATE ${CMAKE_CURRENT_BINARY_DIR})  # ostrell.manifest
set_target_properties(ostrell PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${product_folder})
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/ostrell.rc APPEND PROPERTY
  OBJECT_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/ostrell.manifest)
ostrell_copy_jansson(ostrell)

target_link_options(ostrell PRIVATE
  -Wl,--file-alignment,4096
  -Wl,-u,kOstrellLoadConfiguration  # nothing refers to it
  -Wl,--wrap=malloc)                # exception_memory.cpp
include(FinishImage)
ostrell_finish_image(ostrell kOstrellLoadConfiguration)
add_custom_command(TARGET ostrell POST_BUILD
  COMMAND ${CMAKE_COMMAND} -DFILE=$<TARGET_FILE:ostrell> -P ${CMAKE_SOURCE_DIR}/cmake/print_size.cmake
  VERBATIM)
