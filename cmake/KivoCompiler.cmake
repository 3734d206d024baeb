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
    set(CMAKE_${language}_COMPILER_LAUNCHER ${KIVO_CCACHE})
  endforeach()
endif()
