#include "platform/camera/CodeScan.hpp"

#include "platform/camera/Modules.hpp"
#include "support/CaptureRig.hpp"
#include "support/Program.hpp"

#include <kivo/simulator/Camera.hpp>

#include <algorithm>
#include <atomic>
#include <semaphore>
#include <thread>

namespace kivo::platform {
namespace {

/// Reads a code in everything, when it is let.
struct GatedReader final : CodeReader {
    std::vector<MetadataObject> read(const VideoFrame& frame, const std::vector<MetadataObjectType>& types) override {
        ++begun;
        if (isGated) {
            gate.acquire();
        }
        last = frame.width;
        return {{.type = types.front(), .text = "read"}};
    }

    bool isGated = true;
    std::counting_semaphore<> gate{0};
    std::atomic<int> begun = 0;
    std::atomic<int> last = 0;
};

std::shared_ptr<const VideoFrame> frameOfWidth(int width) {
    return std::make_shared<VideoFrame>(
        VideoFrame{.width = width, .height = 1, .bytes = std::vector<std::uint8_t>(static_cast<std::size_t>(width))});
}

class CodeScanTest : public test::CaptureFixture {
protected:
    CodeScanTest() {
        output->setDelegate(rig, loop);
        output->setObjectTypes({MetadataObjectType::qr});
    }

    std::shared_ptr<CodeScan> started() {
        auto scan = std::make_shared<CodeScan>(reader, output, PreviewFrame{});
        EXPECT_FALSE(scan->start());
        return scan;
    }

    std::shared_ptr<GatedReader> reader = std::make_shared<GatedReader>();
    std::shared_ptr<MetadataOutput> output = std::make_shared<MetadataOutput>();
    std::shared_ptr<test::CaptureRig> rig = std::make_shared<test::CaptureRig>();
};

TEST_F(CodeScanTest, HandsNothingOverOnceItIsStopped) {
    for (const bool isQueued : {false, true}) {
        auto scan = started();
        scan->take(frameOfWidth(1));
        ASSERT_TRUE(await([&] { return reader->begun > 0; }));
        if (isQueued) {
            // The main loop stands still, so that what was read waits on it.
            reader->gate.release();
            while (reader->last == 0) {
                std::this_thread::yield();
            }
            scan->take(frameOfWidth(2));
        }
        scan->stop();
        reader->gate.release(2);
        const std::weak_ptr gone = std::exchange(scan, nullptr);
        ASSERT_TRUE(await([&] { return gone.expired(); })) << "the thread goes on";
        EXPECT_TRUE(rig->heard.empty());
        reader = std::make_shared<GatedReader>();
    }
}

TEST_F(CodeScanTest, KeepsOnlyTheNewestPictureWaiting) {
    std::vector<std::weak_ptr<const VideoFrame>> frames;
    const auto alive = [&] { return std::ranges::count_if(frames, [](const auto& weak) { return !weak.expired(); }); };
    const auto scan = started();
    const auto takeHundred = [&] {
        for (int i = 0; i < 100; ++i) {
            const auto frame = frameOfWidth(static_cast<int>(frames.size()) + 1);
            frames.emplace_back(frame);
            scan->take(frame);
        }
    };
    scan->take(frameOfWidth(1));
    ASSERT_TRUE(await([&] { return reader->begun == 1; }));
    takeHundred();
    EXPECT_EQ(alive(), 1) << "shown and waiting are the same picture";
    // Nothing is read while the delegate is busy.
    rig->onHeard = [&] {
        rig->onHeard = nullptr;
        takeHundred();
    };
    reader->gate.release(2);
    ASSERT_TRUE(await([&] { return rig->heard.size() == 2; }));
    EXPECT_EQ(reader->last, 200);
    EXPECT_EQ(reader->begun, 2);
    EXPECT_EQ(scan->preview().number, 201U);
    for (const int side : {VideoFrame::largestSide + 1, VideoFrame::largestSide + 2}) {
        scan->take(frameOfWidth(side));
    }
    scan->take(nullptr);
    EXPECT_EQ(scan->preview().number, 201U);
    loop->drain();
    EXPECT_EQ(reported.size(), 1U) << "one line about the pictures that are too large";
    scan->stop();
}

/// Pictures from several threads at once, which also end at times.
struct BusySource final : FrameSource {
    void start(std::shared_ptr<FrameSink> sink) override {
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([i, sink, frame = frame](const std::stop_token& stop) {
                for (int number = 0; !stop.stop_requested(); ++number) {
                    sink->take(frame);
                    if (i == 0 && number == 20000) {
                        sink->end("enough");
                    }
                }
            });
        }
    }

