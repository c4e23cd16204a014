# What each package says of itself, below share/doc: whose it is, what is new, and the notices that came with other makers'
# code that the compiler put into the programs.

# qv_notices(FOLDER COMPONENT PACKAGE...): the notices of the Debian packages that the code is from, where this machine has them.
function(qv_notices folder component)
  foreach(package IN LISTS ARGN)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION ${folder} RENAME notice.${package}
      COMPONENT ${component} OPTIONAL)
  endforeach()
endfunction()

configure_file(cmake/package/copyright.in ${CMAKE_BINARY_DIR}/package/copyright @ONLY)
set(QV_CHANGES ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
if(WIN32)
  set(QV_TEXTS ${CMAKE_INSTALL_DATADIR}/doc/qv_rtl)
  install(FILES ${CMAKE_BINARY_DIR}/package/copyright DESTINATION ${QV_TEXTS} RENAME copyright.txt COMPONENT library)
  install(FILES ${QV_CHANGES} DESTINATION ${QV_TEXTS} COMPONENT library)
  # -static: the compiler's run-time library is part of both programs.
  qv_notices(${QV_TEXTS} library gcc-mingw-w64-base mingw-w64-common)
  qv_notices(${QV_TEXTS} tool libcli11-dev nlohmann-json3-dev)
else()
  # -n: without name and date, so that two builds give the same bytes.
  find_program(QV_GZIP gzip REQUIRED)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QV_CHANGES})
  execute_process(COMMAND ${QV_GZIP} -9nc ${QV_CHANGES}
    OUTPUT_FILE ${CMAKE_BINARY_DIR}/package/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} package)
    set(QV_TEXTS ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${package}_PACKAGE_NAME})
    install(FILES ${CMAKE_BINARY_DIR}/package/copyright ${CMAKE_BINARY_DIR}/package/changelog.gz
      DESTINATION ${QV_TEXTS} COMPONENT ${component})
  endforeach()
  qv_notices(${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_TOOL_PACKAGE_NAME} tool libcli11-dev nlohmann-json3-dev)
endif()
