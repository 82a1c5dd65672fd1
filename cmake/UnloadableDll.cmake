# unloadable_dll(TARGET): a DLL that gives back what the compiler's runtime takes for good; com/RuntimeResources.cpp says
# what and how. It links copies of the thread library and of the support for thread-local variables, in which the names
# of what they call are other ones.
set(RUNTIME_DIR "${CMAKE_BINARY_DIR}/runtime")
file(MAKE_DIRECTORY "${RUNTIME_DIR}")
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(C_NAME "_")
  set(MODULE_ENTRY "_ModuleEntry@12")
  set(IMPORTS "_TlsAlloc@0" "_CreateEventA@16" "_CreateSemaphoreA@16" "_DuplicateHandle@28" "_CloseHandle@4"
    "_InitializeCriticalSection@4" "_DeleteCriticalSection@4")
else()
  set(C_NAME "")
  set(MODULE_ENTRY ModuleEntry)
  set(IMPORTS TlsAlloc CreateEventA CreateSemaphoreA DuplicateHandle CloseHandle InitializeCriticalSection
    DeleteCriticalSection)
endif()
set(RENAMED "")
foreach(name malloc calloc realloc free strdup)
  string(APPEND RENAMED "${C_NAME}${name} ${C_NAME}module_${name}\n")
endforeach()
foreach(import IN LISTS IMPORTS)
  string(REGEX REPLACE "^_|@.*" "" name "${import}")
  string(APPEND RENAMED "__imp_${import} __imp_module_${name}\n")
endforeach()
file(CONFIGURE OUTPUT "${RUNTIME_DIR}/renamed" CONTENT "${RENAMED}")

foreach(library libpthread.a libgcc_eh.a)
  execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${library}
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${library} "${file}")
endforeach()
# The linker looks for -lpthread here first.
add_custom_command(
  OUTPUT "${RUNTIME_DIR}/libpthread.a" "${RUNTIME_DIR}/emutls.o"
  COMMAND "${CMAKE_OBJCOPY}" --redefine-syms=renamed "${libpthread.a}" libpthread.a
  COMMAND "${CMAKE_AR}" x "${libgcc_eh.a}" emutls.o
  COMMAND "${CMAKE_OBJCOPY}" --redefine-syms=renamed emutls.o
  DEPENDS "${RUNTIME_DIR}/renamed"
  WORKING_DIRECTORY "${RUNTIME_DIR}"
  COMMENT "The runtime of the DLLs"
  VERBATIM)
add_custom_target(dll_runtime DEPENDS "${RUNTIME_DIR}/libpthread.a" "${RUNTIME_DIR}/emutls.o")

add_library(runtime_resources OBJECT "${PROJECT_SOURCE_DIR}/com/RuntimeResources.cpp")
target_link_libraries(runtime_resources PRIVATE project_options)

function(unloadable_dll target)
  add_dependencies(${target} dll_runtime)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:runtime_resources>)
  target_link_directories(${target} BEFORE PRIVATE "${RUNTIME_DIR}")
  target_link_libraries(${target} PRIVATE "${RUNTIME_DIR}/emutls.o")
  target_link_options(${target} PRIVATE "-Wl,--entry,${MODULE_ENTRY}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${RUNTIME_DIR}/libpthread.a")
endfunction()
