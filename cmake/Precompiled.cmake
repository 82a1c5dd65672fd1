# Headers that are parsed once for many sources: those of Windows, of the standard library and of GoogleTest, and of ours
# only those that nearly every source of a target includes, for a change of one compiles all of them. A target with other
# compiler flags than its neighbours needs precompiled headers of its own.
# tools/lint does without them, so a source that leans on them and does not include what it uses is found there.
option(PRECOMPILE "Precompiled headers" ON)

set(STANDARD_HEADERS
  <algorithm> <array> <cstdint> <functional> <map> <memory> <optional> <span> <string> <string_view> <unordered_map>
  <utility> <variant> <vector>)
set(WINDOWS_HEADERS <windows.h> <objbase.h> <oaidl.h> <oleauto.h>)

# precompile(TARGET HEADER…): makes TARGET's precompiled headers. It must have no sources in C.
function(precompile target)
  if(PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      # Times of files in it would keep ccache from knowing it again.
      target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
  endif()
endfunction()

# precompiled_by(MAKER TARGET…): the targets use MAKER's.
function(precompiled_by maker)
  if(PRECOMPILE)
    foreach(target IN LISTS ARGN)
      target_precompile_headers(${target} REUSE_FROM ${maker})
    endforeach()
  endif()
endfunction()
