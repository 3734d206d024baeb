// The time to read codes in frames of 1280 x 720 through a session, beside a bare zxing-cpp loop over the same frames,
// in turns. Then the number of frames in memory while a camera is faster than the reader.
//
// usage: kivo-bench-camera [ROUNDS]
#include "Measuring.hpp"
#include "platform/camera/CodeScan.hpp"
#include "platform/camera/Modules.hpp"

#include <kivo/simulator/Camera.hpp>

#include <ZXing/ReadBarcode.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <semaphore>
#include <vector>

namespace {

using namespace kivo::platform;
using Clock = std::chrono::steady_clock;
using kivo::bench::giveUp;
using kivo::bench::median;
using kivo::bench::timed;
using Frames = std::vector<std::shared_ptr<const VideoFrame>>;

/// The module's reader, which signals the beginning and the end of every picture.
class WatchedReader final : public CodeReader {
public:
    std::vector<MetadataObject> read(const VideoFrame& frame, const std::vector<MetadataObjectType>& types) override {
        takenUp.release();
        auto objects = reader_->read(frame, types);
        ++pictures;
        codes += static_cast<int>(objects.size());
        done.release();
        return objects;
    }

    std::counting_semaphore<> takenUp{0};
    std::counting_semaphore<> done{0};
    std::atomic<int> pictures = 0;
    std::atomic<int> codes = 0;

private:
    const std::shared_ptr<CodeReader> reader_ = (*codesModule())->makeReader();
};

/// Runs blocks at once, so that the time of a main loop is not measured.
struct InlineQueue final : DispatchQueue {
    void async(std::function<void()> block) override { block(); }
};

struct IgnoringDelegate final : CaptureMetadataOutputDelegate {
    void didOutput(const std::vector<MetadataObject>& /*objects*/) override {}
};

class Session {
public:
    Session() {
        output_->setDelegate(std::make_shared<IgnoringDelegate>(), std::make_shared<InlineQueue>());
        output_->setObjectTypes(
            {MetadataObjectType::qr, MetadataObjectType::ean8, MetadataObjectType::ean13, MetadataObjectType::pdf417});
        if (scan->start()) {
            giveUp("there is no thread to read on");
        }
    }

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    ~Session() { scan->stop(); }

    /// Offers each frame when the reader has begun with the frame before, like a camera that is as fast as the reader.
    void readAll(const Frames& frames) const {
        for (const auto& frame : frames) {
            scan->take(frame);
            reader->takenUp.acquire();
        }
        for (std::size_t i = 0; i < frames.size(); ++i) {
            reader->done.acquire();
        }
    }

    const std::shared_ptr<WatchedReader> reader = std::make_shared<WatchedReader>();

private:
    const std::shared_ptr<MetadataOutput> output_ = std::make_shared<MetadataOutput>();

public:
    const std::shared_ptr<CodeScan> scan = std::make_shared<CodeScan>(reader, output_, PreviewFrame{});
};

int readBare(const Frames& frames) {
    using ZXing::BarcodeFormat;
    const auto hints = ZXing::DecodeHints{}.setFormats(BarcodeFormat::QRCode | BarcodeFormat::EAN8 |
                                                       BarcodeFormat::EAN13 | BarcodeFormat::PDF417);
    int codes = 0;
    for (const auto& frame : frames) {
        const ZXing::ImageView view{frame->bytes.data(), frame->width, frame->height, ZXing::ImageFormat::Lum};
        codes += static_cast<int>(ZXing::ReadBarcodes(view, hints).size());
    }
    return codes;
}

/// Every other frame holds a code; the noise differs from frame to frame.
Frames makeFrames() {
    Frames frames;
    std::minstd_rand random;
    for (int i = 0; i < 10; ++i) {
        auto frame = kivo::simulator::qrCodeFrame(R"({"code":"123456"})");
        for (auto& byte : frame.bytes) {
            const auto brightness = i % 2 == 0 ? byte : std::uint8_t{128};
            const auto noise = static_cast<int>(random() % 40);
            byte = static_cast<std::uint8_t>(std::clamp(brightness - 20, 20, 215) + noise);
        }
        frames.push_back(std::make_shared<VideoFrame>(std::move(frame)));
    }
    return frames;
}

void compare(int rounds) {
    const auto frames = makeFrames();
    const Session session;
    std::vector<double> bare;
    std::vector<double> through;
    session.readAll(frames);
    for (int i = 0; i < rounds; ++i) {
        bare.push_back(timed([&] {
            if (readBare(frames) != 5) {
                giveUp("the bare loop did not read every code");
            }
        }));
        through.push_back(timed([&] { session.readAll(frames); }));
    }
    if (session.reader->codes != 5 * (rounds + 1)) {
        giveUp("the session did not read every code");
    }
    const auto count = static_cast<double>(frames.size());
    std::printf("frames of 1280 x 720, half of them with a code, %d rounds of %zu, medians\n", rounds, frames.size());
    std::printf("  session    %8.2f ms a frame\n  bare loop  %8.2f ms a frame\n  ratio      %8.3f\n",
                median(through) / count, median(bare) / count, median(through) / median(bare));
    kivo::bench::found("a frame beside a bare loop", median(through) / median(bare));
}

void flood() {
    const auto pattern = makeFrames();
    // Shared: the session's thread frees the last frames.
    const auto alive = std::make_shared<std::atomic<int>>(0);
    int offered = 0;
    int most = 0;
    const Session session;
    for (const auto end = Clock::now() + std::chrono::seconds{2}; Clock::now() < end; ++offered) {
        const auto& next = *pattern[static_cast<std::size_t>(offered) % pattern.size()];
        ++*alive;
        session.scan->take({new VideoFrame{next}, [alive](const VideoFrame* frame) {
                                delete frame;
                                --*alive;
                            }});
        most = std::max(most, alive->load());
    }
    std::printf("a camera faster than the reader, for two seconds\n");
    std::printf("  offered    %8d frames\n  read       %8d frames\n  in memory  %8d frames at most\n", offered,
                session.reader->pictures.load(), most);
}

} // namespace

int main(int argc, char** argv) {
    if (const auto module = codesModule(); !module) {
        giveUp(module.error());
    }
    compare(argc > 1 ? std::atoi(argv[1]) : 20);
    flood();
    return EXIT_SUCCESS;
}
