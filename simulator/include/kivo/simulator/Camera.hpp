#pragma once

#include <kivo/platform/Camera.hpp>
#include <kivo/platform/VideoFrame.hpp>

#include <filesystem>
#include <memory>
#include <string_view>

namespace kivo::simulator {

/// A QR code as a camera sees it that is held straight and in good light: black in the middle of a white picture of
/// 1280 x 720. Throws `std::runtime_error` when no QR code holds that much.
platform::VideoFrame qrCodeFrame(std::string_view text);

/// A camera in front of which a test holds things. What it sees goes through the real code reader, pixel by pixel.
///
/// Install it as `platform::Services::camera`. It sees nothing at first. Main thread only.
class Camera final : public platform::Camera {
public:
    /// Where the camera fails.
    enum class Refusal {
        none,
        /// The device cannot be opened: there is no input.
        opening,
        /// The session does not accept the input.
        input,
        /// The session does not accept the output.
        output,
    };

    Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;
    ~Camera() override;

    /// What the camera sees from now on, also in a session under way. A session that starts later sees it too.
    void showCode(std::string_view text) { show(qrCodeFrame(text)); }

    void show(platform::VideoFrame frame);
    /// A PNG or JPEG file, read by the pipeline that reads a real camera. One that cannot be read ends the session,
    /// with a diagnostic.
    void showPicture(const std::filesystem::path& file);
    void showNothing();

    /// Pulls the plug, or puts it in again. A session under way ends.
    void setConnected(bool connected);

    /// Meets the sessions set up from now on.
    void setRefusal(Refusal refusal) { refusal_ = refusal; }

    /// Whether a session has the camera on. It stays on when a picture file ends or cannot be read.
    bool isOn() const;

    std::shared_ptr<platform::CaptureSession> makeSession() override;
    std::shared_ptr<platform::CaptureDevice> defaultVideoDevice() override;
    std::shared_ptr<platform::CaptureInput> makeInput(const std::shared_ptr<platform::CaptureDevice>& device) override;
    std::shared_ptr<platform::CaptureMetadataOutput> makeMetadataOutput() override;

private:
    class Scene;

    std::shared_ptr<Scene> scene_;
    std::shared_ptr<platform::Camera> camera_;
    Refusal refusal_ = Refusal::none;
};

} // namespace kivo::simulator
