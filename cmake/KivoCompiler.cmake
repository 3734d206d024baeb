# Warnings and sanitizers, applied to the project's own targets only.
add_library(kivo_compiler INTERFACE)
target_compile_options(kivo_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(KIVO_WERROR)
  target_compile_options(kivo_compiler INTERFACE -Werror)
endif()
if(KIVO_SANITIZE)
  # The linked sanitizer is GCC's; what clang compiles is watched through the allocator alone.
  target_compile_options(kivo_compiler INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fsanitize=${KIVO_SANITIZE}> -fno-omit-frame-pointer)
  target_link_options(kivo_compiler INTERFACE -fsanitize=${KIVO_SANITIZE})
  if(KIVO_SANITIZE MATCHES undefined)
    target_compile_options(kivo_compiler INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-sanitize-recover=undefined>)
  endif()
endif()

find_program(KIVO_CCACHE ccache)
if(KIVO_CCACHE)
  foreach(language CXX OBJC OBJCXX)
    # ccache keeps what is compiled with precompiled headers only when it is told that this is meant.
    if("$ENV{CCACHE_SLOPPINESS}" STREQUAL "")
      set(CMAKE_${language}_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros ${KIVO_CCACHE})
    else()
      set(CMAKE_${language}_COMPILER_LAUNCHER ${KIVO_CCACHE})
    endif()
  endforeach()
endif()

# The headers of the standard library that most sources read, compiled once: they are half of the time that a source takes.
# The presets with sanitizers do without, so a source that does not include what it uses is found there.
function(kivo_precompiled_headers name)
  set(source ${PROJECT_BINARY_DIR}/precompiled/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "// Nothing: the headers of this target are precompiled for others.\n")
  add_library(${name} OBJECT ${source})
  target_precompile_headers(${name} PRIVATE ${ARGN})
  target_link_libraries(${name} PRIVATE kivo_compiler)
  if(KIVO_CCACHE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${name} PUBLIC -fpch-preprocess)
  endif()
endfunction()

function(kivo_use_precompiled_headers target name)
  target_precompile_headers(${target} REUSE_FROM ${name})
  if(KIVO_CCACHE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()

set(kivo_standard_headers
  <algorithm> <array> <atomic> <chrono> <expected> <filesystem> <functional> <map> <memory> <mutex> <optional> <string>
  <string_view> <utility> <variant> <vector>)
kivo_precompiled_headers(kivo_standard ${kivo_standard_headers})
