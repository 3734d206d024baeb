#include "platform/base/Process.hpp"

#include <kivo/platform/NotificationCenter.hpp>

#include <utility>

namespace kivo::platform {

struct NotificationCenter::Entry final : Observation {
    Entry(std::string name_, Observer observer_)
        : name{std::move(name_)}
        , observer{std::move(observer_)} {}

    const std::string name;
    const Observer observer;
};

const std::shared_ptr<NotificationCenter>& NotificationCenter::defaultCenter() {
    using Shared = std::shared_ptr<NotificationCenter>;
    return Process::current().part<Shared>([] { return new Shared{std::make_shared<NotificationCenter>()}; });
}

std::shared_ptr<Observation> NotificationCenter::addObserver(std::string name, Observer observer) {
    auto entry = std::make_shared<Entry>(std::move(name), std::move(observer));
    const std::scoped_lock lock{mutex_};
    std::erase_if(entries_, [](const auto& weak) { return weak.expired(); });
    entries_.push_back(entry);
    return entry;
}

void NotificationCenter::post(const Notification& notification) {
    const auto entries = [this] {
        const std::scoped_lock lock{mutex_};
        return entries_;
    }();
    for (const auto& weak : entries) {
        if (const auto entry = weak.lock(); entry && entry->name == notification.name) {
            entry->observer(notification);
        }
    }
}

} // namespace kivo::platform
