# Builds for 64-bit ARM on a machine of another kind, with the ARM libraries of the folder KIVO_SYSROOT. The tests run in
# an emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(libraries ${KIVO_SYSROOT}/usr/lib/aarch64-linux-gnu:${KIVO_SYSROOT}/lib/aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -E LD_LIBRARY_PATH=${libraries})
# The emulator could look for every path in that folder first, but then a program would see two systems in one.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,--dynamic-linker=${KIVO_SYSROOT}/lib/ld-linux-aarch64.so.1)

set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KIVO_SYSROOT)
set(CMAKE_SYSROOT ${KIVO_SYSROOT})
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(what IN ITEMS LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${what} ONLY)
endforeach()
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${KIVO_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${KIVO_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${KIVO_SYSROOT}/usr/share/pkgconfig)
