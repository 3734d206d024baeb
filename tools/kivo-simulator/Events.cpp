#include "Events.hpp"

#include <utility>

namespace simulation {
namespace {

std::string eventText(std::uint64_t number, std::string_view name, std::string_view data) {
    return "id: " + std::to_string(number) + "\nevent: " + std::string{name} + "\ndata: " + std::string{data} + "\n\n";
}

} // namespace

void Events::publish(std::string_view name, std::shared_ptr<const std::string> data) {
    {
        const std::scoped_lock lock{mutex_};
        ++last_;
        events_.push_back({.name = name, .data = std::move(data)});
        if (events_.size() > most) {
            events_.pop_front();
        }
    }
    changed_.notify_all();
}

std::uint64_t Events::last() const {
    const std::scoped_lock lock{mutex_};
    return last_;
}

std::optional<std::string> Events::next(std::uint64_t& seen, std::chrono::milliseconds limit) const {
    std::unique_lock lock{mutex_};
    // A listener of an earlier run of the program may have seen later numbers.
    changed_.wait_for(lock, limit, [&] { return isOver_ || seen != last_; });
    if (isOver_) {
        return std::nullopt;
    }
    if (seen == last_) {
        return "";
    }
    const auto gone = last_ - events_.size();
    if (seen > last_ || seen < gone) {
        const auto lost = seen > last_ ? last_ : gone - seen;
        seen = seen > last_ ? last_ : gone;
        return eventText(seen, "lost", R"({"events":)" + std::to_string(lost) + "}");
    }
    const auto& event = events_[seen - gone];
    ++seen;
    return eventText(seen, event.name, *event.data);
}

void Events::stop() {
    {
        const std::scoped_lock lock{mutex_};
        isOver_ = true;
    }
    changed_.notify_all();
}

} // namespace simulation
