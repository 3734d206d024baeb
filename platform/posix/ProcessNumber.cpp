#include "platform/posix/ProcessNumber.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <new>

namespace kivo::platform {
namespace {

using Number = std::atomic<pid_t>;

/// A place in a page that the kernel fills with zeros in a forked child. Null where the kernel cannot.
Number* makePlace() noexcept {
    const auto size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* const page = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        return nullptr;
    }
    if (::madvise(page, size, MADV_WIPEONFORK) != 0) {
        ::munmap(page, size);
        return nullptr;
    }
    return new (page) Number{0};
}

/// Made when the library is loaded, and null before: a process that forks while another thread makes the place would
/// have a child that waits for that thread forever.
Number* const place = makePlace();

} // namespace

pid_t processNumber() {
    if (place == nullptr) {
        return ::getpid();
    }
    auto number = place->load(std::memory_order_relaxed);
    if (number == 0) {
        number = ::getpid();
        place->store(number, std::memory_order_relaxed);
    }
    return number;
}

} // namespace kivo::platform
