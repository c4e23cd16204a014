# The files beside a Windows program.

# qv_debug_file(TARGET): the debug information goes from the program into NAME.debug beside it, where
# debuggers look for it.
function(qv_debug_file target)
  set(file $<TARGET_FILE:${target}>)
  # Without this variable each tool writes the time of its run into the program.
  set(no_time ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${no_time} ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${no_time} ${CMAKE_STRIP} ${file}
    COMMAND ${no_time} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${file}.debug ${file} VERBATIM)
endfunction()

# qv_import_library(TARGET HEADER): makes NAME.lib for Microsoft's linker, with the C calls that the header declares. Sets
# QV_IMPORT_LIBRARY in the cache. Needs LLVM; without LLVM it makes no file.
function(qv_import_library target header)
  find_program(QV_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
  if(NOT QV_DLLTOOL)
    message(STATUS "No llvm-dlltool: no import library for other compilers")
    return()
  endif()
  set(definitions ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
  set(library ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${target}.lib)
  file(STRINGS ${header} lines REGEX "^QV_C_API ")
  list(TRANSFORM lines REPLACE "^QV_C_API [a-z]+ ([A-Za-z]+)\\(.*" "\\1")
  list(JOIN lines "\n" names)
  file(CONFIGURE OUTPUT ${definitions} CONTENT "EXPORTS\n@names@\n" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  add_custom_command(OUTPUT ${library} DEPENDS ${definitions}
    COMMAND ${QV_DLLTOOL} -m i386:x86-64 -D ${target}.dll -d ${definitions} -l ${library} VERBATIM)
  add_custom_target(${target}_import_library ALL DEPENDS ${library})
  set(QV_IMPORT_LIBRARY ${library} CACHE INTERNAL "For Microsoft's linker")
endfunction()