    void stop() override { threads.clear(); }

    std::shared_ptr<const VideoFrame> frame =
        std::make_shared<VideoFrame>(simulator::qrCodeFrame(R"({"code":"123456"})"));
    std::vector<std::jthread> threads;
};

class CameraConcurrency : public test::CaptureFixture {};

TEST_F(CameraConcurrency, SessionsStartStopAndGoWhilePicturesCome) {
    const auto camera = makeFrameCamera(std::make_shared<BusySource>());
    for (int i = 0; i < 20; ++i) {
        const auto rig = test::CaptureRig::on(*camera, loop);
        rig->session->startRunning();
        if (i % 2 == 0) {
            rig->onHeard = [&] { rig->session->stopRunning(); };
            ASSERT_TRUE(await([&] { return !rig->heard.empty(); }));
            loop->drain();
            EXPECT_EQ(rig->heard.size(), 1U);
        }
        if (i % 3 == 0) {
            rig->session->startRunning();
            rig->session->preview();
        }
        rig->onHeard = nullptr;
        if (i % 4 == 0) {
            rig->session->stopRunning();
        }
    }
}

TEST(CameraExit, NeitherHangsNorCrashesWhilePicturesAreRead) {
    for (const auto* const source : {"", "videotestsrc is-live=true", "at once"}) {
        for (int i = 0; i < 10; ++i) {
            const auto ended = test::run("exec " KIVO_TEST_PROGRAMS "/ExitWhileScanning '" + std::string{source} + "'");
            EXPECT_TRUE(ended.hasExitedWith(0)) << ended.status;
        }
    }
}

/// What is read in one of the pictures of a camera that stands still.
std::string read(const VideoFrame& frame) {
    const auto module = codesModule();
    EXPECT_TRUE(module) << module.error();
    const auto reader = (*module)->makeReader();
    for (int picture = 0; picture < 5; ++picture) {
        for (const auto& object : reader->read(frame, {MetadataObjectType::qr})) {
            return object.text.value_or("unread");
        }
    }
    return "nothing";
}

TEST(CodeReader, ReadsEveryFormatOfPictureEitherWayRound) {
    const auto gray = simulator::qrCodeFrame("text");
    auto inverted = gray;
    std::ranges::transform(gray.bytes, inverted.bytes.begin(), [](auto byte) { return ~byte; });
    auto upright = gray;
    std::swap(upright.width, upright.height);
    for (int y = 0; y < upright.height; ++y) {
        for (int x = 0; x < upright.width; ++x) {
            upright.bytes[static_cast<std::size_t>(y * upright.width + x)] =
                gray.bytes[static_cast<std::size_t>((gray.height - 1 - x) * gray.width + y)];
        }
    }
    auto i420 = gray;
    i420.format = VideoFrame::Format::i420;
    i420.bytes.resize(gray.bytes.size() * 3 / 2, 200);
    for (const auto& frame :
         {gray,
          inverted,
          upright,
          i420,
          {.width = gray.width, .height = gray.height, .format = VideoFrame::Format::rgb, .bytes = gray.rgb()}}) {
        EXPECT_EQ(read(frame), "text");
    }
    EXPECT_EQ(read({.width = 1, .height = 1, .format = VideoFrame::Format::gray, .bytes = {0}}), "nothing");
}

} // namespace
} // namespace kivo::platform
