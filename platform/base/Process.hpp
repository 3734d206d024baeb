#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>

namespace kivo::platform {

/// The owner of everything that a process has one of: the installed services, the settings, the attempts, the network,
/// the secure store, the backend clients, the sessions. Named accessors such as `services()` and
/// `NetworkManager::shared()` read the current process object.
///
/// A part is made at its first use and is never destroyed: threads of the transport may use it while the process exits.
class Process {
public:
    /// The process object in force; the first call makes it. Any thread.
    static Process& current();

    /// Puts a fresh process object in force, with which every part begins anew. The former object stays for the threads
    /// that still use it. For tests; the main thread calls this between two tests.
    static void beginAnew();

    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The one `Part` of this process, which `make` allocates at the first call; `make` may ask for other parts. Any
    /// thread.
    template <class Part, class Make>
    Part& part(Make make) {
        static const std::size_t index = nextIndex();
        auto& place = places_[index];
        if (auto* const made = place.address.load(std::memory_order_acquire)) {
            return *static_cast<Part*>(made);
        }
        std::call_once(place.once, [&] {
            place.part = std::shared_ptr<Part>{make()};
            place.address.store(place.part.get(), std::memory_order_release);
        });
        return *static_cast<Part*>(place.part.get());
    }

private:
    struct Place {
        std::once_flag once;
        std::shared_ptr<void> part;
        /// Null before the part is made.
        std::atomic<void*> address = nullptr;
    };

    /// More than the classes of which a process has one; `nextIndex` ends a program that has more.
    static constexpr std::size_t mostParts = 32;

    static std::size_t nextIndex();

    std::array<Place, mostParts> places_;
};

} // namespace kivo::platform
