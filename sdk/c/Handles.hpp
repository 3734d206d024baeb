#pragma once

#include "platform/base/Process.hpp"
#include "platform/c/Arguments.hpp"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace kivo::c {

/// The objects of one kind that the host holds by a pointer and has not ended yet. Any thread.
template <class Object>
class Handles {
public:
    static Handles& shared() {
        return platform::Process::current().part<Handles>([] { return new Handles; });
    }

    Object* add(Object object) {
        auto owned = std::make_unique<Object>(std::move(object));
        auto* const handle = owned.get();
        const std::scoped_lock lock{mutex_};
        underWay_.emplace(handle, std::move(owned));
        return handle;
    }

    /// Ends an object. Refuses a pointer that is no object under way; `what` names the argument.
    std::unique_ptr<Object> take(Object* handle, const char* what) {
        const std::scoped_lock lock{mutex_};
        auto node = underWay_.extract(notNull(handle, what));
        if (!node) {
            throw Misuse{std::string{what} + " is not under way"};
        }
        return std::move(node.mapped());
    }

private:
    std::mutex mutex_;
    std::map<Object*, std::unique_ptr<Object>> underWay_;
};

} // namespace kivo::c
