// Switches one fault on, and notes which faults are reached. Included in front of every source of the mutate build.
#pragma once

#ifdef __cpp_if_consteval // CMake tries the compiler with older language levels

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace kivo::mutation {

/// The fault that KIVO_MUTATION names; no fault has the number 0.
inline const unsigned active = [] {
    const char* number = std::getenv("KIVO_MUTATION");
    return number ? static_cast<unsigned>(std::strtoul(number, nullptr, 10)) : 0U;
}();

/// One byte a fault in the file that KIVO_MUTATION_REACHED names. The file is mapped, so that the notes of a process
/// that is killed, and of every child process, are kept.
inline unsigned char* const reached = []() -> unsigned char* {
    const char* path = std::getenv("KIVO_MUTATION_REACHED");
    const int file = path ? open(path, O_RDWR | O_CLOEXEC) : -1;
    struct stat status{};
    if (file < 0 || fstat(file, &status) != 0) {
        return nullptr;
    }
    void* bytes = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return bytes == MAP_FAILED ? nullptr : static_cast<unsigned char*>(bytes);
}();

/// Whether fault `number` is switched on.
inline bool onAtRunTime(unsigned number) {
    if (reached) {
        reached[number] = 1;
    }
    return number == active;
}

/// The same where the compiler may need the value: a constant expression keeps the original. A constant that the
/// compiler does not need would keep it as well, because compilers work out what they can.
constexpr bool on(unsigned number) {
    if consteval {
        return false;
    } else {
        return onAtRunTime(number);
    }
}

} // namespace kivo::mutation

#endif
