#include "platform/camera/Feed.hpp"

namespace kivo::platform {

std::expected<void, std::string> Feed::open() {
    takeOver();
    return source_->open();
}

void Feed::start(const std::shared_ptr<FrameSink>& sink) {
    takeOver();
    fed_ = sink;
    source_->start(sink);
}

void Feed::stop(const std::shared_ptr<FrameSink>& sink) {
    if (fed_ == sink) {
        fed_ = nullptr;
        source_->stop();
    }
}

void Feed::close() {
    if (!fed_) {
        source_->stop();
    }
}

void Feed::takeOver() {
    if (const auto former = std::exchange(fed_, nullptr)) {
        source_->stop();
        former->end("another session has taken the camera over; let one scanning screen go before the next");
    }
}

} // namespace kivo::platform
