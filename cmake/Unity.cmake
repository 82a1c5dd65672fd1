# Sources of one folder are compiled a few at a time: the headers and templates that they share cost more than what they
# hold themselves. What is private to a source therefore has a name that no other source of its folder has. With UNITY off
# each source is compiled alone.
option(UNITY "Sources of one folder are compiled together" ON)
set(UNITY_SOURCES 6)

# unity_units(OUT TARGET SOURCE…): sets OUT to a list with each source's unit, in the order of the sources.
function(unity_units out target)
  set(units)
  foreach(source IN LISTS ARGN)
    get_filename_component(folder "${source}" DIRECTORY)
    string(MAKE_C_IDENTIFIER "${target}/${folder}" unit)
    if(NOT DEFINED count_${unit})
      set(count_${unit} 0)
    endif()
    math(EXPR number "${count_${unit}} / ${UNITY_SOURCES}")
    math(EXPR count_${unit} "${count_${unit}} + 1")
    list(APPEND units "${unit}_${number}")
  endforeach()
  set(${out} "${units}" PARENT_SCOPE)
endfunction()

# unity(TARGET…): for targets of the folder that calls it.
function(unity)
  if(NOT UNITY)
    return()
  endif()
  foreach(target IN LISTS ARGN)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP
      UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "[.]cpp$")
    unity_units(units ${target} ${sources})
    foreach(source unit IN ZIP_LISTS sources units)
      set_source_files_properties("${source}" PROPERTIES UNITY_GROUP ${unit})
    endforeach()
  endforeach()
endfunction()

# unity_objects(OUT TARGET SOURCE…): sets OUT to the objects of the target's sources, relative to its folder of objects.
function(unity_objects out target)
  if(UNITY)
    unity_units(objects ${target} ${ARGN})
    list(REMOVE_DUPLICATES objects)
    list(TRANSFORM objects REPLACE ".+" "Unity/unity_\\0_cxx.cxx")
  else()
    list(TRANSFORM ARGN REPLACE "[.][.]/" "__/" OUTPUT_VARIABLE objects)
  endif()
  list(TRANSFORM objects APPEND "${CMAKE_CXX_OUTPUT_EXTENSION}")
  set(${out} "${objects}" PARENT_SCOPE)
endfunction()
