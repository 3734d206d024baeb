#pragma once

#include "AnimatedPng.hpp"

#include <QImage>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>

namespace kivo::device::app {

/// A recording of the display, which ends by itself after two minutes or 64 MB. A display that does not change costs
/// nothing but time.
class Recording final : public QObject {
public:
    static constexpr std::chrono::seconds longest{120};
    static constexpr qsizetype largest = qsizetype{64} << 20U;

    /// `picture` takes a picture of the display. `ended` is called when the recording has ended by itself.
    Recording(std::function<QImage()> picture, std::function<void()> ended);

    /// Adds the display as it is `at` that time since the start.
    void take(std::chrono::milliseconds at);

    std::chrono::milliseconds length() const { return last_; }

    /// The animated PNG of all that was recorded.
    QByteArray file() const { return animation_.file(); }

private:
    std::function<QImage()> picture_;
    std::function<void()> ended_;
    AnimatedPng animation_{/*compression=*/3};
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::milliseconds last_{};
    QTimer timer_;
};

} // namespace kivo::device::app
