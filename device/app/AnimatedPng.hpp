#pragma once

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <chrono>
#include <cstddef>
#include <expected>
#include <string>
#include <vector>

namespace kivo::device::app {

/// An animated PNG, which shows its frames again and again; a program without animations shows the first frame. Of
/// each further frame only the rectangle that changed is kept.
class AnimatedPng {
public:
    /// `compression` from 0 (fast) to 9 (small).
    explicit AnimatedPng(int compression = 9)
        : compression_{compression} {}

    /// Shows `frame` for `duration` after the frames before. A frame that does not differ prolongs the frame before. A
    /// frame of another size than the first is put on a black ground of that size, at the upper left.
    void add(const QImage& frame, std::chrono::milliseconds duration);

    /// Prolongs the last frame.
    void prolong(std::chrono::milliseconds duration);

    bool isEmpty() const { return frames_.empty(); }

    /// The size of the file so far, in bytes.
    qsizetype size() const { return size_; }

    /// The whole file.
    QByteArray file() const;

private:
    struct Frame {
        QRect place;
        std::chrono::milliseconds duration;
        /// The compressed pixels, as the data chunks of a PNG file hold them.
        QByteArray pixels;
    };

    int compression_;
    QByteArray header_;
    QImage last_;
    std::vector<Frame> frames_;
    qsizetype size_ = 0;
};

/// The whole frames of an animated PNG, or the one picture of a plain PNG; the error is a sentence. A file that lasts
/// for more than `most` frames is refused.
std::expected<std::vector<QImage>, std::string> framesOf(const QByteArray& file, std::size_t most = 2000);

} // namespace kivo::device::app
