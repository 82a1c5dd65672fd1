# What only tests need is compiled once for x64, as quickly as it goes: x64-debug links the objects of x64 with its own
# build of what they test. tools/build sees to it that they are there.
set(TEST_OBJECTS "" CACHE STRING "The build whose objects of tests are linked; they are compiled here if it is empty")
set(TEST_OBJECTS_DIR "${PROJECT_SOURCE_DIR}/build/${TEST_OBJECTS}")

# It need not be quick: compiling it is what takes time. Lines are enough for finding a failure in a test.
add_library(test_options INTERFACE)
# For Windows templates and inline functions are inlined where that costs nothing: GNU ld's time grows with the square of a
# source's sections, and each such function that is not inlined has three.
target_compile_options(test_options INTERFACE $<IF:$<CXX_COMPILER_ID:GNU>,-Og,-O0> -g1)

# com_test_main(SOURCE…): what all test programs that use COM share, main() first of all, and their precompiled headers.
function(com_test_main)
  if(TEST_OBJECTS)
    add_library(com_test_main INTERFACE)
    target_link_libraries(com_test_main INTERFACE
      "${TEST_OBJECTS_DIR}/tests/libcom_test_main.a" com "${TEST_OBJECTS_DIR}/lib/libgtest.a")
  else()
    add_library(com_test_main STATIC ${ARGN})
    target_link_libraries(com_test_main PUBLIC com gtest test_options)
    precompile(com_test_main ${WINDOWS_HEADERS} ${STANDARD_HEADERS} <gtest/gtest.h>)
  endif()
endfunction()

# com_test_program(NAME SOURCE…): a test program that uses COM.
function(com_test_program name)
  if(TEST_OBJECTS)
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    unity_objects(objects ${name} ${ARGN})
    list(TRANSFORM objects REPLACE ".+" "${TEST_OBJECTS_DIR}/${folder}/CMakeFiles/${name}.dir/\\0")
    set_source_files_properties(${objects} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
    add_executable(${name} ${objects})
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    target_link_libraries(${name} PRIVATE com_test_main)
  else()
    add_executable(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE com_test_main)
    precompiled_by(com_test_main ${name})
    unity(${name})
  endif()
endfunction()
