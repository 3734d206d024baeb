#pragma once

#include <kivo/platform/Camera.hpp>
#include <kivo/platform/VideoFrame.hpp>

#include <filesystem>
#include <memory>
#include <string_view>

namespace kivo::simulator {

/// A sharp picture of a QR code, 1280 x 720: black in the middle, white around. Throws `std::runtime_error` when the
/// text is too long for a QR code.
platform::VideoFrame qrCodeFrame(std::string_view text);

/// A camera in front of which a test holds pictures. The real code reader reads their pixels.
///
/// Install it as `platform::Services::camera`. The camera sees nothing at first. Main thread only.
class Camera final : public platform::Camera {
public:
    /// The step at which the camera fails.
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

    /// Shows a QR code to the running session and to all that start later, until the camera is shown something else.
    void showCode(std::string_view text) { show(qrCodeFrame(text)); }

    /// Shows a picture of the test's own, likewise.
    void show(platform::VideoFrame frame);
    /// Shows a PNG or JPEG file, through the pipeline of a real camera. A file that cannot be read ends the session
    /// with a diagnostic.
    void showPicture(const std::filesystem::path& file);
    /// Leaves the camera in the dark: the running session's next picture is black.
    void showNothing();

    /// Unplugs the camera, or plugs it in again. Unplugging ends the running session.
    void setConnected(bool connected);

    /// Sets the failure of the sessions that are made later.
    void setRefusal(Refusal refusal) { refusal_ = refusal; }

    /// Whether a session has switched the camera on. The camera stays on when a picture file ends or cannot be read.
    bool isOn() const;

    /// What the SDK asks of a camera.
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
