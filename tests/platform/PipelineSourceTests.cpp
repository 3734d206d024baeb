#include "platform/camera/VideoDevices.hpp"
#include "support/CaptureRig.hpp"
#include "support/Program.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/platform/LinuxServices.hpp>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>

namespace kivo::platform {
namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::string file(const std::string& name) {
    return "filesrc location=" KIVO_TEST_DATA "/pictures/" + name + " ! decodebin";
}

class PipelineCamera : public test::CaptureFixture {
protected:
    std::shared_ptr<test::CaptureRig> started(const std::string& pipeline) {
        auto rig = test::CaptureRig::on(*makeFrameCamera(makePipelineSource(pipeline)), loop);
        rig->session->startRunning();
        return rig;
    }
};

TEST_F(PipelineCamera, ReadsCodesInPictureAndVideoFilesAsOftenAsItIsStarted) {
    const std::string payload = R"({"code":"123456"})";
    for (const auto& [name, text] : std::map<std::string, std::string>{{"code.png", payload},
                                                                       {"code.jpg", payload},
                                                                       {"code.avi", payload},
                                                                       {"pdf417.png", payload},
                                                                       {"ean8.png", "96385074"},
                                                                       {"ean13.png", "4006381333931"}}) {
        const auto rig = started(file(name));
        for (std::size_t times = 1; times <= 2; ++times) {
            rig->session->startRunning();
            ASSERT_TRUE(await([&] { return rig->heard.size() == times; })) << name;
            EXPECT_THAT(rig->heard.back(), ElementsAre(text)) << name;
            rig->session->stopRunning();
        }
    }
}

TEST_F(PipelineCamera, LetsGoOfThePipelineAndItsSink) {
    struct Sink final : FrameSink {
        void take(std::shared_ptr<const VideoFrame> /*frame*/) override {}

        void end(std::string /*reason*/) override { hasEnded = true; }

        std::atomic<bool> hasEnded = false;
    };

    auto source = makePipelineSource("videotestsrc num-buffers=1");
    auto sink = std::make_shared<Sink>();
    const std::weak_ptr weak = sink;
    source->start(sink);
    ASSERT_TRUE(await([&] { return sink->hasEnded.load(); }));
    source.reset();
    sink.reset();
    EXPECT_TRUE(weak.expired());
}

TEST_F(PipelineCamera, ShowsThePicture) {
    const auto rig = started("videotestsrc pattern=red num-buffers=1 ! video/x-raw,width=65,height=33");
    ASSERT_TRUE(await([&] { return rig->session->preview().number == 1; }));
    const auto preview = rig->session->preview();
    EXPECT_EQ(preview.picture->width, 65);
    const auto rgb = preview.picture->rgb();
    ASSERT_EQ(rgb.size(), 65U * 33 * 3);
    EXPECT_THAT(std::vector(rgb.end() - 3, rgb.end()), ElementsAre(testing::Gt(230), testing::Lt(25), testing::Lt(25)));
}

TEST_F(PipelineCamera, MakesLargePicturesOfADeviceSmaller) {
    const std::string device = "v4l2src device=/dev/video7";
    auto pipeline = cameraPipeline("/dev/video7");
    ASSERT_TRUE(pipeline.starts_with(device + " ! "));
    for (const auto& [source, size] : std::map<std::string, std::pair<int, int>>{
             {"videotestsrc ! video/x-raw,width=3840,height=2160", {1280, 720}},
             {"videotestsrc ! video/x-raw,width=640,height=480", {640, 480}},
             {"videotestsrc ! video/x-raw,width=800,height=1600 ! jpegenc", {640, 1280}}}) {
        const auto rig = started(source + pipeline.substr(device.size()));
        ASSERT_TRUE(await([&] { return rig->session->preview().picture != nullptr; })) << source;
        const auto picture = rig->session->preview().picture;
        EXPECT_EQ(std::pair(picture->width, picture->height), size) << source;
    }
}

TEST_F(PipelineCamera, EndsWithOneLineThatSaysWhatToDo) {
    const test::TemporaryFolder folder;
    const auto frozen = [](const std::filesystem::path& picture) {
        return "filesrc location=" + picture.string() + " ! decodebin ! videoconvert ! imagefreeze";
    };
    const auto code = test::contentOf(KIVO_TEST_DATA "/pictures/code.png");
    // A header of 20,000 x 20,000 pixels, and pixels that never come to be read.
    const auto large = code.substr(0, 12) +
                       "\111\110\104\122\000\000\116\040\000\000\116\040\010\000\000\000\000\306\033\031\345"s +
                       "\0\0\1\0IDAT"s + std::string(260, 'x') + "\0\0\0\0IENDcrc!"s;
    const auto jpeg = test::contentOf(KIVO_TEST_DATA "/pictures/code.jpg");
    auto largeJpeg = jpeg; // progressive, for which decoders take memory at once
    largeJpeg.replace(jpeg.find("\xFF\xC0"), 9, "\xFF\xC2\x00\x0B\x08\x75\x30\x75\x30"s);
    const auto decoded = [](const std::filesystem::path& picture, const std::string& decoder) {
        return "filesrc location=" + picture.string() + " ! " + decoder;
    };

    const struct {
        std::string pipeline;
        std::string problem;
        std::string advice;
    } cases[] = {
        {"v4l2src device=/dev/video-none", "/dev/video-none", "connect the camera"},
        {"nonesuch ! decodebin", "nonesuch", "gstreamer1.0-plugins-good"},
        {"filesrcc location=x ! decodebin", "filesrcc", "\"filesrc\" is there"},
        {"decodebin ! ! decodebin", "syntax", "correct the camera's pipeline"},
        {file("none.png"), "none.png", "may read"},
        {file(""), "directory", "name a picture or video file"},
        {frozen(folder.write("half.png", code.substr(0, code.size() / 2))), "before its first picture", "cut off"},
        {frozen(folder.write("half.jpg", jpeg.substr(0, jpeg.size() / 2))), "within its picture", "cut off"},
        {decoded(folder.write("large.jpg", largeJpeg), "gdkpixbufdec"), "30000 x 30000", "8192 x 8192"},
        {decoded(folder.write("behind.jpg", "bytes" + largeJpeg.substr(0, 9999)), "jpegdec"), "30000 x 30000", "8192"},
        {decoded(folder.write("large.gif", "GIF89a\x01\x20\x01\x20"s + std::string(99, 'x')), "gdkpixbufdec"),
         "8193 x 8193", "8192 x 8192"},
        {frozen(folder.write("empty.png", "")), "no data", "pictures or video"},
        {frozen(folder.write("large.png", large)), "20000 x 20000", "8192 x 8192"},
        {"videotestsrc ! video/x-raw,width=20000,height=20000 ! videoscale ! video/x-raw,width=64,height=64",
         "20000 x 20000", "8192 x 8192"},
        {"filesrc location=" KIVO_TEST_DATA "/../CMakeLists.txt ! decodebin", "text file", "pictures or video"},
        {"videotestsrc ! audioconvert", "could not link", "correct the camera's pipeline"},
        {"videotestsrc ! identity error-after=3", "", "GST_DEBUG"},
        {"videotestsrc num-buffers=2", "have ended", "start the session anew"},
    };

    for (const auto& each : cases) {
        reported.clear();
        const auto rig = started(each.pipeline);
        // Without an input the session runs on, without pictures.
        ASSERT_TRUE(await([&] { return !reported.empty(); })) << each.pipeline;
        rig->session->stopRunning();
        EXPECT_THAT(reported, ElementsAre(AllOf(HasSubstr(each.problem), HasSubstr(each.advice)))) << each.pipeline;
        EXPECT_TRUE(rig->heard.empty());
    }
}

TEST_F(PipelineCamera, LeavesAFileThatBlocksBehindAndTellsSo) {
    const test::TemporaryFolder folder;
    const auto fifo = folder.path() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const auto rig = started("filesrc location=" + fifo.string() + " ! decodebin");
    clock->advance(std::chrono::seconds{5});
    ASSERT_TRUE(await([&] { return reported.size() == 1; }));
    rig->session->stopRunning();
    // Blocked already: nothing is waited for, and no thread comes with another attempt.
    for (int attempt = 0; attempt < 20; ++attempt) {
        rig->session->startRunning();
        EXPECT_FALSE(rig->session->isRunning());
    }
    EXPECT_EQ(test::threadsNamed("kivo-camera"), 1);
    ASSERT_TRUE(await([&] { return reported.size() == 22; }));
    reported.resize(3);
    EXPECT_THAT(reported, ElementsAre(HasSubstr("no picture has come"), HasSubstr("does not stop"),
                                      HasSubstr("does not answer")));
    // Writers let the blocked pipeline end; the next pipeline has their picture. Readers may leave before they read.
    std::signal(SIGPIPE, SIG_IGN);
    const auto picture = test::contentOf(KIVO_TEST_DATA "/pictures/code.png");
    EXPECT_TRUE(await([&] {
        if (const int writer = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC); writer >= 0) {
            [[maybe_unused]] const auto written = ::write(writer, picture.data(), picture.size());
            ::close(writer);
        }
        rig->session->startRunning();
        return !rig->heard.empty();
    }));
}

TEST_F(PipelineCamera, GoesToTheSessionThatStartedLast) {
    const auto camera = makeFrameCamera(makePipelineSource("videotestsrc is-live=true"));
    auto first = test::CaptureRig::on(*camera, loop);
    first->session->startRunning();
    const auto second = test::CaptureRig::on(*camera, loop);
    second->session->startRunning();
    EXPECT_FALSE(first->session->isRunning());
    first.reset();
    ASSERT_TRUE(await([&] { return second->session->preview().number > 1; }));
    EXPECT_TRUE(second->session->isRunning());
    EXPECT_THAT(reported, ElementsAre(HasSubstr("another session")));
}

TEST(VideoDevices, AreTheKernelsThatGivePictures) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(firstVideoDevice(folder.path() / "none"));
    for (const auto* name : {"video0", "video1x", "radio0"}) {
        folder.write(name, "no device");
    }
    EXPECT_FALSE(firstVideoDevice(folder.path()));
}

} // namespace
} // namespace kivo::platform
