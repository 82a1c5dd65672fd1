# The stack protector of what is delivered; com/StackProtector.cpp is what it calls. A folder asks for it with
# protect_stacks() before its targets.
if(WIN32)
  add_library(stack_protector STATIC "${PROJECT_SOURCE_DIR}/com/StackProtector.cpp")
  # Whatever is linked with code of these folders needs it.
  target_link_libraries(project_options INTERFACE stack_protector)
endif()

macro(protect_stacks)
  if(WIN32)
    add_compile_options(-fstack-protector-strong)
  endif()
endmacro()
