#include "Trial.hpp"

#include <kivo/simulator/Camera.hpp>

#include <mutex>

namespace kivo::check {
namespace {

using platform::CaptureSession;
using platform::MetadataObject;
using platform::MetadataObjectType;
using platform::VideoFrame;

/// Pictures that a check hands over itself.
class HandSource final : public platform::FrameSource {
public:
    void start(std::shared_ptr<platform::FrameSink> sink) override {
        sink_ = std::move(sink);
        ++starts;
    }

    void stop() override {
        sink_ = nullptr;
        ++stops;
    }

    void show(const std::shared_ptr<const VideoFrame>& frame) const {
        if (sink_) {
            sink_->take(frame);
        }
    }

    void unplug() {
        if (const auto sink = sink_) {
            sink->end("the check has pulled the plug");
        }
    }

    bool isOn() const { return sink_ != nullptr; }

    int starts = 0;
    int stops = 0;

private:
    std::shared_ptr<platform::FrameSink> sink_;
};

/// A session with input and output, and what comes of it.
class Scanner final : public platform::CaptureMetadataOutputDelegate, public std::enable_shared_from_this<Scanner> {
public:
    void setUp(Trial& trial) {
        if (!trial.under.makeCamera) {
            trial.giveUp("there is no camera for the pictures of a source");
        }
        services_ = trial.services();
        camera = trial.under.makeCamera(source);
        output = required(camera).makeMetadataOutput();
        if (!output) {
            trial.giveUp("codes cannot be read on this machine");
        }
        session = camera->makeSession();
        const auto input = camera->makeInput(camera->defaultVideoDevice());
        trial.expect(session && input, "a session and an input");
        trial.expect(session->canAddInput(*input) && session->canAddOutput(*output), "a session that takes them");
        session->addInput(input);
        session->addOutput(output);
        output->setDelegate(weak_from_this(), services_.mainQueue);
        output->setObjectTypes({MetadataObjectType::qr});
    }

    void didOutput(const std::vector<MetadataObject>& objects) override {
        isElsewhere = isElsewhere || !services_.mainQueue->isCurrent();
        for (const auto& object : objects) {
            heard.push_back(object.text.value_or("unread"));
            isOfAnotherType = isOfAnotherType || object.type != MetadataObjectType::qr;
        }
        if (onHeard) {
            onHeard();
        }
    }

    /// Shows the picture until the delegate has heard that many texts.
    bool hears(const Trial& trial, const std::shared_ptr<const VideoFrame>& frame, std::size_t count) const {
        return trial.await([&] {
            source->show(frame);
            return heard.size() >= count;
        });
    }

