# The texts of each package below share/doc: the owner, the changes, and the notices of other makers' code in the programs.

# qv_notices(FOLDER COMPONENT PACKAGE...): installs the notices of the Debian packages from which the code comes, if this machine
# has them.
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
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QV_CHANGES})
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # that of SOURCE_DATE_EPOCH, when it is set
  configure_file(cmake/package/changelog.in ${CMAKE_BINARY_DIR}/package/changelog @ONLY)
  foreach(row "${QV_CHANGES}|CHANGELOG.md.gz" "${CMAKE_BINARY_DIR}/package/changelog|changelog.gz")
    string(REPLACE "|" ";" row "${row}")
    list(GET row 0 text)
    list(GET row 1 name)
    execute_process(COMMAND ${QV_GZIP} -9nc ${text}
      OUTPUT_FILE ${CMAKE_BINARY_DIR}/package/${name} COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} package)
    set(QV_TEXTS ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${package}_PACKAGE_NAME})
    install(FILES ${CMAKE_BINARY_DIR}/package/copyright ${CMAKE_BINARY_DIR}/package/changelog.gz
      ${CMAKE_BINARY_DIR}/package/CHANGELOG.md.gz DESTINATION ${QV_TEXTS} COMPONENT ${component})
  endforeach()
  # The control file "symbols": from it, packages that use the library get their dependency. Each export counts since 1.0.0.
  set(symbols)
  foreach(row "libqv_rtl|linux" "libqv_win32|host")
    string(REPLACE "|" ";" row ${row})
    list(GET row 0 file)
    list(GET row 1 list)
    string(APPEND symbols "${file}.so.${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} #MINVER#\n")
    file(STRINGS ${CMAKE_SOURCE_DIR}/rtl/exports/${list}.txt names)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS rtl/exports/${list}.txt)
    foreach(name IN LISTS names)
      string(REGEX REPLACE " .*" "" name "${name}")
      string(APPEND symbols " ${name}@Base ${PROJECT_VERSION_MAJOR}.0.0\n")
    endforeach()
  endforeach()
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/package/symbols CONTENT "@symbols@" @ONLY)
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/package/symbols)
  qv_notices(${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_TOOL_PACKAGE_NAME} tool libcli11-dev nlohmann-json3-dev)
endif()
