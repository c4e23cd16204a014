# Where `cmake --install` puts the files, in three components: library, development and tool. docs/install.md has the list for users.

# Stores in `out` the headers that `header` reaches by #include "...", itself first; names below `folder`.
function(qv_reachable_headers out folder header)
  set(found ${${out}})
  if(NOT header IN_LIST found AND EXISTS ${folder}/${header})
    list(APPEND found ${header})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${folder}/${header})
    file(STRINGS ${folder}/${header} lines REGEX "^#include \"")
    foreach(line ${lines})
      string(REGEX REPLACE "^#include \"([^\"]*)\".*" "\\1" next "${line}")
      qv_reachable_headers(found ${folder} ${next})
    endforeach()
  endif()
  set(${out} ${found} PARENT_SCOPE)
endfunction()

set(QV_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/qv_rtl)
set(QV_TARGETS qv_rtl)
if(NOT WIN32)
  list(APPEND QV_TARGETS qv_win32)
endif()

# An installed program finds the libraries beside it wherever the prefix is moved to.
file(RELATIVE_PATH QV_LIBRARIES_FROM_TOOL /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
if(NOT WIN32)
  # The build uses this path too. A path that is changed at installation would leave empty entries, and the loader would take
  # them for the current folder.
  set_target_properties(${QV_TARGETS} PROPERTIES INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
  set_target_properties(qv PROPERTIES INSTALL_RPATH "$ORIGIN/${QV_LIBRARIES_FROM_TOOL}")
endif()

install(TARGETS ${QV_TARGETS} EXPORT qv_rtl
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(TARGETS qv RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
if(WIN32)
  install(FILES $<TARGET_FILE:qv_rtl>.debug DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
  install(FILES $<TARGET_FILE:qv>.debug DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  install(FILES ${QV_IMPORT_LIBRARY} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development OPTIONAL)
endif()

qv_reachable_headers(QV_PUBLIC_HEADERS ${CMAKE_SOURCE_DIR}/rtl qv_rtl.h)
qv_reachable_headers(QV_PUBLIC_HEADERS ${CMAKE_SOURCE_DIR}/rtl qv_rtl_c.h)
foreach(header ${QV_PUBLIC_HEADERS})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES rtl/${header} DESTINATION ${QV_INSTALL_HEADERS}/${folder} COMPONENT development)
endforeach()
install(FILES ${CMAKE_BINARY_DIR}/generated/qv_rtl_version.h DESTINATION ${QV_INSTALL_HEADERS} COMPONENT development)
if(WIN32)
  install(DIRECTORY cmake/mingw/ DESTINATION ${QV_INSTALL_HEADERS}/mingw COMPONENT development)
else()
  install(DIRECTORY win32/include/ DESTINATION ${QV_INSTALL_HEADERS}/win32 COMPONENT development)
endif()

# find_package(qv_rtl)
include(CMakePackageConfigHelpers)
install(EXPORT qv_rtl NAMESPACE qv_rtl:: FILE qv_rtl-targets.cmake DESTINATION ${QV_PACKAGE_FOLDER} COMPONENT development)
configure_package_config_file(cmake/package/qv_rtl-config.cmake.in ${CMAKE_BINARY_DIR}/package/qv_rtl-config.cmake
  INSTALL_DESTINATION ${QV_PACKAGE_FOLDER} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/qv_rtl-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/package/qv_rtl-config.cmake ${CMAKE_BINARY_DIR}/package/qv_rtl-config-version.cmake
  DESTINATION ${QV_PACKAGE_FOLDER} COMPONENT development)

# pkg-config; the prefix is found from the file's own place.
set(QV_PC_FOLDER ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH QV_PC_PREFIX /${QV_PC_FOLDER} /)
string(REGEX REPLACE "/$" "" QV_PC_PREFIX "${QV_PC_PREFIX}")
set(QV_PC_INCLUDES "-I\${includedir}")
set(QV_PC_LIBRARIES "-lqv_rtl")
if(WIN32)
  # By its whole name: with -static the linker does not look for import libraries.
  set(QV_PC_LIBRARIES "-l:libqv_rtl.dll.a")
  string(APPEND QV_PC_INCLUDES " -isystem \${includedir}/mingw -DUNICODE -D_UNICODE -DNOMINMAX")
else()
  string(APPEND QV_PC_INCLUDES " -isystem \${includedir}/win32")
  string(APPEND QV_PC_LIBRARIES " -lqv_win32")
endif()
configure_file(cmake/package/qv_rtl.pc.in ${CMAKE_BINARY_DIR}/package/qv_rtl.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/qv_rtl.pc DESTINATION ${QV_PC_FOLDER} COMPONENT development)

# Debugger views. GDB by itself loads the file whose path contains the path of the library.
install(FILES debug/qv_rtl_gdb.py debug/qv_rtl.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/qv_rtl COMPONENT development)
if(NOT WIN32)
  install(FILES debug/qv_rtl_gdb.py DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}
    RENAME libqv_rtl.so.${PROJECT_VERSION}-gdb.py COMPONENT development)
endif()
