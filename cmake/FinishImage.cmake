# ostrell_finish_image(TARGET [SYMBOL])
# What a shipped image goes through after its link: a build id, by which crash dumps find its debug
# information; that information in a file beside it, IMAGE.debug, and no symbol left inside; the load
# configuration that lies at SYMBOL; then what a signature needs. The link's map, TARGET.map in the
# build folder, says which libraries went in.
set(OSTRELL_FINISH_IMAGE ${CMAKE_CURRENT_LIST_DIR}/finish_image)
function(ostrell_finish_image target)
  target_link_options(${target} PRIVATE
    -Wl,--build-id -Wl,-Map=${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  set_property(TARGET ${target} APPEND PROPERTY
    LINK_DEPENDS ${OSTRELL_FINISH_IMAGE} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/pe_image.py)
  set(image $<TARGET_FILE_NAME:${target}>)
  # -p keeps the time stamp of the link, which is none.
  add_custom_command(TARGET ${target} POST_BUILD
    WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
    COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug ${image} ${image}.debug
    COMMAND ${CMAKE_OBJCOPY} -p --strip-all ${image}
    COMMAND ${CMAKE_OBJCOPY} -p --add-gnu-debuglink=${image}.debug ${image}
    COMMAND ${OSTRELL_FINISH_IMAGE} ${image} ${CMAKE_NM} ${ARGN}
    VERBATIM)
endfunction()
