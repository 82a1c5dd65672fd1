# Options for the project's own targets; the packages that it builds from source do not see them.
add_library(project_options INTERFACE)
target_include_directories(project_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
# GCC 12 takes some string concatenations for overlapping copies (its bug 105329).
target_compile_options(project_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(MINGW OR CMAKE_BUILD_TYPE STREQUAL "Release")
  # With precompiled headers and inlining GCC no longer knows that the standard library is not ours to warn about.
  # The native builds for tests keep these warnings.
  target_compile_options(project_options INTERFACE -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
endif()
if(NOT WIN32)
  # COM interfaces have no virtual destructor by design.
  target_compile_options(project_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
endif()

if(WIN32)
  target_compile_definitions(project_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
  # One file to install: nothing of the compiler's runtime beside it. ASLR and DEP as Windows expects of a server DLL.
  add_link_options(-static -Wl,--dynamicbase -Wl,--nxcompat)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    add_link_options(-Wl,--high-entropy-va)
  endif()
endif()

# CMake would take -O3 for a release; it takes longer to compile, and nothing here computes enough to gain from it.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")

option(SANITIZE "Sanitizers: native ones with reports, traps on Windows" OFF)
if(SANITIZE)
  if(WIN32)
    target_compile_options(project_options INTERFACE -fsanitize=undefined -fsanitize-undefined-trap-on-error)
  else()
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
  endif()
endif()

if(SANITIZE AND NOT WIN32)
  # The sanitizers' checks are the same, and the compiler needs half the time. Assertions stay.
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g")
endif()

option(COVERAGE "Counts which lines and branches run" OFF)
if(COVERAGE)
  # Threads count in the same places.
  target_compile_options(project_options INTERFACE --coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

option(FUZZ "The engine's fuzz target as well; wants clang" OFF)
