# Warnings, sanitizers, hardening and paths, applied to the project's own targets only.
add_library(kivo_compiler INTERFACE)
target_compile_definitions(kivo_compiler INTERFACE KIVO_SOVERSION="${KIVO_SOVERSION}") # part of the names of installed files
target_compile_options(kivo_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual)
# Sources that are compiled together look like headers of each other. Builds file by file give these two warnings.
target_compile_options(kivo_compiler INTERFACE
  $<$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>:-Wno-shadow>
  $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wno-subobject-linkage>)
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

# A binary names its sources from the project's root, so that it is the same wherever it is built. Debuggers of a Debug
# build still find the sources by their full paths. The later option wins: a build folder often lies in the source folder.
foreach(place IN ITEMS ${PROJECT_SOURCE_DIR}=. ${PROJECT_BINARY_DIR}=./build)
  target_compile_options(kivo_compiler INTERFACE $<IF:$<CONFIG:Debug>,-fmacro-prefix-map,-ffile-prefix-map>=${place})
endforeach()
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# Measured: -O3 makes libkivo a tenth larger and no road faster, and -Os a quarter smaller and no road slower. A target with
# the property KIVO_SMALL is compiled for size.
target_compile_options(kivo_compiler INTERFACE
  $<$<CONFIG:Release>:$<IF:$<BOOL:$<TARGET_PROPERTY:KIVO_SMALL>>,-Os,-O2>>)

# A library of others is named as needed where something of it is called, whatever the compiler's own default is.
target_link_options(kivo_compiler INTERFACE LINKER:--as-needed)

# Relocations of addresses take an eighth of their size. The loader of glibc 2.36 and later reads them. A linker that does not
# have the option for its kind of machine links all the same, and warns.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_LINK_OPTIONS LINKER:-z,pack-relative-relocs)
check_cxx_source_compiles("int main() {}" KIVO_PACKS_RELOCATIONS FAIL_REGEX "pack-relative-relocs")
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(KIVO_PACKS_RELOCATIONS)
  target_link_options(kivo_compiler INTERFACE LINKER:-z,pack-relative-relocs)
endif()

option(KIVO_HARDENING "Harden optimised builds: stack protector, checked library calls, read-only relocations" ON)
if(KIVO_HARDENING)
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  target_compile_options(kivo_compiler INTERFACE
    "$<${optimised}:-fstack-protector-strong;-fstack-clash-protection;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3;-D_GLIBCXX_ASSERTIONS>")
  target_link_options(kivo_compiler INTERFACE "$<${optimised}:LINKER:-z,relro,-z,now>")
endif()

# Only libkivo is large enough for this to pay, so only its objects and what is made of them take part.
option(KIVO_LTO "Optimise libkivo as a whole in Release builds" ON)
if(KIVO_LTO)
  include(CheckIPOSupported)
  check_ipo_supported(RESULT KIVO_LTO_WORKS LANGUAGES CXX)
endif()
function(kivo_optimise_as_a_whole target)
  if(KIVO_LTO AND KIVO_LTO_WORKS)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
  endif()
endfunction()

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
# The presets tsan and fuzz do without, so a source that does not include what it uses is found there.
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
# The compiler reads precompiled headers only where it optimises in the same way.
kivo_precompiled_headers(kivo_standard_small ${kivo_standard_headers})
set_target_properties(kivo_standard_small PROPERTIES KIVO_SMALL ON)
