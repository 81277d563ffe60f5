# Every page of man/, NAME.SECTION.scd, compressed as a package has to bring it.
find_program(SCDOC scdoc)
if(NOT SCDOC)
  message(STATUS "No scdoc: no manual pages are made")
  return()
endif()

file(GLOB sources CONFIGURE_DEPENDS man/*.scd)
set(pages)
foreach(source IN LISTS sources)
  cmake_path(GET source STEM LAST_ONLY name)
  string(REGEX REPLACE ".*\\." "" section "${name}")
  set(page "${CMAKE_CURRENT_BINARY_DIR}/man/${name}.gz")
  add_custom_command(OUTPUT "${page}"
    COMMAND bash -o pipefail -c "\"$1\" <\"$2\" | gzip -9n >\"$3\"" manual "${SCDOC}" "${source}" "${page}"
    DEPENDS "${source}"
    VERBATIM)
  list(APPEND pages "${page}")
  install(FILES "${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}")
endforeach()
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/man")
add_custom_target(manual ALL DEPENDS ${pages})
