#include <kivo/platform/FrameCamera.hpp>
#include <kivo/simulator/Camera.hpp>

#include <qrencode.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace kivo::simulator {

using platform::CaptureInput;
using platform::CaptureMetadataOutput;
using platform::CaptureSession;

namespace {

constexpr int width = 1280;
constexpr int height = 720;
constexpr int largestModule = 5;
/// The white margin that a reader needs around the code, in modules.
constexpr int margin = 4;
/// The levels of grey of the paper with the code, and of the desk around it.
constexpr std::uint8_t paper = 255;
constexpr std::uint8_t desk = 92;

struct FreeCode {
    void operator()(QRcode* code) const { QRcode_free(code); }
};

std::unique_ptr<QRcode, FreeCode> encode(std::string_view text) {
    // A long text fits only with less room for correcting errors.
    for (const auto level : {QR_ECLEVEL_M, QR_ECLEVEL_L}) {
        if (auto* const code = QRcode_encodeData(static_cast<int>(text.size()),
                                                 reinterpret_cast<const unsigned char*>(text.data()), 0, level)) {
            return std::unique_ptr<QRcode, FreeCode>{code};
        }
    }
    throw std::runtime_error{"No QR code holds " + std::to_string(text.size()) + " bytes."};
}

platform::VideoFrame darkness() {
    return {.width = 2, .height = 2, .format = platform::VideoFrame::Format::gray, .bytes = {0, 0, 0, 0}};
}

/// The pipeline that shows a file without end.
std::string pipelineFor(const std::filesystem::path& file) {
    std::string quoted;
    for (const char character : file.string()) {
        quoted += character == '"' || character == '\\' ? std::string{'\\'} + character : std::string{character};
    }
    return "filesrc location=\"" + quoted + "\" ! decodebin ! videoconvert ! imagefreeze ! video/x-raw,framerate=5/1";
}

/// A session that refuses inputs or outputs on demand.
class RefusingSession final : public CaptureSession {
public:
    RefusingSession(std::shared_ptr<CaptureSession> session, Camera::Refusal refusal)
        : session_{std::move(session)}
        , refusal_{refusal} {}

    bool canAddInput(const CaptureInput& input) const override {
        return refusal_ != Camera::Refusal::input && session_->canAddInput(input);
    }

    void addInput(std::shared_ptr<CaptureInput> input) override { session_->addInput(std::move(input)); }

    bool canAddOutput(const CaptureMetadataOutput& output) const override {
        return refusal_ != Camera::Refusal::output && session_->canAddOutput(output);
    }

    void addOutput(std::shared_ptr<CaptureMetadataOutput> output) override { session_->addOutput(std::move(output)); }

    bool isRunning() const override { return session_->isRunning(); }

    void startRunning() override { session_->startRunning(); }

    void stopRunning() override { session_->stopRunning(); }

    platform::PreviewFrame preview() const override { return session_->preview(); }

private:
    const std::shared_ptr<CaptureSession> session_;
    const Camera::Refusal refusal_;
};

} // namespace

platform::VideoFrame qrCodeFrame(std::string_view text) {
    const auto code = encode(text);
    const int module = std::min(largestModule, height / (code->width + 2 * margin));
    const int left = (width - code->width * module) / 2;
    const int top = (height - code->width * module) / 2;
    const int side = (code->width + 2 * margin) * module;
    platform::VideoFrame frame{.width = width,
                               .height = height,
                               .format = platform::VideoFrame::Format::gray,
                               .bytes = std::vector<std::uint8_t>(std::size_t{width} * height, desk)};
    const int edge = margin * module;
    for (int y = top - edge; y < top - edge + side; ++y) {
        const auto row = frame.bytes.begin() + std::ptrdiff_t{width} * y + (left - edge);
        std::fill_n(row, side, paper);
    }
    for (int y = 0; y < code->width * module; ++y) {
        for (int x = 0; x < code->width * module; ++x) {
            const bool isBlack = (code->data[y / module * code->width + x / module] & 1) != 0;
            frame.bytes[static_cast<std::size_t>(top + y) * width + static_cast<std::size_t>(left + x)] =
                isBlack ? 0 : paper;
        }
    }
    return frame;
}

/// The scene before the camera: a frame, a file's pictures, or nothing.
class Camera::Scene final : public platform::FrameSource {
public:
    void change(std::shared_ptr<const platform::VideoFrame> frame, std::shared_ptr<platform::FrameSource> file) {
        auto sink = sink_;
        stop();
        frame_ = std::move(frame);
        file_ = std::move(file);
        if (sink) {
            start(std::move(sink));
        }
    }

    void setConnected(bool connected) {
        isConnected_ = connected;
        if (const auto sink = sink_; sink && !connected) {
            stop();
            sink->end("the camera was unplugged; plug it in again");
        }
    }

    bool isOn() const { return sink_ != nullptr; }

    bool isThere() override { return isConnected_; }

    void start(std::shared_ptr<platform::FrameSink> sink) override {
        if (!isConnected_) {
            sink->end("the camera is unplugged; plug it in again");
            return;
        }
        sink_ = std::move(sink);
        if (file_) {
            file_->start(sink_);
        } else if (frame_) {
            sink_->take(frame_);
        }
    }

    void stop() override {
        sink_ = nullptr;
        if (file_) {
            file_->stop();
        }
    }

private:
    std::shared_ptr<const platform::VideoFrame> frame_;
    std::shared_ptr<platform::FrameSource> file_;
    std::shared_ptr<platform::FrameSink> sink_;
    bool isConnected_ = true;
};

Camera::Camera()
    : scene_{std::make_shared<Scene>()}
    , camera_{platform::makeFrameCamera(scene_)} {}

Camera::~Camera() = default;

void Camera::show(platform::VideoFrame frame) {
    scene_->change(std::make_shared<const platform::VideoFrame>(std::move(frame)), nullptr);
}

void Camera::showPicture(const std::filesystem::path& file) {
    scene_->change(nullptr, platform::makePipelineSource(pipelineFor(file)));
}

void Camera::showNothing() {
    scene_->change(std::make_shared<const platform::VideoFrame>(darkness()), nullptr);
}

void Camera::setConnected(bool connected) {
    scene_->setConnected(connected);
}

bool Camera::isOn() const {
    return scene_->isOn();
}

std::shared_ptr<CaptureSession> Camera::makeSession() {
    return std::make_shared<RefusingSession>(camera_->makeSession(), refusal_);
}

std::shared_ptr<platform::CaptureDevice> Camera::defaultVideoDevice() {
    return camera_->defaultVideoDevice();
}

std::shared_ptr<CaptureInput> Camera::makeInput(const std::shared_ptr<platform::CaptureDevice>& device) {
    return refusal_ == Refusal::opening ? nullptr : camera_->makeInput(device);
}

std::shared_ptr<CaptureMetadataOutput> Camera::makeMetadataOutput() {
    return camera_->makeMetadataOutput();
}

} // namespace kivo::simulator
