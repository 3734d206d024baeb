# What Objective-C needs on this machine, for the library itself and for hosts of the installed package: clang (GCC has
# no blocks), the Objective-C runtime's headers that come with GCC, and GNUstep's Foundation.
#
# Sets Kivo_OBJC_COMPILER and Kivo_OBJCXX_COMPILER for CMAKE_OBJC_COMPILER and CMAKE_OBJCXX_COMPILER, and defines the
# target Kivo::objc_runtime with the flags and libraries. Kivo_OBJC_MISSING says what is not there; empty: nothing.
set(Kivo_OBJC_MISSING "")

find_program(Kivo_OBJC_COMPILER NAMES clang-19 clang-20 clang-21 clang DOC "Compiles Objective-C")
find_program(Kivo_OBJCXX_COMPILER NAMES clang++-19 clang++-20 clang++-21 clang++ DOC "Compiles Objective-C++")
find_program(Kivo_GCC NAMES gcc DOC "Knows where its Objective-C headers are")
set(kivo_gcc_include "")
if(Kivo_GCC)
  execute_process(COMMAND ${Kivo_GCC} -print-file-name=include
    OUTPUT_VARIABLE kivo_gcc_include OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
find_path(Kivo_OBJC_RUNTIME_INCLUDE objc/objc.h HINTS ${kivo_gcc_include})
find_path(Kivo_GNUSTEP_INCLUDE Foundation/Foundation.h PATH_SUFFIXES GNUstep)
find_library(Kivo_GNUSTEP_LIBRARY gnustep-base)
find_library(Kivo_OBJC_LIBRARY NAMES objc HINTS ${kivo_gcc_include}/..)
mark_as_advanced(Kivo_OBJC_COMPILER Kivo_OBJCXX_COMPILER Kivo_GCC Kivo_OBJC_RUNTIME_INCLUDE Kivo_GNUSTEP_INCLUDE
  Kivo_GNUSTEP_LIBRARY Kivo_OBJC_LIBRARY)

foreach(needed
    "Kivo_OBJC_COMPILER:clang" "Kivo_OBJCXX_COMPILER:clang++"
    "Kivo_OBJC_RUNTIME_INCLUDE:objc/objc.h (gobjc++)" "Kivo_OBJC_LIBRARY:libobjc (gobjc++)"
    "Kivo_GNUSTEP_INCLUDE:Foundation/Foundation.h (libgnustep-base-dev)"
    "Kivo_GNUSTEP_LIBRARY:libgnustep-base (libgnustep-base-dev)")
  string(REGEX MATCH "^([^:]+):(.*)$" _ "${needed}")
  if(NOT ${CMAKE_MATCH_1})
    list(APPEND Kivo_OBJC_MISSING "${CMAKE_MATCH_2}")
  endif()
endforeach()

if(NOT Kivo_OBJC_MISSING AND NOT TARGET Kivo::objc_runtime)
  # A folder with nothing but the Objective-C headers: GCC's own would take clang's <stdatomic.h> and others away.
  set(kivo_objc_headers ${PROJECT_BINARY_DIR}/kivo-objc-runtime)
  file(MAKE_DIRECTORY ${kivo_objc_headers})
  file(CREATE_LINK ${Kivo_OBJC_RUNTIME_INCLUDE}/objc ${kivo_objc_headers}/objc SYMBOLIC)
  set(kivo_objc_flags -fblocks -fobjc-runtime=gcc -fexceptions -fobjc-exceptions
    -fconstant-string-class=NSConstantString)
  add_library(Kivo::objc_runtime INTERFACE IMPORTED)
  target_compile_options(Kivo::objc_runtime INTERFACE
    "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${kivo_objc_flags}>")
  target_compile_definitions(Kivo::objc_runtime INTERFACE
    "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:GNUSTEP;GNUSTEP_BASE_LIBRARY=1;GNU_RUNTIME=1>")
  target_include_directories(Kivo::objc_runtime SYSTEM INTERFACE ${Kivo_GNUSTEP_INCLUDE} ${kivo_objc_headers})
  target_link_libraries(Kivo::objc_runtime INTERFACE
    ${Kivo_GNUSTEP_LIBRARY} ${Kivo_OBJC_LIBRARY})
  # A block's class is an address in libkivo-objc; it must not be copied into the program.
  set_target_properties(Kivo::objc_runtime PROPERTIES INTERFACE_POSITION_INDEPENDENT_CODE ON)
endif()

# CMake does not know how Linux linkers take a run path from Objective-C.
foreach(kivo_language OBJC OBJCXX)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT CMAKE_SHARED_LIBRARY_RUNTIME_${kivo_language}_FLAG)
    foreach(kivo_kind SHARED_LIBRARY EXECUTABLE)
      set(CMAKE_${kivo_kind}_RUNTIME_${kivo_language}_FLAG "-Wl,-rpath,")
      set(CMAKE_${kivo_kind}_RUNTIME_${kivo_language}_FLAG_SEP ":")
      set(CMAKE_${kivo_kind}_RPATH_LINK_${kivo_language}_FLAG "-Wl,-rpath-link,")
    endforeach()
  endif()
endforeach()
