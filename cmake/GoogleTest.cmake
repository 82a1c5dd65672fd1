# Debian ships GoogleTest as sources, so that one copy serves the native and the cross build.
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
foreach(target gtest gtest_main)
  target_compile_options(${target} PRIVATE -O0)
endforeach()
