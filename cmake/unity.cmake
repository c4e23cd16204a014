# Builds without optimisation compile the sources of a folder together: the headers, which cost more than
# the sources, are then read once. A build for speed and the analysis compile each source alone, so each
# one stays complete in itself.
set(QV_UNITY_DEFAULT OFF)
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(QV_UNITY_DEFAULT ON)
endif()
option(QV_UNITY "Compile the sources of a folder together" ${QV_UNITY_DEFAULT})

# qv_compile_together(TARGET MOST [FOLDERS...]): at most MOST sources of a folder go together. A change of one
# source compiles its group again, so a folder with many sources makes several groups. FOLDERS, several in one
# text, count as one: where the headers cost far more than the sources, a large group takes no longer than a
# small one.
function(qv_compile_together target most)
  if(NOT QV_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  foreach(folders ${ARGN})
    string(REPLACE " " ";" folders "${folders}")
    foreach(folder ${folders})
      list(GET folders 0 first_of_${folder})
    endforeach()
  endforeach()
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    cmake_path(ABSOLUTE_PATH source)
    cmake_path(GET source PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} OUTPUT_VARIABLE group)
    if(DEFINED first_of_${group})
      set(group ${first_of_${group}})
    endif()
    string(MAKE_C_IDENTIFIER "${group}" group)
    if(NOT DEFINED count_${group})
      set(count_${group} 0)
    endif()
    math(EXPR number "${count_${group}} / ${most}")
    math(EXPR count_${group} "${count_${group}} + 1")
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group}_${number})
  endforeach()
endfunction()

# qv_read_once(TARGET HEADER...): compiles the headers once, before the sources. Each source still includes the headers
# that it uses.
function(qv_read_once target)
  if(NOT QV_UNITY)
    return()
  endif()
  target_precompile_headers(${target} PRIVATE ${ARGN})
  if(WIN32)
    # This compiler does not treat a precompiled header as a system header, and warns of copies in its own wchar.h.
    target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overread)
  endif()
endfunction()
