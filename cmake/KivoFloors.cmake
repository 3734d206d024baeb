# The floors of the house. Each floor is a target of its own and sees its own headers and those of the floors that it
# names, and no others: an include that points up does not compile.
#
# The headers of a floor are offered in a folder of the build tree, under the path by which they are included. What lies
# there is one line that leads to the header in the source tree, so that messages and debuggers name the source tree.

# kivo_floor(NAME ROOT dir [ROOMS dir...] [HEADERS file...] [STANDS_ON floor...] [LIBRARIES library...])
#   ROOT       the folder from which the floor's headers are included
#   ROOMS      the folders of the floor, below ROOT, with all that lies in them
#   EXCEPT     a pattern of paths in ROOMS that belong to other targets
#   HEADERS    the public headers that the floor defines, below include/
#   STANDS_ON  the floors below that this one may include and call
#   LIBRARIES  the libraries outside the project that the floor is built on
#   FAST       optimised for speed in Release builds, where the other floors of libkivo are optimised for size
#   PART       the library that is made of the floor, KIVO if none is named
function(kivo_floor name)
  cmake_parse_arguments(PARSE_ARGV 1 floor "FAST" "ROOT;EXCEPT;PART" "ROOMS;HEADERS;STANDS_ON;LIBRARIES")
  if(NOT floor_PART)
    set(floor_PART KIVO)
  endif()
  set(offered ${PROJECT_BINARY_DIR}/floors/${name})
  file(MAKE_DIRECTORY ${offered})
  set(sources)
  set(wanted)
  foreach(room IN LISTS floor_ROOMS)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${floor_ROOT}/${room}/*.cpp)
    file(GLOB_RECURSE headers RELATIVE ${floor_ROOT} CONFIGURE_DEPENDS ${floor_ROOT}/${room}/*.hpp)
    if(floor_EXCEPT)
      list(FILTER found EXCLUDE REGEX ${floor_EXCEPT})
      list(FILTER headers EXCLUDE REGEX ${floor_EXCEPT})
    endif()
    list(APPEND sources ${found})
    list(APPEND wanted ${headers})
    foreach(header IN LISTS headers)
      kivo_offer_header(${offered} ${header} ${floor_ROOT}/${header})
    endforeach()
  endforeach()
  foreach(header IN LISTS floor_HEADERS)
    kivo_offer_header(${offered} ${header} ${PROJECT_SOURCE_DIR}/include/${header})
  endforeach()
  # A header that was moved or removed is offered no longer.
  file(GLOB_RECURSE former RELATIVE ${offered} ${offered}/*.hpp ${offered}/*.h)
  list(REMOVE_ITEM former "" ${wanted} ${floor_HEADERS})
  foreach(header IN LISTS former)
    file(REMOVE ${offered}/${header})
  endforeach()
  list(TRANSFORM floor_STANDS_ON PREPEND kivo_floor_)
  if(sources)
    add_library(kivo_floor_${name} OBJECT ${sources})
    target_include_directories(kivo_floor_${name} PUBLIC ${offered})
    target_compile_definitions(kivo_floor_${name} PRIVATE KIVO_SDK_VERSION="${PROJECT_VERSION}")
    target_link_libraries(kivo_floor_${name} PUBLIC ${floor_STANDS_ON} PRIVATE kivo_compiler ${floor_LIBRARIES})
    if(floor_PART STREQUAL KIVO AND NOT floor_FAST)
      set_target_properties(kivo_floor_${name} PROPERTIES KIVO_SMALL ON)
      kivo_use_precompiled_headers(kivo_floor_${name} kivo_standard_small)
    else()
      kivo_use_precompiled_headers(kivo_floor_${name} kivo_standard)
    endif()
    if(floor_PART STREQUAL KIVO)
      kivo_optimise_as_a_whole(kivo_floor_${name})
    endif()
    set_property(GLOBAL APPEND PROPERTY ${floor_PART}_OBJECTS $<TARGET_OBJECTS:kivo_floor_${name}>)
  else()
    add_library(kivo_floor_${name} INTERFACE)
    target_include_directories(kivo_floor_${name} INTERFACE ${offered})
    target_link_libraries(kivo_floor_${name} INTERFACE ${floor_STANDS_ON})
  endif()
  set_property(GLOBAL APPEND PROPERTY ${floor_PART}_FLOORS ${name})
  set_property(GLOBAL APPEND PROPERTY ${floor_PART}_FLOOR_LIBRARIES ${floor_LIBRARIES})
endfunction()

function(kivo_offer_header offered path file)
  file(CONFIGURE OUTPUT ${offered}/${path} CONTENT "#include \"${file}\"\n")
endfunction()
