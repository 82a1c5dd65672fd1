# suites(PROGRAM LABEL…): every suite of a GoogleTest program is a test of CTest's, named PROGRAM.SUITE. Which suites there
# are is asked of the program when CTest starts and the program is newer than the last answer.
# A suite that changes what the others see runs alone: its name is in TESTS_ALONE.
# Results by the single test lie beside the program, in results/PROGRAM.SUITE.xml.
# Every test has its build's name for a label as well.
get_filename_component(PRESET "${PROJECT_BINARY_DIR}" NAME)
if(WIN32)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${PROJECT_SOURCE_DIR}/tools/wine-exec;${PRESET}")
endif()
set(RESULTS "${PROJECT_BINARY_DIR}/results")
file(MAKE_DIRECTORY "${RESULTS}")
# For tests that hang; a suite takes seconds.
set(TEST_SECONDS 600)

function(suites program)
  set(include "${CMAKE_CURRENT_BINARY_DIR}/${program}.cmake")
  file(GENERATE OUTPUT "${include}" CONTENT "\
set(PROGRAM [[${program}]])
set(COMMAND [[${CMAKE_CROSSCOMPILING_EMULATOR};$<TARGET_FILE:${program}>]])
set(FILE [[$<TARGET_FILE:${program}>]])
set(LABELS [[${ARGN};${PRESET}]])
set(SOURCE [[${PROJECT_SOURCE_DIR}]])
set(RESULTS [[${RESULTS}]])
set(SECONDS ${TEST_SECONDS})
set(WINDOWS $<BOOL:${WIN32}>)
set(ALONE [[${TESTS_ALONE}]])
include([[${PROJECT_SOURCE_DIR}/cmake/ListSuites.cmake]])
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${include}")
endfunction()

# script_test(NAME LABELS COMMAND…): a test that is one run of a command from the project's directory.
function(script_test name labels)
  add_test(NAME "${name}" COMMAND ${ARGN} WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}")
  set_tests_properties("${name}" PROPERTIES LABELS "${labels};${PRESET}" TIMEOUT ${TEST_SECONDS} ENVIRONMENT "PRESET=${PRESET}")
  if(WIN32)
    set_tests_properties("${name}" PROPERTIES
      FIXTURES_REQUIRED wine SKIP_RETURN_CODE 77)
  endif()
endfunction()

if(WIN32)
  # The prefix, the registered DLLs and the demo database; it builds nothing.
  add_test(NAME wine COMMAND "${PROJECT_SOURCE_DIR}/tools/wine-prepare" --built --register)
  set_tests_properties(wine PROPERTIES
    FIXTURES_SETUP wine ENVIRONMENT "PRESET=${PRESET}" SKIP_RETURN_CODE 77 TIMEOUT ${TEST_SECONDS})
endif()