    std::shared_ptr<HandSource> source = std::make_shared<HandSource>();
    std::shared_ptr<platform::Camera> camera;
    std::shared_ptr<platform::CaptureMetadataOutput> output;
    std::shared_ptr<CaptureSession> session;
    std::vector<std::string> heard;
    std::function<void()> onHeard;
    bool isElsewhere = false;
    bool isOfAnotherType = false;

private:
    platform::Services services_;
};

std::shared_ptr<Scanner> scannerFor(Trial& trial) {
    auto scanner = std::make_shared<Scanner>();
    scanner->setUp(trial);
    return scanner;
}

std::shared_ptr<const VideoFrame> pictureOf(const char* text) {
    return std::make_shared<VideoFrame>(simulator::qrCodeFrame(text));
}

/// Two codes in one picture, the second one nearer to the middle.
std::shared_ptr<const VideoFrame> pictureOfTwo(const char* far, const char* near) {
    const auto left = simulator::qrCodeFrame(far);
    const auto right = simulator::qrCodeFrame(near);
    auto both = std::make_shared<VideoFrame>(VideoFrame{.width = left.width,
                                                        .height = left.height,
                                                        .format = VideoFrame::Format::gray,
                                                        .bytes = std::vector<std::uint8_t>(left.bytes.size(), 255)});
    // The ink alone: the desk around the sheet of one code would cover the other.
    constexpr int ink = 0;
    const auto copy = [&](const VideoFrame& from, int shift) {
        for (int y = 0; y < from.height; ++y) {
            for (int x = 0; x < from.width; ++x) {
                const auto to = x + shift;
                const auto at = [&](int column) {
                    return static_cast<std::size_t>(y) * static_cast<std::size_t>(from.width) +
                           static_cast<std::size_t>(column);
                };
                if (to >= 0 && to < from.width && from.bytes[at(x)] == ink) {
                    both->bytes[at(to)] = from.bytes[at(x)];
                }
            }
        }
    };
    copy(left, -300);
    copy(right, 200);
    return both;
}

void deliversCodes(Trial& trial) {
    const auto scanner = scannerFor(trial);
    trial.expectEqual("running before the start", scanner->session->isRunning(), false);
    scanner->session->startRunning();
    scanner->session->startRunning();
    trial.expectEqual("running", scanner->session->isRunning(), true);
    trial.expectEqual("starts of the source", scanner->source->starts, 1);
    trial.expect(scanner->hears(trial, pictureOf("first"), 1), "the first code is heard");
    trial.expectEqual("the code", scanner->heard.empty() ? "" : scanner->heard.front(), "first");
    scanner->heard.clear();
    trial.expectSoon("a code shown later is heard", [&] {
        scanner->source->show(pictureOfTwo("far", "near"));
        return !scanner->heard.empty() && scanner->heard.back() != "first";
    });
    const auto size = scanner->heard.size();
    trial.expect(size >= 2 && scanner->heard[size - 2] == "near" && scanner->heard[size - 1] == "far",
                 "the code nearest to the middle first, came " + shown(scanner->heard));
    trial.expect(!scanner->isElsewhere, "codes are heard on the queue of the delegate");
    trial.expect(!scanner->isOfAnotherType, "codes of the type that was asked for");
}

void isSilentOnceStopped(Trial& trial) {
    const auto scanner = scannerFor(trial);
    scanner->onHeard = [raw = scanner.get()] { raw->session->stopRunning(); };
    scanner->session->startRunning();
    const auto picture = pictureOf("code");
    trial.expect(scanner->hears(trial, picture, 1), "the code is heard");
    trial.expectEqual("running after the stop", scanner->session->isRunning(), false);
    trial.expect(!scanner->source->isOn(), "the source is off");
    trial.linger(std::chrono::milliseconds{50});
    trial.expectEqual("codes heard", scanner->heard.size(), 1U);
    scanner->session->stopRunning();
    scanner->session->startRunning();
    trial.expect(scanner->hears(trial, picture, 2), "the code is heard again by a session that is started again");
}

void showsThePicture(Trial& trial) {
    const auto scanner = scannerFor(trial);
    trial.expect(scanner->session->preview().picture == nullptr, "no picture before the first");
    scanner->session->startRunning();
    const auto one = pictureOf("one");
    scanner->source->show(one);
    const auto first = scanner->session->preview();
    trial.expect(first.picture == one, "the picture itself");
    scanner->source->show(pictureOf("two"));
    trial.expect(scanner->session->preview().number > first.number, "a number that grows");
    scanner->source->show(std::make_shared<VideoFrame>(VideoFrame{.width = 3, .height = 3, .bytes = {1}}));
    trial.expect(scanner->session->preview().picture && scanner->session->preview().picture->isWhole(),
                 "no picture that is not whole");
    scanner->session->stopRunning();
    trial.expect(scanner->session->preview().picture != nullptr, "the last picture stays");
}

void endsWithItsCamera(Trial& trial) {
    auto scanner = scannerFor(trial);
    scanner->session->startRunning();
    scanner->source->unplug();
    trial.expectSoon("a session whose camera is lost stops", [&] { return !scanner->session->isRunning(); });
    scanner = scannerFor(trial);
    scanner->session->startRunning();
    scanner->session.reset();
    trial.expectSoon("the source is off when the last reference goes", [&] { return !scanner->source->isOn(); });
}

void worksWithoutParts(Trial& trial) {
    const auto services = trial.services();
    auto& camera = required(services.camera);
    trial.expect(camera.makeInput(nullptr) == nullptr, "no input without a device");
    const auto session = camera.makeSession();
    required(session).stopRunning();
    session->startRunning();
    trial.expect(session->isRunning(), "a session without input and output runs");
    trial.expect(session->preview().picture == nullptr, "and shows no picture");
    session->stopRunning();
    trial.expect(!session->isRunning(), "and stops");
}

void convertsPictures(Trial& trial) {
    const VideoFrame gray{.width = 2, .height = 1, .format = VideoFrame::Format::gray, .bytes = {0, 200}};
    trial.expectEqual("rgb of gray", gray.rgb(), std::vector<std::uint8_t>{0, 0, 0, 200, 200, 200});
    const VideoFrame colour{.width = 1, .height = 1, .format = VideoFrame::Format::i420, .bytes = {76, 85, 255}};
    const auto red = colour.rgb();
    trial.expect(red.size() == 3 && red[0] > 230 && red[1] < 25 && red[2] < 25, "red of i420, came " + shown(red));
    for (const auto& [width, format, size] : {std::tuple{-1, VideoFrame::Format::gray, 1},
                                              {0, VideoFrame::Format::gray, 0},
                                              {3, VideoFrame::Format::i420, 16},
                                              {1 << 20, VideoFrame::Format::gray, 0},
                                              {1, VideoFrame::Format::rgb, 1}}) {
        const VideoFrame broken{.width = width,
                                .height = width,
                                .format = format,
                                .bytes = std::vector<std::uint8_t>(static_cast<std::size_t>(size))};
        trial.expect(!broken.isWhole() && broken.rgb().empty(), "no bytes of a picture that is not whole");
    }
}

} // namespace

Checks cameraChecks() {
    const auto* const seam = "Camera";
    return {
        {seam, "reads the newest picture's codes on the delegate's queue", deliversCodes},
        {seam, "delivers nothing once it is stopped, and can start again", isSilentOnceStopped},
        {seam, "shows its newest picture, whole and unchanged", showsThePicture},
        {seam, "ends with its camera, and the camera with the session", endsWithItsCamera},
        {seam, "works without input and output", worksWithoutParts},
        {seam, "knows whole pictures and converts them", convertsPictures},
    };
}

} // namespace kivo::check
