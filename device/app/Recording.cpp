#include "Recording.hpp"

#include <utility>

namespace kivo::device::app {
namespace {

using namespace std::chrono_literals;

constexpr auto interval = 66ms;

} // namespace

Recording::Recording(std::function<QImage()> picture, std::function<void()> ended)
    : picture_{std::move(picture)}
    , ended_{std::move(ended)} {
    connect(&timer_, &QTimer::timeout, this, [this] {
        take(std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_));
    });
    take(0ms);
    timer_.start(interval);
}

void Recording::take(std::chrono::milliseconds at) {
    // A frame lasts until the next one is taken.
    animation_.prolong(at - last_);
    last_ = at;
    animation_.add(picture_(), 0ms);
    if (at >= longest || animation_.size() >= largest) {
        timer_.stop();
        ended_();
    }
}

} // namespace kivo::device::app
