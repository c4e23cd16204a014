# What CPack makes of the installed components: a Debian package of each, one zip file for Windows.
set(CPACK_PACKAGE_NAME qv_rtl)
set(CPACK_PACKAGE_VENDOR Halvorn)
set(CPACK_PACKAGE_CONTACT "Halvorn <vantrel@halvorn.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Shared runtime library of the Vantrel fax printer")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_SOURCE_DIR}/build/packages)
set(CPACK_COMPONENTS_ALL library development tool)
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME qv_rtl-${PROJECT_VERSION}-win64)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  # Debug information goes into packages of its own, NAME-dbgsym.
  set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

  set(library libqv-rtl${PROJECT_VERSION_MAJOR})
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Shared runtime library of the Vantrel fax printer
 Strings, lists, XML, the shared log and the settings of the printer driver, with its host layer.")

  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqv-rtl-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers of the Vantrel runtime library
 Also what CMake, pkg-config and debuggers need.")

  set(CPACK_DEBIAN_TOOL_PACKAGE_NAME qv)
  set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_TOOL_DESCRIPTION "Command line tool of the Vantrel fax printer
 Printers and their settings, XML requests and the shared log.")
endif()
include(cmake/package_texts.cmake)
include(CPack)
