#include "platform/base/Process.hpp"

#include <atomic>
#include <cstdlib>
#include <vector>

namespace kivo::platform {
namespace {

/// All process objects so far, the one in force last; never destroyed.
struct Objects {
    std::mutex mutex;
    std::vector<std::unique_ptr<Process>> all;
    std::atomic<Process*> current = nullptr;
};

Objects& objects() {
    static auto& only = *new Objects;
    return only;
}

Process& add(Objects& to) {
    to.all.push_back(std::make_unique<Process>());
    to.current = to.all.back().get();
    return *to.all.back();
}

} // namespace

Process& Process::current() {
    auto& known = objects();
    if (auto* const process = known.current.load()) {
        return *process;
    }
    const std::scoped_lock lock{known.mutex};
    auto* const process = known.current.load();
    return process != nullptr ? *process : add(known);
}

void Process::beginAnew() {
    auto& known = objects();
    const std::scoped_lock lock{known.mutex};
    add(known);
}

std::size_t Process::nextIndex() {
    static std::atomic<std::size_t> next = 0;
    const auto index = next++;
    if (index >= mostParts) {
        std::abort();
    }
    return index;
}

} // namespace kivo::platform
